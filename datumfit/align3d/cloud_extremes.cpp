#include <datumfit/align3d/cloud_extremes.h>

#include <algorithm>
#include <limits>

namespace datumfit {
namespace internal {

cloud_extremes::cloud_extremes(sqProjectedPoint3coDynArr const & cloud)
    : smallest_signed(std::numeric_limits<double>::max()), largest_signed(-smallest_signed) {
    for (int i = 0; i < cloud.size(); ++i) {
        sqProjectedPoint3 const & p = cloud.read(i);
        if (p.invalid()) {
            ++invalid_points;
            continue;
        }
        ++valid_points;
        double const deviation = p.signed_distance();
        largest_distance = std::max(largest_distance, p.distance().value());
        smallest_signed = std::min(smallest_signed, deviation);
        largest_signed = std::max(largest_signed, deviation);
    }
}

}  // namespace internal
}  // namespace datumfit
