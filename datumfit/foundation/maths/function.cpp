#include <datumfit/foundation/maths/function.h>

#include <algorithm>
#include <cmath>
#include <limits>

mlFunction::~mlFunction() = default;

double mlFunction::function_derivative(int order, double t) const {
    if (order < 1) {
        return function(t);
    }
    // At this step the truncation, of order step^2, and the rounding, of order epsilon / step^order, balance.
    double const balanced = std::pow(std::numeric_limits<double>::epsilon(), 1.0 / (order + 2));
    double const step = std::min(balanced * std::max(1.0, std::fabs(t)), (t_max() - t_min()) / order);
    if (!(step > 0.0)) {
        return 0.0;
    }
    double const reach = 0.5 * order * step;
    double const centre = std::max(t_min() + reach, std::min(t, t_max() - reach));
    double sum = 0.0;
    double binomial = 1.0;
    for (int k = 0; k <= order; ++k) {
        sum += binomial * function(centre + (0.5 * order - k) * step);
        binomial *= -(order - k) / (k + 1.0);
    }
    return sum / std::pow(step, order);
}
