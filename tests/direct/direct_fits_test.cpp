#include <datumfit/datumfit.h>
#include <gtest/gtest.h>
#include "support/shapes.h"

#include <cmath>
#include <limits>
#include <random>

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr double greatest = std::numeric_limits<double>::max();

giPoint2coDynArr ellipse(giPoint2 const & centre, double a, double b, double angle, int n, double form_error = 0.0) {
    giPoint2coDynArr points = arc(giPoint2(0.0, 0.0), 1.0, 2.0 * pi, n, form_error);
    for (int i = 0; i < n; ++i) {
        giVector2 const along(std::cos(angle), std::sin(angle));
        points[i] = centre + (a * points[i].x() * along + b * points[i].y() * along.orthogonal());
    }
    return points;
}

giPoint3coDynArr in_space(giPoint2coDynArr const & flat, giPoint3 const & origin, giUnitVec3 const & normal) {
    giUnitVec3 const u = normal.any_normal(), v(normal.cross(u));
    giPoint3coDynArr points(flat.size(), 1);
    for (int i = 0; i < flat.size(); ++i) points.append(origin + (flat[i].x() * u + flat[i].y() * v));
    return points;
}

double sum_off(giPoint2coDynArr const & points, giVector2 const & move, double stretch, sqDirectCircle2 const & c) {
    // Pratt's algebraic distance: (|p - C|² - R²)² over the gradient of the conic, which is 2 R on it.
    double const r = c.radius() * stretch;
    double sum = 0.0;
    for (int i = 0; i < points.size(); ++i) {
        giVector2 const d = points[i] - (c.centre() + move);
        double const off = (d.dot(d) - r * r) / (2.0 * r);
        sum += off * off;
    }
    return sum;
}

class DirectFits : public testing::TestWithParam<placement> {};
INSTANTIATE_TEST_SUITE_P(Placements, DirectFits, testing::ValuesIn(placements),
                         [](auto const & at) { return std::string(name_of(at.param)); });

}  // namespace

TEST_P(DirectFits, FindTheCircleOfAnArc) {
    placement const at = GetParam();
    giPoint2 const centre = general_point2(at.offset);
    for (int const n : {3, 4, 7, 5000}) {
        for (double const angle : {6.0, 1.0, 0.2}) {
            SCOPED_TRACE(testing::Message() << n << " points over " << angle);
            double const rounding = 80.0 * rounding_at(at) / (1.0 - std::cos(angle / 2.0));
            giPoint2coDynArr const points = arc(centre, at.size, angle, n);
            sqDirectCircle2 const circle(points);
            ASSERT_EQ(sqDirectFitSuccess, circle.status());
            EXPECT_LE(distance(circle.centre(), centre), rounding);
            EXPECT_NEAR(at.size, circle.radius(), rounding);
            EXPECT_LE(circle.chi(), rounding);
        }
    }
}

TEST_P(DirectFits, FindCirclesAndEllipsesInSpace) {
    placement const at = GetParam();
    giPoint3 const centre = general_point(at.offset);
    giUnitVec3 const axis = general_direction();
    double const rounding = 100.0 * rounding_at(at);
    giPoint3coDynArr const points = arc(centre, axis, at.size, 6.0, 50);
    sqDirectCircle3 const circle(points);
    ASSERT_EQ(sqDirectFitSuccess, circle.status());
    EXPECT_LE((circle.centre() - centre).length(), rounding);
    EXPECT_NEAR(at.size, circle.radius(), rounding);
    EXPECT_LE(angle_between(axis, circle.workplane().w_vector()), rounding / at.size);
    EXPECT_LE((circle.workplane().origin() - circle.centre()).length(), 0.0);
    EXPECT_LE(circle.chi(), rounding);

    double const a = std::sqrt(at.size * 2.0), b = a / 3.0;  // within the bounds of the told unit
    if (at.size < 0.1) return;
    giPoint3coDynArr const oval = in_space(ellipse(giPoint2(0, 0), a, b, 0.5, 50), centre, axis);
    sqDirectEllipse3 const fitted(oval);
    ASSERT_EQ(sqDirectFitSuccess, fitted.status());
    EXPECT_NEAR(a, fitted.a_length(), rounding);
    EXPECT_NEAR(b, fitted.b_length(), rounding);
    EXPECT_LE((fitted.centre() - centre).length(), rounding);
    EXPECT_LE(angle_between(fitted.a_axis(), fitted.workplane().u_vector()), 1e-15);
    EXPECT_NEAR(1.0, fitted.workplane().v_vector().dot(fitted.b_axis()), 1e-15);
    EXPECT_LE(fitted.chi(), rounding);
    EXPECT_LE(angle_between(axis, fitted.workplane().w_vector()), rounding / b);
}

