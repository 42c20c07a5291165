#pragma once

#include <datumfit/align3d/locked_axis_type.h>
#include <datumfit/foundation/containers/dyn_arr.h>
#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/vector3.h>

class sqPointsToPlanes;

namespace datumfit {
namespace internal {

/// What restricts the transform of a surface fit: shifts alone, or else an axis, or else an origin.
class surface_locks {
public:
    void lock_axis(sqSurfaceBestfitLockedAxisType type, giVector3 const & from, giVector3 const & to,
                   giPoint3 const & origin_from, giPoint3 const & origin_to);
    void lock_origin(giPoint3 const & origin_from, giPoint3 const & origin_to);
    void lock_rotations(giVector3 const & d1, giVector3 const & d2, giVector3 const & d3);

    /// The engine has coordinates seen from `base`.
    void put_into(sqPointsToPlanes & engine, giVector3 const & base) const;

    /// After a step with these locks, which brings the measured side of each onto the nominal one.
    void rebase();

private:
    bool has_axis() const { return !axis_from_.invalid() && !axis_to_.invalid(); }
    bool has_origin() const { return !origin_from_.invalid() && !origin_to_.invalid(); }
    giVector3 shift_direction(int i) const { return i < shift_directions_.size() ? shift_directions_[i] : giVector3(); }

    giVector3 axis_from_, axis_to_;  // of unit length
    sqSurfaceBestfitLockedAxisType axis_type_ = sqLOCKED_AXIS_DIRECTION;
    giPoint3 origin_from_, origin_to_;
    giVector3coDynArr shift_directions_;
};

}  // namespace internal
}  // namespace datumfit
