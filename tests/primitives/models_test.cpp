#include "support/passes.h"
#include "support/ridders.h"
#include "support/shapes.h"

#include <datumfit/primitives/flat_kernel.h>
#include <datumfit/primitives/ring_kernel.h>
#include <datumfit/primitives/round_kernel.h>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

namespace {

giPoint2coDynArr const points2 = {giPoint2(3.0, 1.5), giPoint2(-0.4, 2.2), giPoint2(1.1, -2.0)};
giPoint3coDynArr const points3 = {giPoint3(3.0, 1.5, 0.3), giPoint3(-0.4, 2.2, 1.9), giPoint3(1.1, -2.0, -0.6)};
doublecoDynArr const radii = {0.5, 0.25, 0.75};

// A model, a general state of it, and the sign with which the radius of a point enters its distance.
struct model_case {
    char const * name;
    std::function<std::unique_ptr<mlDistanceLeastSquares>()> make;
    std::vector<double> state;
};

template <class Problem, class... Arguments>
std::function<std::unique_ptr<mlDistanceLeastSquares>()> maker(Arguments const &... arguments) {
    return [&arguments...] { return std::make_unique<Problem>(arguments...); };
}
int const within = 1, without = 0;

model_case const models[] = {
    {"circle", maker<sqLeastSquareCircle2>(points2), {0.3, 0.2, 1.7}},
    {"probed_circle", maker<sqLeastSquareProbedCircle2>(points2, radii, without), {0.3, 0.2, 1.7}},
    {"circle_in_space", maker<sqLeastSquareCircle3>(points3), {0.3, 0.2, -0.1, 0.31, -0.52, 0.79, 1.7}},
    {"sphere", maker<sqLeastSquareSphere>(points3), {0.3, 0.2, -0.1, 1.7}},
    {"probed_sphere", maker<sqLeastSquareProbedSphere>(points3, radii, within), {0.3, 0.2, -0.1, 1.7}},
    {"cylinder", maker<sqLeastSquareCylinder>(points3), {0.3, 0.2, -0.1, 0.31, -0.52, 0.79, 1.7}},
    {"probed_cylinder",
     maker<sqLeastSquareProbedCylinder>(points3, radii, without),
     {0.3, 0.2, -0.1, 0.3, -0.5, 0.8, 2}},
    {"probed_line", maker<sqLeastSquareProbedLine2>(points2, radii, within), {0.4, 0.6, -0.8}},
    {"probed_plane", maker<sqLeastSquareProbedPlane>(points3, radii, without), {0.4, 0.31, -0.52, 0.79}},
};

class Model : public testing::TestWithParam<model_case> {
protected:
    // The state with one parameter moved, in its unique form.
    mlVector moved(mlDistanceLeastSquares const & problem, int k, double by) const {
        mlVector p(utConvert, GetParam().state.data(), problem.n_parameters());
        problem.normalize_parameters(p);
        p[k] += by;
        problem.normalize_parameters(p);
        return p;
    }
};

TEST_P(Model, GradientsAreThoseOfTheDistances) {
    auto const problem = GetParam().make();
    for (int i = 0; i < 3; ++i) {
        double d, alone;
        mlVector g;
        problem->set_parameters(moved(*problem, 0, 0.0));
        problem->get_distance(alone, i);
        problem->get_distance_and_gradient(d, g, i);
        EXPECT_NEAR(alone, d, 1e-15);
        EXPECT_NEAR(d * d, problem->get_last_square_distance(), 1e-14);
        for (int k = 0; k < problem->n_parameters(); ++k) {
            auto const distance = [&](double by) {
                double at;
                problem->set_parameters(moved(*problem, k, by));
                problem->get_distance(at, i);
                return at;
            };
            EXPECT_NEAR(derivative(distance, 0.0, 0.05), g[k], 1e-9) << "point " << i << ", parameter " << k;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, Model, testing::ValuesIn(models), [](auto const & m) { return m.param.name; });

TEST(Passes, GiveTheSameBitsInLanesOfBothKindsAndWhatThePointsGive) {
    expect_equal_passes<datumfit::internal::round_kernel<2, false>>();
    expect_equal_passes<datumfit::internal::round_kernel<3, true>>();
    expect_equal_passes<datumfit::internal::flat_kernel<2>>();
    expect_equal_passes<datumfit::internal::flat_kernel<3>>();
    expect_equal_passes<datumfit::internal::ring_kernel>();
}

TEST(Models, TurnTheRadiiToTheSideOfTheProbe) {
    // |p - C| is 5 for the point, so a centre inside a circle of 5.5, or outside one of 4.5, is on it.
    giPoint2coDynArr const at = {giPoint2(3.0, 4.0)};
    doublecoDynArr const half = {0.5};
    for (int const inside : {7, 0}) {
        sqLeastSquareProbedCircle2 problem(at, half, inside);
        double const circle[] = {0.0, 0.0, inside != 0 ? 5.5 : 4.5};
        problem.set_parameters(mlVector(utConvert, circle, 3));
        double d = 1.0;
        problem.get_distance(d, 0);
        EXPECT_EQ(0.0, d);
    }
    EXPECT_EQ(0.5, half[0]) << "the caller's radii stay";
}

TEST(Models, LoseTheDirectionAtTheCentreAndOnACircleInSpace) {
    double d;
    mlVector g;
    giPoint3coDynArr const at = {giPoint3(1.0, 2.0, 3.0), giPoint3(1.0 + 1e-7, 2.0, 3.0), giPoint3(3.0, 2.0, 3.0)};
    sqLeastSquareSphere sphere(at);
    double const s[] = {1.0, 2.0, 3.0, 2.0};
    sphere.set_parameters(mlVector(utConvert, s, 4));
    for (int const i : {0, 1}) {
        sphere.get_distance_and_gradient(d, g, i);
        EXPECT_EQ(i == 0 ? 0.0 : (1.0 + 1e-7) - 1.0 > 1e-7 ? -1.0 : 0.0, g[0]);
        EXPECT_EQ(-1.0, g[3]);
    }
    EXPECT_NEAR(std::sqrt(4.0 / 3.0), sphere.evaluate_radius(at[0]), 1e-7);

    sqLeastSquareCircle3 circle(at);
    double const c[] = {1.0, 2.0, 3.0, 0.0, 0.0, 7.0, 2.0};
    circle.set_parameters(mlVector(utConvert, c, 7));
    circle.get_distance_and_gradient(d, g, 2);
    EXPECT_EQ(0.0, circle.get_last_square_distance());
    for (int k = 0; k < 7; ++k) EXPECT_EQ(k < 6 ? 0.0 : -1.0, g[k]);
    mlVector scales(mlVectorZero, 9);
    circle.parameter_scales(scales);
    EXPECT_EQ(7, scales.dimension());
    EXPECT_EQ(2.0, scales[4]);
    EXPECT_EQ(1.0, scales[2] * scales[6]);
    EXPECT_EQ(6, circle.n_independent_parameters());
    mlVector flat(mlVectorZero, 7);
    circle.normalize_parameters(flat);
    EXPECT_EQ(1.0, flat[3]);
}

TEST(Models, GradeTheSpreadOfPoints) {
    giPoint2coDynArr const around = arc(giPoint2(3.0, -2.0), 5.0, 2.0 * utMath::pi(), 100);
    double const circle[] = {3.0, -2.0, 5.0};
    mlVector const c(utConvert, circle, 3);
    EXPECT_NEAR(std::sqrt(0.5), sqLeastSquareCircle2(around).point_distribution_quality(c), 1e-14);
    EXPECT_LT(sqLeastSquareCircle2(arc(giPoint2(3.0, -2.0), 5.0, 1.0, 100)).point_distribution_quality(c), 0.03);
    EXPECT_EQ(0.0, sqLeastSquareCircle2(giPoint2coDynArr()).point_distribution_quality(c));

    giPoint3coDynArr corners;
    for (int i = 0; i < 8; ++i) corners.append(giPoint3(i & 1 ? 1.0 : -1.0, i & 2 ? 1.0 : -1.0, i & 4 ? 1.0 : -1.0));
    double const sphere[] = {0.0, 0.0, 0.0, std::sqrt(3.0)};
    double const quality = sqLeastSquareSphere(corners).point_distribution_quality(mlVector(utConvert, sphere, 4));
    EXPECT_NEAR(std::sqrt(1.0 / 3.0), quality, 1e-14);
}

}  // namespace