TEST(DirectCircle, IsTheBestOfPrattsMethodOnNoisyPoints) {
    for (double const size : {1e-3, 1.0, 40.0}) {
        for (double const angle : {6.2, 0.8}) {
            giPoint2coDynArr const points = arc(giPoint2(0.3 * size, -size), size, angle, 101, 1e-2);
            sqDirectCircle2 const circle(points);
            double const least = sum_off(points, giVector2(0, 0), 1.0, circle), step = 1e-4 * size;
            for (int k = 0; k < 6; ++k) {
                double const t = k * pi / 3.0;
                giVector2 const move(step * std::cos(t), step * std::sin(t));
                EXPECT_LT(least, sum_off(points, move, 1.0, circle)) << size << " " << angle;
                EXPECT_LT(least, sum_off(points, giVector2(0, 0), 1.0 + 1e-4 * std::cos(t), circle));
            }
        }
    }
}

TEST(DirectCircle, TellsWhyThereIsNone) {
    giPoint2coDynArr points;
    EXPECT_EQ(sqDirectFitTooFewPoints, sqDirectCircle2(points).status());
    points.append(giPoint2(0, 0));
    sqDirectCircle2 const one(points);
    EXPECT_EQ(sqDirectFitTooFewPoints, one.status());
    EXPECT_EQ(greatest, one.chi());
    EXPECT_TRUE(one.centre().invalid());
    points.append(giPoint2(2, 0));
    sqDirectCircle2 const two(points);
    EXPECT_EQ(sqDirectFitSuccess, two.status());
    EXPECT_EQ(1.0, two.radius());
    EXPECT_TRUE(two.centre().coincident(giPoint2(1, 0), 0.0));
    points.append(giPoint2(6, 0));
    EXPECT_EQ(sqDirectFitSingular, sqDirectCircle2(points).status());
    for (auto const & [x, y] : {std::pair(1.0, 0.0), {0.0, 1.0}, {0.3, 0.7}}) {
        giPoint2coDynArr line;
        for (int i = 0; i < 9; ++i) line.append(giPoint2(3.1 + i * x, 1.7 + i * y));
        sqDirectCircle2 const straight(line);
        EXPECT_TRUE(straight.status() == sqDirectFitDegenerate || straight.radius() > 1e6) << straight.radius();
    }
    sqDirectCircle2 const same({giPoint2(1, 2), giPoint2(1, 2), giPoint2(1, 2), giPoint2(1, 2)});
    EXPECT_TRUE(same.status() == sqDirectFitDegenerate || same.radius() >= 0.0);
    sqDirectCircle2 const huge({giPoint2(1e200, 2), giPoint2(1, 1e200), giPoint2(-1e200, 2), giPoint2(1, 2)});
    EXPECT_TRUE(huge.status() == sqDirectFitDegenerate || huge.radius() >= 0.0);
}

