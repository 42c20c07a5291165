#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/utilities/hypotenuse.h>

giLength giPoint3::extreme_distance(giPoint3 const & b) const {
    return invalid() || b.invalid() ? giLength()
                                    : giLength(datumfit::internal::hypotenuse(b.x() - x(), b.y() - y(), b.z_ - z_));
}
