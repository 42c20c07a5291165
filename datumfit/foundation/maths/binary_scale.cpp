#include <datumfit/foundation/maths/binary_scale.h>

#include <Eigen/Core>
#include <algorithm>
#include <cmath>

double datumfit::internal::binary_scale(mlMatrix const & m) {
    if (m.rows() == 0 || m.cols() == 0) {
        return 1.0;
    }
    Eigen::Map<Eigen::MatrixXd const> const elements(m.row_data(0), m.cols(), m.rows());
    double const largest = elements.cwiseAbs().maxCoeff<Eigen::PropagateNaN>();
    if (!std::isfinite(largest)) {
        return 0.0;
    }
    int exponent = 0;
    std::frexp(largest, &exponent);
    // The inverse of the smallest numbers would overflow.
    constexpr int largest_exponent = 1000;
    return std::ldexp(1.0, std::min(1 - exponent, largest_exponent));
}