TEST(DirectCircle, NeedsAPlaneInSpace) {
    giPoint3 const p(1, 2, 3);
    EXPECT_EQ(sqDirectFitTooFewPoints, sqDirectCircle3({p}).status());
    EXPECT_EQ(sqDirectFitNoPlane, sqDirectCircle3({p, p + giVector3(0, 9e-7, 0)}).status());
    EXPECT_EQ(sqDirectFitNoPlane, sqDirectEllipse3({p, p}).status());
    EXPECT_EQ(sqDirectFitSingular, sqDirectCircle3({p, p + giVector3(1, 1, 0), p + giVector3(3, 3, 0)}).status());
    giPoint3coDynArr const pair{p, p + giVector3(0, 2, 0)};
    sqDirectCircle3 const circle(pair);
    ASSERT_EQ(sqDirectFitSuccess, circle.status());
    EXPECT_LE((circle.centre() - giPoint3(1, 3, 3)).length(), 1e-15);
    EXPECT_DOUBLE_EQ(1.0, circle.radius());
    EXPECT_LE(circle.chi(), 1e-15);
    giPoint3coDynArr points = arc(p, general_direction(), 2.0, 6.0, 40);
    sqDirectCircle3 const flat(points);
    for (int i = 0; i < points.size(); ++i) points[i] = points[i] + (i % 2 ? 0.1 : -0.1) * general_direction();
    EXPECT_NEAR(0.1, flat.chi(), 1e-14) << "heights count";
}

TEST(DirectEllipse, FindsEllipsesOfManyShapes) {
    for (double const a : {0.2, 3.0, 400.0}) {
        for (double const ratio : {0.99999, 0.5, 0.02}) {
            for (double const angle : {0.0, 0.52, 1.57, 2.5}) {
                SCOPED_TRACE(testing::Message() << a << " " << ratio << " " << angle);
                giPoint2 const centre(0.3 * ratio * a, -0.2 * ratio * a);
                giPoint2coDynArr const points = ellipse(centre, a, ratio * a, angle, 60);
                sqDirectEllipse2 const found(points);
                ASSERT_EQ(sqDirectFitSuccess, found.status());
                double const rounding = 20.0 * std::numeric_limits<double>::epsilon() * a / ratio;
                EXPECT_NEAR(a, found.a_length(), rounding / ratio);
                EXPECT_NEAR(ratio * a, found.b_length(), rounding);
                EXPECT_LE(distance(found.centre(), centre), rounding);
                EXPECT_LE(found.chi(), rounding / ratio);
                giVector2 const along(std::cos(angle), std::sin(angle));
                EXPECT_NEAR(0.0, along.cross(found.a_axis()), rounding / (a * (1.0 - ratio)));
                EXPECT_NEAR(found.angle().sin(), found.a_axis().y(), 1e-15);
                EXPECT_NEAR(0.0, found.a_axis().dot(found.b_axis()), 1e-15);
            }
        }
    }
}

TEST(DirectEllipse, MeasuresNoiseAlongTheRays) {
    giPoint2coDynArr points = ellipse(giPoint2(1, 2), 3, 1, 0.5, 1000, 1e-3);
    sqDirectEllipse2 const found(points);
    EXPECT_NEAR(3.0, found.a_length(), 1e-3);
    EXPECT_NEAR(1.0, found.b_length(), 1e-3);
    EXPECT_NEAR(1e-3 * std::sqrt(5.0), found.chi(), 1e-4);  // the mean square radius is (9 + 1) / 2
}

TEST(DirectEllipse, FallsBackToTheCircle) {
    giPoint2coDynArr const three = arc(giPoint2(1, 2), 5.0, 5.0, 3);
    sqDirectEllipse2 const circle(three);
    EXPECT_EQ(sqDirectFitSuccess, circle.status());
    EXPECT_NEAR(5.0, circle.a_length(), 1e-14);
    EXPECT_EQ(circle.a_length(), circle.b_length());
    EXPECT_EQ(1.0, circle.a_axis().x());
    EXPECT_EQ(1.0, circle.b_axis().y());
    EXPECT_EQ(0.0, circle.angle().sin());
    EXPECT_EQ(1.0, circle.workplane().to_work(giPoint2(2, 2)).x() + circle.centre().x() - 1.0);
    EXPECT_EQ(sqDirectFitTooFewPoints, sqDirectEllipse2(giPoint2coDynArr{giPoint2(1, 1)}).status());
    EXPECT_EQ(sqDirectFitSingular, sqDirectEllipse2({giPoint2(0, 0), giPoint2(1, 1), giPoint2(2, 2)}).status());

    // Too far off, and too large, for the told tolerances; points on a hyperbola.
    for (auto const & points : {ellipse(giPoint2(80, 0), 2, 1, 0, 40), ellipse(giPoint2(0, 0), 1100, 900, 0, 40)}) {
        sqDirectEllipse2 const far(points);
        EXPECT_EQ(sqDirectCircle2(points).radius(), far.a_length());
        EXPECT_EQ(far.a_length(), far.b_length());
    }
}

