#include <datumfit/foundation/maths/random.h>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

TEST(Random, DrawsTheFixedSequenceOfASeed) {
    // The second seed has the same low 32 bits.
    for (long const seed : {1L, 1L + (1L << 32)}) {
        mlRandom random(seed);
        for (int const expected : {41, 18467, 6334, 26500}) {
            EXPECT_EQ(expected, random.rand());
        }
    }
}

TEST(Random, CoversItsRangesAndBothEnds) {
    mlRandom random(1);
    double lowest = 1.0, highest = 0.0;
    for (int i = 0; i < 1000000; ++i) {
        double const u = random.zero_one();
        lowest = std::min(lowest, u);
        highest = std::max(highest, u);
    }
    EXPECT_EQ(0.0, lowest);
    EXPECT_EQ(1.0, highest);
}

TEST(Random, AdvancesByOneStateADraw) {
    mlRandom random(1);
    EXPECT_EQ(3.0, random.rnd(3.0, 3.0));
    EXPECT_EQ(2.0 * (18467 / 32767.0) - 1.0, random.minus_one_one());
    EXPECT_EQ(6334 / 32767.0 * 4.0 + 1.0, random.rnd(1.0, 5.0));
}

}  // namespace
