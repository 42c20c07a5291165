#include <gtest/gtest.h>
#include <support/shapes.h>

#include <cmath>
#include <vector>

namespace {

struct pair3 {
    giPoint3 first, second;
};

giXform3 product(giXform3 const & a, giXform3 const & b) {
    return giXform3(giXformProduct, a, b);
}

// A rotation by a right angle and a shift, which cost no digit.
giXform3 const exact_motion = product(giXform3(giXformTranslate, giVector3(4.0, -8.0, 0.5)),
                                      giXform3(giXformRotate, giOrigin, giAxisY, giAngle90));
giXform3 const general_motion =
    product(giXform3(giXformTranslate, giVector3(4.0, -8.0, 0.5)),
            giXform3(giXformRotate, giOrigin, general_direction(), giAngle(giAngleDegrees, 73.0)));

// Points of 12 binary digits, in space or in a plane, whose places as first points are told by a motion.
std::vector<pair3> pairs(giXform3 const & motion, double offset, double scale, bool planar, int n = 40) {
    mlRandom random(3);
    auto const number = [&] { return offset + scale * (random.rand() / 2048 - 7); };
    std::vector<pair3> result;
    for (int i = 0; i < n; ++i) {
        double const x = number(), y = number();
        giPoint3 const p(x, y, planar ? offset : number());
        result.push_back({motion * p, p});
    }
    return result;
}

bool match(std::vector<pair3> const & pairs, giXform3 & x) {
    sqPointsToPoints points;
    for (pair3 const & p : pairs) points.add_pair(p.first, p.second);
    return points.get_xform(x);
}

double determinant(giXform3 const & x) {
    auto const row = [&](int r) { return giVector3(x.matrix()(r, 0), x.matrix()(r, 1), x.matrix()(r, 2)); };
    return row(0).cross(row(1)).dot(row(2));
}

double rotation_error(giXform3 const & a, giXform3 const & b) {
    double worst = 0.0;
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) worst = std::max(worst, std::abs(a.matrix()(r, c) - b.matrix()(r, c)));
    }
    return worst;
}

double sum_of_squares(std::vector<pair3> const & pairs, giXform3 const & x) {
    double sum = 0.0;
    for (pair3 const & p : pairs) {
        giVector3 const e = x * p.second - p.first;
        sum += e.dot(e);
    }
    return sum;
}

class RigidMatch : public testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(Sets, RigidMatch, testing::Bool(),
                         [](auto const & c) { return c.param ? "planar" : "spatial"; });

TEST_P(RigidMatch, FindsTheMotionOfExactPairs) {
    for (double const offset : {0.0, 1024.0, 1048576.0}) {
        for (double const scale : {0x1p-10, 1.0, 0x1p16}) {
            for (int const n : {4, 40, 5000}) {
                std::vector<pair3> const exact = pairs(exact_motion, offset, scale, GetParam(), n);
                giXform3 x;
                EXPECT_TRUE(match(exact, x));
                EXPECT_LT(rotation_error(x, exact_motion), 1e-14) << offset << " " << scale << " " << n;
                EXPECT_LT(std::sqrt(sum_of_squares(exact, x) / n), 1e-15 * (offset + 20.0 * scale + 8.0))
                    << offset << " " << scale;
            }
        }
    }
    giXform3 x;
    EXPECT_TRUE(match(pairs(general_motion, 0.0, 1.0, GetParam()), x));
    EXPECT_LT(rotation_error(x, general_motion), 1e-14);
}

