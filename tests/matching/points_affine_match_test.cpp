#include <gtest/gtest.h>
#include <support/shapes.h>

#include <algorithm>

namespace {

struct family_case {
    sqAffineMatchXformType type;
    double entries[3][4];
};

// A transform of each family, no two of its entries alike.
class AffineFamilies : public testing::TestWithParam<family_case> {};
INSTANTIATE_TEST_SUITE_P(
    All, AffineFamilies,
    testing::Values(
        family_case{sqAffineMatchFull, {{1.1, 0.2, -0.3, 4.0}, {0.5, 0.9, 0.7, -5.0}, {-0.6, 0.8, 1.3, 6.0}}},
        family_case{sqAffineMatchXY, {{1.1, 0.2, 0.0, 4.0}, {0.5, 0.9, 0.0, -5.0}, {0.0, 0.0, 1.0, 0.0}}},
        family_case{sqAffineMatchScale, {{1.1, 0.0, 0.0, 0.0}, {0.0, 0.9, 0.0, 0.0}, {0.0, 0.0, 1.3, 0.0}}},
        family_case{sqAffineMatchScaleTranslate, {{1.1, 0.0, 0.0, 4.0}, {0.0, 0.9, 0.0, -5.0}, {0.0, 0.0, 1.3, 6.0}}},
        family_case{sqAffineMatchXYScale, {{1.1, 0.0, 0.0, 0.0}, {0.0, 0.9, 0.0, 0.0}, {0.0, 0.0, 1.0, 0.0}}},
        family_case{sqAffineMatchXYScaleXYZTranslate,
                    {{1.1, 0.0, 0.0, 4.0}, {0.0, 0.9, 0.0, -5.0}, {0.0, 0.0, 1.0, 6.0}}},
        family_case{sqAffineMatchX, {{1.1, 0.0, 0.0, 4.0}, {0.0, 1.0, 0.0, 0.0}, {0.0, 0.0, 1.0, 0.0}}},
        family_case{sqAffineMatchY, {{1.0, 0.0, 0.0, 0.0}, {0.0, 0.9, 0.0, -5.0}, {0.0, 0.0, 1.0, 0.0}}},
        family_case{sqAffineMatchZ, {{1.0, 0.0, 0.0, 0.0}, {0.0, 1.0, 0.0, 0.0}, {0.0, 0.0, 1.3, 6.0}}}),
    [](auto const & c) { return "family_" + std::to_string(c.param.type); });

TEST_P(AffineFamilies, AreRecovered) {
    auto const & m = GetParam().entries;
    for (double const size : {0.3, 1.0, 100.0}) {
        noise random;
        sqPointsAffineMatch match;
        match.set_transform_type(GetParam().type);
        giXform3 x;
        EXPECT_EQ(match.xform(x), 0);
        EXPECT_TRUE(x.invalid());
        for (int i = 0; i < 12; ++i) {
            giPoint3 const b = giPoint3(giOrigin) + random.vector(size);
            double a[3];
            for (int r = 0; r < 3; ++r) a[r] = m[r][0] * b.x() + m[r][1] * b.y() + m[r][2] * b.z() + m[r][3];
            match.add_pair(giPoint3(a[0], a[1], a[2]), b);
        }
        ASSERT_EQ(match.xform(x), 1);
        for (int r = 0; r < 3; ++r) {
            for (int c = 0; c < 4; ++c)
                EXPECT_NEAR(x.matrix()(r, c), m[r][c], 2e-14 * (c == 3 ? size + 6.0 : 1.0)) << r << c;
        }
    }
}

// What no member of the family can meet is spread as the normal equations say: the residuals are across all that the
// unknowns can do.
TEST(AffineMatch, LeavesResidualsAcrossWhatItMayChange) {
    noise random;
    sqPointsAffineMatch match;
    std::vector<std::pair<giPoint3, giPoint3>> pairs;
    for (int i = 0; i < 30; ++i) {
        giPoint3 const b = giPoint3(giOrigin) + random.vector(10.0);
        pairs.emplace_back(b + random.vector(1.0), b);
        match.add_pair(pairs.back().first, b);
    }
    giXform3 x;
    ASSERT_EQ(match.xform(x), 1);
    for (gi_Axis const of : {giAxisX, giAxisY, giAxisZ}) {
        double with_ones = 0.0, with_y = 0.0;
        for (auto const & [a, b] : pairs) {
            double const r = (x * b - a).coordinate(of);
            with_ones += r;
            with_y += r * b.y();
        }
        EXPECT_NEAR(with_ones, 0.0, 1e-12);
        EXPECT_NEAR(with_y, 0.0, 1e-11);
    }
    match.set_transform_type(sqAffineMatchXYScaleXYZTranslate);
    ASSERT_EQ(match.xform(x), 1);
    double mean = 0.0;
    for (auto const & [a, b] : pairs) mean += (a.z() - b.z()) / 30.0;
    EXPECT_NEAR(x.matrix()(2, 3), mean, 1e-14);
}

TEST(AffineMatch, RefusesWhatDoesNotDetermineIt) {
    sqPointsAffineMatch match;
    giPoint3 const square[] = {{1, 0, 2}, {0, 1, 2}, {0, 0, 2}, {1, 1, 2}};
    auto const answer = [&](int type) {
        match.set_transform_type(static_cast<sqAffineMatchXformType>(type));
        giXform3 x;
        int const result = match.xform(x);
        EXPECT_EQ(x.invalid(), result == 0) << type;
        return result;
    };
    match.add_pair(square[0], square[0]);
    EXPECT_EQ(answer(sqAffineMatchScale) + answer(sqAffineMatchXYScaleXYZTranslate) + answer(sqAffineMatchX),
              0);  // y is 0
    match.add_pair(square[1], square[1]);
    EXPECT_EQ(answer(sqAffineMatchScale) + answer(sqAffineMatchXYScaleXYZTranslate) + answer(sqAffineMatchX), 3);
    EXPECT_EQ(answer(sqAffineMatchXY) + answer(sqAffineMatchZ), 0);
    match.add_pair(square[2], square[2]);
    EXPECT_EQ(answer(sqAffineMatchXY), 1);
    match.add_pair(square[3], square[3]);
    EXPECT_EQ(answer(sqAffineMatchFull) + answer(sqAffineMatchScaleTranslate), 0);  // all in a plane
    EXPECT_EQ(answer(-1) + answer(9), 0);
    match.add_pair(giPoint3(0, 0, 2.001), giPoint3(0, 0, 2.001));
    EXPECT_EQ(answer(sqAffineMatchFull), 0);  // nearly so
    EXPECT_EQ(match.eps(), 1e-7);
    match.set_eps(1e-9);
    EXPECT_EQ(answer(sqAffineMatchFull), 1);
}

}  // namespace
