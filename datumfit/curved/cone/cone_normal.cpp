#include <datumfit/curved/cone/cone_normal.h>

giUnitVec3 datumfit::internal::cone_normal(giPoint3 const & q, double height, giUnitVec3 const & axis,
                                           giAngle const & half_angle, giPoint3 const & point) {
    giVector3 const v = point - q;
    if (axis.dot(v) - height > 0.0) return giUnitVec3(v - height * axis);
    // w + |w| tan h axis, times cos h: so it serves up to a right angle.
    giVector3 const w = axis.project_normal(v);
    double const sense = half_angle.cos() < 0.0 ? -1.0 : 1.0;
    giUnitVec3 const n(sense * (half_angle.cos() * w + w.length().value() * half_angle.sin() * axis));
    return n.invalid() ? axis : n;
}

giUnitVec3 sqGetConeNormal(giPoint3 const & apex, giUnitVec3 const & axis, giAngle const & half_angle,
                           giPoint3 const & point) {
    return datumfit::internal::cone_normal(apex, 0.0, axis, half_angle, point);
}
