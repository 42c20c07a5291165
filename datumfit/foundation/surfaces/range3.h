#pragma once

#include <datumfit/foundation/geometry/vector3.h>

#include <algorithm>
#include <limits>

namespace datumfit {
namespace internal {

/// A box along the axes, of points or of directions, as plain numbers that passes read. The one made by default is
/// empty.
struct range3 {
    static constexpr double infinity = std::numeric_limits<double>::infinity();

    double low[3] = {infinity, infinity, infinity};
    double high[3] = {-infinity, -infinity, -infinity};

    void merge(double x, double y, double z) {
        double const at[] = {x, y, z};
        for (int k = 0; k < 3; ++k) {
            low[k] = std::min(low[k], at[k]);
            high[k] = std::max(high[k], at[k]);
        }
    }
    void merge(range3 const & other) {
        for (int k = 0; k < 3; ++k) {
            low[k] = std::min(low[k], other.low[k]);
            high[k] = std::max(high[k], other.high[k]);
        }
    }

    double middle(int k) const { return low[k] + 0.5 * (high[k] - low[k]); }
    double half_diagonal() const {
        return 0.5 * giVector3(high[0] - low[0], high[1] - low[1], high[2] - low[2]).length();
    }
};

}  // namespace internal
}  // namespace datumfit