// No small turn or shift makes the sum smaller, and the result is proper, also for mirror images.
TEST_P(RigidMatch, MinimisesTheSumOfSquares) {
    noise random;
    for (bool const mirrored : {false, true}) {
        std::vector<pair3> noisy = pairs(general_motion, 100.0, 1.0, GetParam());
        for (pair3 & p : noisy) {
            p.first += random.vector(0.5);
            if (mirrored) p.first = giPoint3(p.first.x(), p.first.y(), -p.first.z());
        }
        giXform3 x;
        EXPECT_TRUE(match(noisy, x));
        EXPECT_NEAR(determinant(x), 1.0, 1e-14);
        double const least = sum_of_squares(noisy, x);
        giPoint3 const middle = noisy[0].first;
        for (gi_Axis const axis : {giAxisX, giAxisY, giAxisZ}) {
            for (double const h : {1e-3, -1e-3}) {
                EXPECT_GT(sum_of_squares(noisy, product(giXform3(giXformTranslate, h * giVector3(axis)), x)), least);
                giXform3 const turn(giXformRotate, middle, axis, giAngle(giAngleRadians, h));
                EXPECT_GT(sum_of_squares(noisy, product(turn, x)), least);
            }
        }
        for (double const half_turn : {1.0, 2.0, 3.0}) {  // nor does a great one
            giXform3 const turn(giXformRotate, middle, general_direction(), giAngle(giAngleRadians, half_turn));
            EXPECT_GT(sum_of_squares(noisy, product(turn, x)), least);
        }
    }
}

TEST(RigidMatch, WorksInThePlane) {
    for (double const offset : {0.0, 1048576.0}) {
        for (double const sense : {1.0, -1.0}) {
            sqPointsToPoints points;
            double const places[][2] = {{0, 0}, {4, 1}, {2, 7}, {-3, 2}};
            for (auto const & p : places) {
                points.add_pair(giPoint2(offset - sense * p[1], p[0] + 3.0), giPoint2(p[0], offset + p[1]));
            }
            giXform2 x;
            EXPECT_TRUE(points.get_xform(x));
            giPoint2 const origin(0.0, offset), to = x * origin;
            giVector2 const u = x * giPoint2(1024.0, offset) - to, v = x * giPoint2(0.0, offset + 1024.0) - to;
            EXPECT_NEAR(u.x() * v.y() - u.y() * v.x(), 1048576.0, 1e-6);
            if (sense > 0.0) {
                EXPECT_NEAR(u.y(), 1024.0, 1e-9);
                EXPECT_LT(giPoint2(offset, 3.0).distance(to), 1e-15 * (4.0 + offset));
            }
        }
    }
}

TEST(RigidMatch, TellsWhatDoesNotDetermineIt) {
    giXform3 x;
    giXform2 flat;
    sqPointsToPoints none, one, two, line, plane;
    none.add_pair(giPoint3(), giPoint3(1, 2, 3));
    EXPECT_FALSE(none.get_xform(x));
    EXPECT_TRUE(x.invalid());

    giPoint3 const a(1e6, 2, 3), b(4, 5, -6);
    one.add_pair(a, b);
    EXPECT_TRUE(one.get_xform(x));
    EXPECT_LT(a.distance(x * b), 1e-9);

    two.add_pair(giPoint2(1, 2), giPoint2(0, 0));
    two.add_pair(a, b);  // of the other kind
    two.add_pair(giPoint2(1, 7), giPoint2(5, 0));
    EXPECT_FALSE(two.get_xform(x));
    EXPECT_FALSE(two.get_xform(flat));
    EXPECT_LT(giPoint2(1, 7).distance(flat * giPoint2(5, 0)), 1e-14);

    for (int i = 0; i < 5; ++i) line.add_pair(giPoint3(i, 2 * i, 0.1 * i), giPoint3(3 + i, 2 * i, 0.1 * i));
    EXPECT_FALSE(line.get_xform(x));
    for (int i = 0; i < 5; ++i) plane.add_pair(giPoint3(i, i * i, 0.0), giPoint3(3 + i, i * i, 0.0));
    EXPECT_TRUE(plane.get_xform(x));
    EXPECT_TRUE(equal(x, giXform3(giXformTranslate, giVector3(-3.0, 0.0, 0.0)), 1e-13));
}

}  // namespace
