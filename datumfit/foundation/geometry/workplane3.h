#pragma once

#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/unit_vec3.h>

/// A right-handed frame in space, whose first two axes span a plane and whose third is the plane's normal.
class giWorkplane3 {
public:
    /// An invalid frame.
    giWorkplane3() = default;

    /// The frame of the axes v x w, v and w; v and w are perpendicular.
    giWorkplane3(giPoint3 const & origin, giUnitVec3 const & v, giUnitVec3 const & w)
        : origin_(origin), u_(v.cross(w)), v_(v), w_(w) {}

    void become(giPoint3 const & origin, giUnitVec3 const & v, giUnitVec3 const & w) {
        *this = giWorkplane3(origin, v, w);
    }

    giPoint3 const & origin() const { return origin_; }
    giUnitVec3 const & u_vector() const { return u_; }
    giUnitVec3 const & v_vector() const { return v_; }
    giUnitVec3 const & w_vector() const { return w_; }
    bool invalid() const { return origin_.invalid(); }

    /// The coordinates of p along the three axes, from the origin.
    giPoint3 to_work(giPoint3 const & p) const {
        giVector3 const d = p - origin_;
        return giPoint3(u_.dot(d), v_.dot(d), w_.dot(d));
    }
    /// The point of these coordinates.
    giPoint3 to_world(giPoint3 const & p) const { return origin_ + to_world(p.release()); }
    giVector3 to_world(giVector3 const & v) const { return v.x() * u_ + v.y() * v_ + v.z() * w_; }

private:
    giPoint3 origin_;
    giUnitVec3 u_, v_, w_;
};
