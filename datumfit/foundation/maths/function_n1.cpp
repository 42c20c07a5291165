#include <datumfit/foundation/maths/function_n1.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// The step of a central difference of the given order at which truncation and rounding balance.
double difference_step(int order, double x) {
    return std::pow(std::numeric_limits<double>::epsilon(), 1.0 / (order + 2)) * std::max(1.0, std::fabs(x));
}

// A point that is moved along one or two axes for a difference.
class moved_point {
public:
    moved_point(mlFunctionN1 const & f, mlSlice const & x) : f_(f) { at_.become(utCopy, x); }

    double value(int i, double step) { return value(i, step, i, 0.0); }
    double value(int i, double step_i, int j, double step_j) {
        mlVector moved = at_;
        moved[i] += step_i;
        moved[j] += step_j;
        return f_.function(moved);
    }

private:
    mlFunctionN1 const & f_;
    mlVector at_;
};

}  // namespace

mlFunctionN1::~mlFunctionN1() = default;

void mlFunctionN1::gradient(mlSlice const & x, mlVector & g) const {
    moved_point at(*this, x);
    g.become(mlVectorDim, variables_);
    for (int i = 0; i < variables_; ++i) {
        double const step = difference_step(1, x[i]);
        g[i] = (at.value(i, step) - at.value(i, -step)) / (2.0 * step);
    }
}

void mlFunctionN1::hessian(mlSlice const & x, mlMatrix & h) const {
    moved_point at(*this, x);
    h.become(variables_, variables_);
    for (int i = 0; i < variables_; ++i) {
        double const a = difference_step(2, x[i]);
        for (int j = 0; j <= i; ++j) {
            // On the diagonal this is the second difference of twice the step.
            double const b = difference_step(2, x[j]);
            double const difference =
                (at.value(i, a, j, b) - at.value(i, a, j, -b)) - (at.value(i, -a, j, b) - at.value(i, -a, j, -b));
            h(i, j) = h(j, i) = difference / (4.0 * a * b);
        }
    }
}
