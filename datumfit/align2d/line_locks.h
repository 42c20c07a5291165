#pragma once

#include <datumfit/foundation/geometry/unit_vec2.h>
#include <datumfit/foundation/geometry/xform2.h>

#include <cmath>

namespace datumfit {
namespace internal {

inline bool is_set_and_finite(giPoint2 const & p) {
    return !p.invalid() && std::isfinite(p.x()) && std::isfinite(p.y());
}

/// What restricts the transform of an alignment in the plane: a direction, a point, or both. A lock of which one side
/// has no direction, or no place, is none.
class line_locks {
public:
    void lock_axis(giVector2 const & from, giVector2 const & to) {
        axis_from_ = from;
        axis_to_ = to;
    }
    void lock_origin(giPoint2 const & from, giPoint2 const & to) {
        origin_from_ = from;
        origin_to_ = to;
    }

    bool has_axis() const { return !axis_from_.invalid() && !axis_to_.invalid(); }
    bool has_origin() const { return is_set_and_finite(origin_from_) && is_set_and_finite(origin_to_); }

    giVector2 const & axis_to() const { return axis_to_; }
    giPoint2 const & origin_from() const { return origin_from_; }
    giPoint2 const & origin_to() const { return origin_to_; }

    /// The turn from the measured direction to the nominal one.
    giAngle turn() const {
        giVector2 const & from = axis_from_;
        return from.signed_angle(axis_to_);
    }

    /// Hands the locks to something that has lock_axis() and lock_origin() as this has.
    template <class Engine>
    void put_into(Engine & engine) const {
        if (has_axis()) engine.lock_axis(axis_from_, axis_to_);
        if (has_origin()) engine.lock_origin(origin_from_, origin_to_);
    }

    /// The locks in coordinates whose origin lies at `base`.
    line_locks seen_from(giVector2 const & base) const {
        line_locks seen = *this;
        if (has_origin()) seen.lock_origin(origin_from_ - base, origin_to_ - base);
        return seen;
    }

    /// After a step with these locks, which brings the measured side of each onto the nominal one.
    void rebase() {
        if (has_axis()) axis_from_ = axis_to_;
        if (has_origin()) origin_from_ = origin_to_;
    }

private:
    giUnitVec2 axis_from_, axis_to_;
    giPoint2 origin_from_, origin_to_;
};

}  // namespace internal
}  // namespace datumfit
