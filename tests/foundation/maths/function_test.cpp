#include <datumfit/foundation/maths/function.h>
#include <datumfit/foundation/maths/function_n1.h>

#include <gtest/gtest.h>

#include <cmath>

namespace {

struct root_of_positive : mlFunction {
    double function(double t) const override { return std::sqrt(t); }
    double t_min() const override { return 0.0; }
    double t_max() const override { return 4.0; }
};

TEST(Function, HasDerivativesWithinItsInterval) {
    root_of_positive const f;
    EXPECT_EQ(1.5, f.function_derivative(0, 2.25));
    EXPECT_NEAR(1.0 / 3.0, f.function_derivative(1, 2.25), 1e-9);
    EXPECT_NEAR(-2.0 / 27.0, f.function_derivative(2, 2.25), 1e-7);
    EXPECT_NEAR(0.25, f.function_derivative(1, 4.0), 1e-5);
    EXPECT_TRUE(std::isfinite(f.function_derivative(2, 0.0)));
}

// x^2 y + sin z
struct mixed : mlFunctionN1 {
    mixed() : mlFunctionN1(3) {}
    double function(mlSlice const & x) const override { return x[0] * x[0] * x[1] + std::sin(x[2]); }
};

TEST(FunctionN1, HasGradientAndHessian) {
    double const at[] = {3.0, -2.0, 0.5};
    mlVector const x(utConvert, at, 3);
    mlVector g;
    mlMatrix h;
    mixed().gradient(x, g);
    mixed().hessian(x, h);
    double const gradient[] = {-12.0, 9.0, std::cos(0.5)};
    double const hessian[] = {-4.0, 6.0, 0.0, 6.0, 0.0, 0.0, 0.0, 0.0, -std::sin(0.5)};
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(gradient[i], g[i], 1e-8);
        for (int j = 0; j < 3; ++j) {
            EXPECT_NEAR(hessian[3 * i + j], h(i, j), 1e-5);
        }
    }
}

}  // namespace
