#pragma once

#include <datumfit/foundation/containers/dyn_arr.h>
#include <datumfit/foundation/containers/dyn_arr_iterator.h>
#include <datumfit/foundation/geometry/point2.h>
#include <datumfit/foundation/geometry/vector2.h>

/// A measured point and the nominal line that it should lie on.
///
/// Under a transform X the signed deviation is (X measured - line_point) . line_normal. The normal is not scaled to
/// unit length here; with one of another length the deviation is that many times the distance. The record made by
/// default is not set.
class sqLineAndPoint {
public:
    sqLineAndPoint() = default;
    sqLineAndPoint(giPoint2 const & measured, giPoint2 const & line_point, giVector2 const & line_normal)
        : line_point_(line_point.release()), line_normal_(line_normal), measured_point_(measured.release()) {}

    /// The points by their coordinates.
    giVector2 const & line_point() const { return line_point_; }
    giVector2 const & line_normal() const { return line_normal_; }
    giVector2 const & measured_point() const { return measured_point_; }

    void set_line_point(giPoint2 const & p) { line_point_ = p.release(); }
    void set_measured_point(giPoint2 const & p) { measured_point_ = p.release(); }

private:
    giVector2 line_point_, line_normal_, measured_point_;
};

using sqLineAndPointcoDynArr = coDynArr<sqLineAndPoint>;
using sqLineAndPointcoDynArrcoIterator = coDynArrcoIterator<sqLineAndPoint>;
