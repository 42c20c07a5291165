#pragma once

#include <datumfit/foundation/geometry/point2.h>
#include <datumfit/foundation/geometry/unit_vec2.h>

/// A frame in the plane: its origin and its x axis; the y axis is to the left of it. Unset by default.
class giWorkplane2 {
public:
    giWorkplane2() = default;
    giWorkplane2(giPoint2 const & origin, giUnitVec2 const & x_axis) : origin_(origin), x_axis_(x_axis) {}

    void become(giPoint2 const & origin, giUnitVec2 const & x_axis) { *this = giWorkplane2(origin, x_axis); }

    giPoint2 const & origin() const { return origin_; }

    /// The coordinates of p in this frame.
    giPoint2 to_work(giPoint2 const & p) const {
        giVector2 const d = p - origin_;
        return giPoint2(x_axis_.dot(d), x_axis_.cross(d));
    }

private:
    giPoint2 origin_;
    giUnitVec2 x_axis_;
};
