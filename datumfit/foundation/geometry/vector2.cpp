#include <datumfit/foundation/geometry/angle.h>
#include <datumfit/foundation/geometry/vector2.h>

giAngle giVector2::signed_angle(giVector2 const & b) const {
    return giAngle(giAngleTangent2, cross(b), dot(b));
}

giVector2 & giVector2::unitize_extreme() {
    double unit[] = {x_, y_};
    bool const has_direction = !invalid() && datumfit::internal::scale_to_unit(unit, 2);
    return *this = has_direction ? giVector2(unit[0], unit[1], 1.0) : giVector2();
}
