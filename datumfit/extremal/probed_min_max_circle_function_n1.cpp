#include <datumfit/extremal/probed_min_max_circle_function_n1.h>

#include <algorithm>
#include <limits>

double sqProbedMinMaxCircleFunctionN1::function(mlSlice const & x) const {
    if (points_.empty()) return 0.0;
    giPoint2 const centre(x[0], x[1]);
    double greatest = std::numeric_limits<double>::lowest(), least = std::numeric_limits<double>::max();
    for (std::size_t i = 0; i < points_.size(); ++i) {
        double const e = distance(points_[i], centre) - radii_[i];
        greatest = std::max(greatest, e);
        least = std::min(least, e);
    }
    return greatest - least;
}
