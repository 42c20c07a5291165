#include <datumfit/foundation/geometry/xform2.h>

giXform2::giXform2(giXformRotateTag, giPoint2 const & point, giAngle const & angle) : giXform2() {
    if (point.invalid()) return;
    // p - R p, without the cancellation of p.
    double const s = angle.sin(), v = 1.0 - angle.cos();
    giVector2 const shift(v * point.x() + s * point.y(), v * point.y() - s * point.x());
    *this = giXform2(giVector2(angle.cos(), s), shift);
}

giXform2::giXform2(giXformRotateTag, giPoint2 const & point, giVector2 const & from, giVector2 const & to)
    : giXform2() {
    if (!from.invalid() && !to.invalid()) *this = giXform2(giXformRotate, point, from.signed_angle(to));
}

giXform2::giXform2(giXformTranslateTag, giVector2 const & v) : giXform2() {
    if (!v.invalid()) *this = giXform2(giAxisX, v);
}

giXform2::giXform2(giXformProductTag, giXform2 const & a, giXform2 const & b) : giXform2() {
    if (!a.invalid() && !b.invalid()) *this = giXform2(a.rotated(b.turn_), a.rotated(b.shift_) + a.shift_);
}

giXform2::giXform2(giXformLocalTag, giPoint2 const & origin, giUnitVec2 const & x_axis) : giXform2() {
    if (origin.invalid() || x_axis.invalid()) return;
    *this = giXform2(giVector2(x_axis.x(), -x_axis.y()), giVector2(0.0, 0.0));
    shift_ = -rotated(origin.release());
}
