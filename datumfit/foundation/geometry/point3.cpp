#include <datumfit/foundation/geometry/point3.h>

giLength giPoint3::extreme_distance(giPoint3 const & b) const {
    return invalid() || b.invalid() ? giLength() : giLength(std::hypot(b.x() - x(), b.y() - y(), b.z_ - z_));
}
