#include <datumfit/foundation/geometry/unit_vec3.h>

#include <cmath>

giUnitVec3 giUnitVec3::any_normal() const {
    if (invalid()) return giUnitVec3();
    // The product with the coordinate axis farthest from this direction is never short, and as it only moves
    // coordinates about, it is perpendicular without rounding.
    double const ax = std::abs(x()), ay = std::abs(y()), az = std::abs(z());
    gi_Axis const farthest = ay <= ax && ay <= az ? giAxisY : ax <= az ? giAxisX : giAxisZ;
    return giVector3(farthest).cross(vector_);
}
