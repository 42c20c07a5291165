#include <datumfit/sampling/rand_dir_gen_multi.h>
#include <datumfit/sampling/rand_dir_generator.h>
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

// The same directions by other means: 64-bit arithmetic for the stream, and the angle about the axis written out.
struct drawn_by_hand {
    double bias, decay, cosine;
    std::vector<giVector3> axes;
    bool chooses_axis;
    unsigned long long state = 1;

    unsigned long long number() { return (state = (state * 214013 + 2531011) % 4294967296) / 65536 % 32768; }
    double unit() { return static_cast<double>(number()) / 32767.0; }
    giVector3 of_sphere() {
        for (;;) {
            double const a = 2.0 * unit() - 1.0, b = 2.0 * unit() - 1.0, s = a * a + b * b;
            if (s < 1.0) return giVector3(2.0 * a * std::sqrt(1.0 - s), 2.0 * b * std::sqrt(1.0 - s), 2.0 * s - 1.0);
        }
    }
    giVector3 of_region() {
        giVector3 const axis = axes[chooses_axis ? number() % axes.size() : 0];
        giVector3 const across = giUnitVec3(axis.cross(of_sphere())).cross(axis);
        double const c = cosine + unit() * (1.0 - cosine);
        return c * axis + std::sqrt(1.0 - c * c) * across;
    }
    giVector3 next() {
        double const region = static_cast<double>(axes.size()) * (1.0 - cosine) / 2.0;
        double const inside = axes.empty() ? 0.0 : bias / (bias + 1.0 / region - 1.0);
        bool const from_region = (inside - region) / (1.0 - region) > unit();
        bias = 1.0 + (bias - 1.0) * decay;
        return from_region ? of_region() : of_sphere();
    }
};

// Over draws that nearly all come from a region at first, and hardly any at last.
void expect_same_draws(drawn_by_hand hand, sqRandDirGenerator & generator) {
    for (int i = 0; i < 800; ++i) {
        giVector3 const found = generator.direction();
        ASSERT_NEAR(0.0, (hand.next() - found).length().value(), 1e-12) << i;
        ASSERT_NEAR(1.0, found.dot(found), 1e-15);
    }
}

std::vector<giVector3> const axes = {giUnitVec3(1.0, 2.0, -2.0), giUnitVec3(-3.0, 0.1, 0.2), giUnitVec3(giAxisY)};
giAngle const narrow(giAngleDegrees, 30.0);

TEST(RandDirGenerator, DrawsTheSequenceOfItsSeed) {
    sqRandDirGenerator generator;
    EXPECT_TRUE(generator.invalid() && generator.direction().invalid());
    generator = sqRandDirGenerator(1000.0, axes[0], narrow, 0.99);
    expect_same_draws({1000.0, 0.99, narrow.cos(), {axes[0]}, false}, generator);
}

TEST(RandDirGenMulti, GivesItsAxesFirstWithoutADraw) {
    EXPECT_TRUE(sqRandDirGenMulti().invalid() && sqRandDirGenMulti().direction().invalid());
    for (int const n : {0, 1, 3}) {
        giUnitVec3coDynArr given;
        for (int i = 0; i < n; ++i) given.append(axes[i]);
        sqRandDirGenMulti generator(1000.0, given, narrow, 0.99);
        given.clear(1);
        for (int i = 0; i < n; ++i) EXPECT_EQ(0.0, (generator.direction() - axes[i]).length().value());
        expect_same_draws({1000.0, 0.99, narrow.cos(), {axes.begin(), axes.begin() + n}, true}, generator);
        EXPECT_EQ(n == 0, generator.rand_vec_bias_region().invalid());
    }
}

TEST(RandDirGenerator, GivesNumbersForRegionsAndDecaysWithoutBounds) {
    EXPECT_EQ(0.0, sqRandDirGenerator(9.0, axes[0], giAngle180, 0.5).probability_bias_region_only());
    sqRandDirGenerator growing(2.0, axes[0], giAngle90, 2.0);
    for (int i = 0; i < 2000; ++i) growing.update_bias();
    EXPECT_EQ(1.0, growing.probability_bias_region_only());
}

}  // namespace
