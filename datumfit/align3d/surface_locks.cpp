#include <datumfit/align3d/points_to_planes/points_to_planes.h>
#include <datumfit/align3d/surface_locks.h>

namespace datumfit {
namespace internal {

void surface_locks::lock_axis(sqSurfaceBestfitLockedAxisType type, giVector3 const & from, giVector3 const & to,
                              giPoint3 const & origin_from, giPoint3 const & origin_to) {
    // The engine looks at the difference of the two vectors, so they must not differ in length.
    axis_type_ = type;
    axis_from_ = from.unit();
    axis_to_ = to.unit();
    lock_origin(origin_from, origin_to);
}

void surface_locks::lock_origin(giPoint3 const & origin_from, giPoint3 const & origin_to) {
    origin_from_ = origin_from;
    origin_to_ = origin_to;
}

void surface_locks::lock_rotations(giVector3 const & d1, giVector3 const & d2, giVector3 const & d3) {
    for (giVector3 const & d : {d1, d2, d3}) {
        if (!d.invalid()) shift_directions_.append(d);
    }
}

void surface_locks::put_into(sqPointsToPlanes & engine, giVector3 const & base) const {
    giVector3 const any_normal(giAxisX);  // of the records that hold an axis, only the number and the points count
    if (shift_directions_.size() > 0) {
        engine.lock_rotations(shift_direction(0), shift_direction(1), shift_direction(2));
    } else if (has_axis()) {
        engine.lock_direction(axis_from_, axis_to_, 0);
        for (int k = 0; has_origin() && k < axis_type_; ++k) {
            engine.add_positioning(origin_from_ - base, origin_to_ - base, any_normal, 0);
        }
    } else if (has_origin()) {
        giWorkplane3 const axes(giOrigin, giAxisY, giAxisZ);
        engine.add_positioning(origin_from_ - base, axes, origin_to_ - base, sqPointsToPlanes::PLANE_LOCKED,
                               sqPointsToPlanes::PLANE_LOCKED, sqPointsToPlanes::PLANE_LOCKED, 0);
    }
}

void surface_locks::rebase() {
    if (has_origin()) origin_from_ = origin_to_;
    if (has_axis()) axis_from_ = axis_to_;
}

}  // namespace internal
}  // namespace datumfit
