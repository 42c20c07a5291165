#pragma once

#include <datumfit/foundation/containers/quick_sort.h>
#include <datumfit/foundation/geometry/point2.h>

namespace datumfit {
namespace internal {

/// The direction from one point to another as a number of degrees in [0, 360) that grows with the true angle and equals
/// it at the multiples of 45 degrees, without trigonometry: how far around the square |x| + |y| = 1 the direction
/// points. 0 for equal points.
double pseudo_angle(giPoint2 const & from, giPoint2 const & to);

/// The index of the point of the smallest y, among those the one of the largest x; of several equal ones the first. 0
/// without points.
int lowest_point_index(giPoint2 const * points, int count);

}  // namespace internal
}  // namespace datumfit

/// Sorts points into the order of a simple closed path about a pivot: by their direction from it, counterclockwise from
/// the x axis, and in one direction the nearer first.
///
/// The arrays that it sorts are plain ones of giPoint2: sort(&points[1], n - 1) leaves out the first, which as a rule
/// is the pivot. When the pivot is the lowest of the points (the rightmost of several), the polygon through it and the
/// sorted ones does not cross itself. No tolerance: directions that differ by rounding only are two directions.
class sqCompareForSimplestClosedPath : public coQuickSort {
public:
    explicit sqCompareForSimplestClosedPath(giPoint2 const & pivot) : pivot_(pivot) {}
    ~sqCompareForSimplestClosedPath() override;

    /// -1 when a comes before b, 1 when it comes after; 0 for equal points.
    int compare(giPoint2 const * a, giPoint2 const * b) const;

    int obj_compare(void * a, void * b) const override;
    void * arr_get(void * array, int index) const override;
    void arr_swap(void * array, int i, int j) const override;

private:
    giPoint2 pivot_;
};
