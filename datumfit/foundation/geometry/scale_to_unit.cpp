#include <datumfit/foundation/geometry/scale_to_unit.h>

#include <algorithm>
#include <cmath>

namespace datumfit {
namespace internal {

bool scale_to_unit(double * coordinates, int n) {
    double greatest = 0.0;
    for (int i = 0; i < n; ++i) {
        if (!std::isfinite(coordinates[i])) return false;
        greatest = std::max(greatest, std::abs(coordinates[i]));
    }
    if (greatest == 0.0) return false;

    // A power of two brings the greatest coordinate into [1, 2) and rounds none that counts.
    int const exponent = std::ilogb(greatest);
    double squares = 0.0;
    for (int i = 0; i < n; ++i) {
        coordinates[i] = std::scalbn(coordinates[i], -exponent);
        squares += coordinates[i] * coordinates[i];
    }
    double const length = std::sqrt(squares);
    for (int i = 0; i < n; ++i) coordinates[i] /= length;
    return true;
}

}  // namespace internal
}  // namespace datumfit
