#include "support/gradients.h"
#include "support/passes.h"
#include "support/shapes.h"
#include "support/vectors.h"

#include <datumfit/curved/axis_rev/axis_rev_kernel.h>

#include <gtest/gtest.h>

namespace {

using namespace datumfit::internal;

// A waist about an axis: points and the normals of its profile, turned off by some noise.
struct waist {
    giPoint3coDynArr points;
    giUnitVec3coDynArr normals;

    waist(giPoint3 const & centre, giUnitVec3 const & axis, double size, double error = 0.0) {
        giUnitVec3 const u = axis.any_normal(), v(axis.cross(u));
        noise off;
        for (int i = 0; i < 60; ++i) {
            double const t = 2.4 * i, height = i / 30.0 - 1.0;
            giVector3 const away = std::cos(t) * u + std::sin(t) * v;
            points.append(centre + size * ((2.0 + 0.5 * height * height) * away + height * axis));
            giUnitVec3 const n(away - height * axis + off.vector(error));
            normals.append(i % 3 == 0 ? -n : n);
        }
    }
};

mlVector six(giPoint3 const & p, giVector3 const & a) {
    return vector_of({p.x(), p.y(), p.z(), a.x(), a.y(), a.z()});
}

TEST(UnitVectorDifferentiator, FollowsTheUnitVector) {
    giVector3 const v(0.3, -2.0, 1.1), dv(0.7, 0.2, -0.4);
    giVector3 dw;
    sknUnitVectorDifferentiator3(v).first_derivative(dv, dw);
    for (int k = 0; k < 3; ++k) {
        auto const w = [&](double by) { return (v + by * dv).unitize().coordinate(gi_Axis(k)); };
        EXPECT_NEAR(derivative(w, 0.0, 0.1), dw.coordinate(gi_Axis(k)), 1e-12);
    }
    sknUnitVectorDifferentiator3(giVector3(0.0, 0.0, 0.0)).first_derivative(dv, dw);
    EXPECT_EQ(0.0, dw.length().value());
}

// With a direction that has not unit length, as parameters may come, and by the passes of the same problem.
TEST(AxisRevModel, MeasuresNormalsAndTheirDerivatives) {
    waist const b(giPoint3(1.0, 2.0, 3.0), general_direction(), 2.0, 0.05);
    sqLeastSquareAxisRev problem(b.points, b.normals);
    mlVector const p = six(giPoint3(1.2, 2.1, 2.7), giVector3(0.8, -1.0, 1.5));
    mlVector q(p), each, scales;
    problem.distances(q, each);
    double d, farthest = 0.0;
    problem.set_parameters(p);
    for (int i = 0; i < 60; ++i) {
        problem.get_distance(d, i);
        giVector3 const across = b.normals[i].cross(giVector3(p[3], p[4], p[5]));
        giVector3 const v = b.points[i] - giPoint3(p[0], p[1], p[2]);
        EXPECT_NEAR(v.dot(across) / across.length().value(), d, 1e-14);
        EXPECT_NEAR(each[i], d, 1e-14);
        farthest = utMath::max(farthest, v.length().value());
    }
    expect_gradients(problem, p, 5, false);
    problem.set_parameters(p);
    problem.parameter_scales(scales);
    EXPECT_EQ(6, scales.dimension());
    EXPECT_EQ(1.0, scales[2]);
    EXPECT_EQ(farthest, scales[3]);
}

TEST(AxisRevModel, LetsNormalsAlongTheAxisMeetIt) {
    giPoint3coDynArr const points = {giPoint3(1.0, 2.0, 3.0)};
    giUnitVec3coDynArr const normals = {giUnitVec3(giAxisX)};
    sqLeastSquareAxisRev problem(points, normals);
    double d;
    mlVector g;
    for (double const sine : {1e-7, 1.1e-7}) {
        problem.set_parameters(six(giPoint3(0.0, 0.0, 0.0), giVector3(1.0, sine, 0.0)));
        problem.get_distance_and_gradient(d, g, 0);
        EXPECT_EQ(sine > 1e-7 ? 3.0 : 0.0, d);
        EXPECT_EQ(sine > 1e-7 ? -1.0 : 0.0, g[2]);
        EXPECT_EQ(sine > 1e-7, g[5] != 0.0);
        mlVector p = six(giPoint3(0.0, 0.0, 0.0), giVector3(1.0, sine, 0.0)), each;
        problem.distances(p, each);
        EXPECT_NEAR(d, each[0], 1e-12);
    }
}

TEST(AxisRevKernel, PassesGiveTheSameBitsInLanesOfBothKinds) {
    expect_equal_passes<axis_rev_kernel>();
}

class AxisRevFit : public testing::TestWithParam<placement> {};

TEST_P(AxisRevFit, FindsTheAxisAndLeavesNothingToGain) {
    placement const at = GetParam();
    giPoint3 const centre = general_point(at.offset);
    for (double const error : {0.0, 1e-3}) {
        waist const b(centre, general_direction(), at.size, error);
        giPoint3 point;
        giUnitVec3 direction;
        double deviation;
        ASSERT_EQ(1, sqLeastSquareEvaluator::evaluate_axis_rev(b.points, b.normals, point, direction, deviation));
        double const rounding = rounding_at(at), allowed = 8.0 * rounding + 2.0 * error * at.size;
        EXPECT_NEAR(0.0, angle_between(general_direction(), direction), allowed / at.size);
        EXPECT_NEAR(0.0, sqLeastSquareDistance3::F(point, direction, centre), allowed);
        EXPECT_NEAR(0.0, deviation, 8.0 * rounding + 3.0 * error * at.size);  // the normals' levers are 2 to 3.6 long
        sqLeastSquareAxisRev problem(b.points, b.normals);
        problem.set_parameters(six(point, direction));
        double sum[6] = {}, d;
        for (int i = 0; i < 60; ++i) {
            mlVector g;
            problem.get_distance_and_gradient(d, g, i);
            for (int k = 0; k < 6; ++k) sum[k] += d * g[k] / 60.0;
        }
        // The model turns the axis about its point; turned about the centre, the levers are those of the points.
        giVector3 const shift(sum[0], sum[1], sum[2]);
        double const lever = direction.dot(centre - point);
        giVector3 const tilt = giVector3(sum[3], sum[4], sum[5]) - lever * shift;
        EXPECT_NEAR(0.0, shift.length().value(), 2.0 * rounding);
        EXPECT_NEAR(0.0, tilt.length().value(), 8.0 * rounding * at.size);

        giUnitVec3 guess(0.5, -0.4, 0.7);
        ASSERT_EQ(1, sqLeastSquareEvaluator::evaluate_axis_rev(b.points, b.normals, point, guess, deviation));
        EXPECT_NEAR(0.0, angle_between(guess, direction), 8.0 * rounding / at.size);
    }
}

INSTANTIATE_TEST_SUITE_P(Placements, AxisRevFit, testing::ValuesIn(placements),
                         [](auto const & at) { return name_of(at.param); });

TEST(AxisRevFits, RefuseWhatDoesNotMatchAndTakeTheFirstAxisOfASphere) {
    giPoint3 const centre(1.0, -2.0, 0.5);
    giPoint3coDynArr points = sphere_cap(centre, 2.0, 3.0, 6);
    giUnitVec3coDynArr normals;
    for (int i = 0; i < 5; ++i) normals.append(giUnitVec3(points[i] - centre));
    giPoint3 point = centre;
    giUnitVec3 direction;
    double deviation = 7.0;
    EXPECT_EQ(0, sqLeastSquareEvaluator::evaluate_axis_rev(points, normals, point, direction, deviation));
    EXPECT_TRUE(direction.invalid() && deviation == 7.0);
    normals.append(giUnitVec3(points[5] - centre));
    EXPECT_EQ(1, sqLeastSquareEvaluator::evaluate_axis_rev(points, normals, point, direction, deviation));
    EXPECT_NEAR(1.0, direction.x(), 1e-15);
    EXPECT_NEAR(0.0, sqLeastSquareDistance3::F(point, direction, centre), 1e-15);
    EXPECT_NEAR(0.0, deviation, 1e-15);
    points.shrink(5, 0);
    normals.shrink(5, 0);
    EXPECT_EQ(0, sqLeastSquareEvaluator::evaluate_axis_rev(points, normals, point, direction, deviation));
}

}  // namespace
