#pragma once

#include <datumfit/align3d/plane_and_point.h>
#include <datumfit/foundation/geometry/xform3.h>

#include <vector>

namespace datumfit {
namespace internal {

/// The points, plane points and normals of records one behind the other: what a global search reads again and again.
class packed_records {
public:
    void add(sqPlaneAndPoint const & record);

    /// Adds up what pulls at the shift: for each record, with d = x point - plane_point, its part along the normal,
    /// (d . normal) normal, of which d itself takes the place by the share.
    giVector3 sum_of_pulls(giXform3 const & x, double share) const;

    /// The sum of squares of (x point + shift - plane_point) . normal, of which the square of the whole distance takes
    /// the place by the share.
    double sum_of_squares(giXform3 const & x, giVector3 const & shift, double share) const;

private:
    int size() const;

    std::vector<double> numbers_;
};

}  // namespace internal
}  // namespace datumfit