TEST(DirectEllipse, GivesACircleAsSuchWhereverItsPointsLie) {
    std::mt19937 engine(3);
    for (int i = 0; i < 200; ++i) {
        giPoint2coDynArr points;
        int const n = 4 + i % 3;  // from four points on, which leave a pencil of conics
        for (int k = 0; k < n; ++k) {
            double const t = 2.0 * pi * (k + 0.5 * static_cast<double>(engine()) / 4294967296.0) / n;
            points.append(giPoint2(1.5 + 2.0 * std::cos(t), 0.5 + 2.0 * std::sin(t)));
        }
        sqDirectEllipse2 const found(points);
        ASSERT_EQ(sqDirectFitSuccess, found.status());
        EXPECT_NEAR(2.0, found.a_length(), 1e-10) << i;
        EXPECT_NEAR(2.0, found.b_length(), 1e-10) << i;
        EXPECT_LE(distance(found.centre(), giPoint2(1.5, 0.5)), 1e-10);
    }
}

TEST(SphereFit, FindsTheSphereNearTheOrigin) {
    for (double const size : {1e-3, 1.0, 1e5}) {
        giPoint3 const centre(1.1 * size, -2.0 * size, 0.7 * size);
        giPoint3 found;
        double radius = 0.0;
        for (int const n : {4, 300}) {
            giPoint3coDynArr const points = sphere_cap(centre, size, 2.5, n);
            ASSERT_EQ(1, sqSphereFit::fit(points, found, radius));
            EXPECT_LE((found - centre).length(), 1e-12 * size);
            EXPECT_NEAR(size, radius, 1e-12 * size);
            EXPECT_LE(sqSphereFit(points).chi(), 1e-12 * size);
        }
        radius = -1.0;
        EXPECT_EQ(0, sqSphereFit::fit(sphere_cap(centre, size, 2.5, 3), found, radius));
        EXPECT_EQ(-1.0, radius);
    }
    EXPECT_EQ(sqDirectFitTooFewPoints, sqSphereFit(giPoint3coDynArr()).status());
    giPoint3coDynArr const noisy = sphere_cap(giPoint3(1, 2, 3), 10.0, 3.1, 2000, 1e-3);
    EXPECT_NEAR(0.01, sqSphereFit(noisy).chi(), 1e-3);
}

TEST(SphereFit, EliminatesWithItsOwnRuleOfPivots) {
    double swapped[] = {0, 2, 6, 4, 1, 11};
    sqSphereFit::matrix_rowred(swapped, 2, 3);
    EXPECT_DOUBLE_EQ(2.0, swapped[2]);
    EXPECT_DOUBLE_EQ(3.0, swapped[5]);
    // The last row above the diagonal is taken, that of 2: the row without its own pivot then tells.
    double last[] = {1, 0, 0, 1, 3, 0, 0, 2, 2, 0, 0, 3};
    sqSphereFit::matrix_rowred(last, 3, 4);
    EXPECT_DOUBLE_EQ(1.5, last[3]);
    EXPECT_DOUBLE_EQ(2.0 - 4.5, last[7]);
    EXPECT_DOUBLE_EQ(1.0 - 1.5, last[11]);
    double zeros[] = {0, 0, 0, 1e-21, 0, 5};
    sqSphereFit::matrix_rowred(zeros, 2, 3);
    EXPECT_EQ(5.0, zeros[2]) << "rows are swapped all the same";
}
