#include <datumfit/foundation/geometry/vector3.h>

giVector3 & giVector3::unitize_extreme() {
    double unit[] = {x_, y_, z_};
    bool const has_direction = !invalid() && datumfit::internal::scale_to_unit(unit, 3);
    return *this = has_direction ? giVector3(unit[0], unit[1], unit[2], 1.0) : giVector3();
}
