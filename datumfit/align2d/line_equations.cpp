#include <datumfit/align2d/line_equations.h>
#include <datumfit/foundation/maths/singular_value_decomposition.h>

#include <cmath>

namespace datumfit {
namespace internal {

mlVector solution(mlMatrix const & A, mlVector const & b, double limit) {
    mlSingularValueDecomposition svd(A, mlJOB_U_WANTED, mlJOB_V_WANTED);
    mlVector x;
    multiply(svd.inverse(limit), b, x);
    if (!std::isfinite(scalar_product(x, x))) x.fill(0.0);
    return x;
}

}  // namespace internal
}  // namespace datumfit
