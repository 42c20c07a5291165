#include <datumfit/foundation/maths/function.h>
#include <datumfit/foundation/maths/function_n1.h>

#include <gtest/gtest.h>

#include <cmath>

namespace {

struct root : mlFunction {
    double function(double t) const override { return std::sqrt(t); }
    double t_min() const override { return 0.0; }
    double t_max() const override { return 4.0; }
};

TEST(Function, HasDerivativesWithinItsInterval) {
    EXPECT_NEAR(1.0 / 3.0, root().function_derivative(1, 2.25), 1e-9);
    EXPECT_NEAR(-2.0 / 27.0, root().function_derivative(2, 2.25), 1e-7);
    EXPECT_TRUE(std::isfinite(root().function_derivative(2, 0.0)));
}

struct mixed : mlFunctionN1 {
    mixed() : mlFunctionN1(2) {}
    double function(mlSlice const & x) const override { return x[0] * x[0] * std::sin(x[1]); }
};

TEST(FunctionN1, HasGradientAndHessian) {
    double const at[] = {3.0, 0.5};
    mlVector g;
    mlMatrix h;
    mixed().gradient(mlVector(utConvert, at, 2), g);
    mixed().hessian(mlVector(utConvert, at, 2), h);
    EXPECT_EQ(2, g.dimension());
    EXPECT_NEAR(9.0 * std::cos(0.5), g[1], 1e-8);
    EXPECT_NEAR(2.0 * std::sin(0.5), h(0, 0), 1e-5);
    EXPECT_NEAR(6.0 * std::cos(0.5), h(0, 1), 1e-5);
    EXPECT_EQ(h(0, 1), h(1, 0));
    EXPECT_NEAR(-9.0 * std::sin(0.5), h(1, 1), 1e-5);
}

}  // namespace
