#include "support/gradients.h"
#include "support/passes.h"
#include "support/shapes.h"
#include "support/vectors.h"

#include <datumfit/curved/cone/least_square_cone_fixed_axis.h>
#include <datumfit/curved/cone/least_square_probed_cone.h>
#include <datumfit/primitives/flat_kernel.h>
#include <datumfit/primitives/ring_kernel.h>
#include <datumfit/primitives/round_kernel.h>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

namespace {

giPoint2coDynArr const points2 = {giPoint2(3.0, 1.5), giPoint2(-0.4, 2.2), giPoint2(1.1, -2.0)};
giPoint3coDynArr const points3 = {giPoint3(3.0, 1.5, 0.3), giPoint3(-0.4, 2.2, 1.9), giPoint3(1.1, -2.0, -0.6),
                                  giPoint3(-1.3, 0.7, 2.4), giPoint3(0.9, 3.1, -1.2)};
doublecoDynArr const radii = {0.5, 0.25, 0.75, 0.5, 0.1}, no_radii;

struct about_fixed_axis : sqLeastSquareConeFixedAxis {
    about_fixed_axis() : sqLeastSquareConeFixedAxis(points3) { set_axis(general_direction()); }
};

// A model, and a general state of it.
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
std::vector<double> const round = {0.3, 0.2, -0.1, 0.31, -0.52, 0.79, 1.7},
                          cone = {0.3, 0.2, -0.1, 0.31, -0.52, 0.79, 1.7, 0.6};

model_case const models[] = {
    {"circle", maker<sqLeastSquareCircle2>(points2), {0.3, 0.2, 1.7}},
    {"probed_circle", maker<sqLeastSquareProbedCircle2>(points2, radii, without), {0.3, 0.2, 1.7}},
    {"circle_in_space", maker<sqLeastSquareCircle3>(points3), round},
    {"sphere", maker<sqLeastSquareSphere>(points3), {0.3, 0.2, -0.1, 1.7}},
    {"probed_sphere", maker<sqLeastSquareProbedSphere>(points3, radii, within), {0.3, 0.2, -0.1, 1.7}},
    {"cylinder", maker<sqLeastSquareCylinder>(points3), round},
    {"probed_cylinder", maker<sqLeastSquareProbedCylinder>(points3, radii, without), round},
    {"cone", maker<sqLeastSquareCone>(points3), cone},
    {"probed_cone", maker<sqLeastSquareProbedCone>(points3, radii, without), cone},
    {"cone_about_fixed_axis", maker<about_fixed_axis>(), {0.4, -0.3}},
    {"torus", maker<sqLeastSquareTorus>(points3, no_radii, without), cone},
    {"probed_torus", maker<sqLeastSquareTorus>(points3, radii, without), cone},
    {"probed_line", maker<sqLeastSquareProbedLine2>(points2, radii, within), {0.4, 0.6, -0.8}},
    {"probed_plane", maker<sqLeastSquareProbedPlane>(points3, radii, without), {0.4, 0.31, -0.52, 0.79}},
};

class Model : public testing::TestWithParam<model_case> {};
INSTANTIATE_TEST_SUITE_P(All, Model, testing::ValuesIn(models), [](auto const & m) { return m.param.name; });

TEST_P(Model, GradientsAreThoseOfTheDistances) {
    expect_gradients(*GetParam().make(), vector_of(GetParam().state), 3);
}

TEST(Passes, GiveTheSameBitsInLanesOfBothKindsAndWhatThePointsGive) {
    expect_equal_passes<datumfit::internal::round_kernel<2, false>>();
    expect_equal_passes<datumfit::internal::round_kernel<3, true>>();
    expect_equal_passes<datumfit::internal::flat_kernel<2>>();
    expect_equal_passes<datumfit::internal::flat_kernel<3>>();
    expect_equal_passes<datumfit::internal::ring_kernel>();
}

TEST(Models, LoseTheDirectionAtTheCentreAndOnACircleInSpace) {
    double d;
    mlVector g;
    giPoint3coDynArr const at = {giPoint3(1.0, 2.0, 3.0), giPoint3(1.0 + 1e-7, 2.0, 3.0), giPoint3(3.0, 2.0, 3.0)};
    sqLeastSquareSphere sphere(at);
    sphere.set_parameters(vector_of({1.0, 2.0, 3.0, 2.0}));
    for (int const i : {0, 1}) {
        sphere.get_distance_and_gradient(d, g, i);
        EXPECT_EQ(i == 0 ? 0.0 : (1.0 + 1e-7) - 1.0 > 1e-7 ? -1.0 : 0.0, g[0]);
        EXPECT_EQ(-1.0, g[3]);
    }
    EXPECT_NEAR(std::sqrt(4.0 / 3.0), sphere.evaluate_radius(at[0]), 1e-7);

    sqLeastSquareCircle3 circle(at);
    circle.set_parameters(vector_of({1.0, 2.0, 3.0, 0.0, 0.0, 7.0, 2.0}));
    circle.get_distance_and_gradient(d, g, 2);
    EXPECT_EQ(0.0, circle.get_last_square_distance());
    for (int k = 0; k < 7; ++k) EXPECT_EQ(k < 6 ? 0.0 : -1.0, g[k]);
    mlVector scales(mlVectorZero, 9);
    circle.parameter_scales(scales);
    EXPECT_EQ(7, scales.dimension());
    EXPECT_EQ(2.0, scales[4]);
    EXPECT_EQ(1.0, scales[2] * scales[6]);
    mlVector flat(mlVectorZero, 7);
    circle.normalize_parameters(flat);
    EXPECT_EQ(1.0, flat[3]);
}

TEST(Models, GradeTheSpreadOfPoints) {
    giPoint2coDynArr const around = arc(giPoint2(3.0, -2.0), 5.0, 2.0 * utMath::pi(), 100);
    mlVector const circle = vector_of({3.0, -2.0, 5.0});
    EXPECT_NEAR(std::sqrt(0.5), sqLeastSquareCircle2(around).point_distribution_quality(circle), 1e-14);
    EXPECT_EQ(0.0, sqLeastSquareCircle2(giPoint2coDynArr()).point_distribution_quality(circle));
    giPoint3coDynArr corners;
    for (int i = 0; i < 8; ++i) corners.append(giPoint3(i & 1 ? 1.0 : -1.0, i & 2 ? 1.0 : -1.0, i & 4 ? 1.0 : -1.0));
    mlVector const sphere = vector_of({0.0, 0.0, 0.0, std::sqrt(3.0)});
    EXPECT_NEAR(std::sqrt(1.0 / 3.0), sqLeastSquareSphere(corners).point_distribution_quality(sphere), 1e-14);
}

}  // namespace
