#include <datumfit/foundation/geometry/point2.h>

giLength giPoint2::extreme_distance(giPoint2 const & b) const {
    return invalid() || b.invalid() ? giLength() : giLength(std::hypot(b.x_ - x_, b.y_ - y_));
}
