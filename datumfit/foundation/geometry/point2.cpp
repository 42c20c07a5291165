#include <datumfit/foundation/geometry/point2.h>
#include <datumfit/foundation/utilities/hypotenuse.h>

giLength giPoint2::extreme_distance(giPoint2 const & b) const {
    return invalid() || b.invalid() ? giLength() : giLength(datumfit::internal::hypotenuse(b.x_ - x_, b.y_ - y_));
}
