#include <datumfit/foundation/maths/random.h>

#include <gtest/gtest.h>

namespace {

TEST(Random, DrawsTheFixedSequenceOfASeed) {
    for (long const seed : {1L, 1L + (1L << 32)}) {  // the same low 32 bits
        mlRandom random(seed);
        EXPECT_EQ(41, random.rand());
        EXPECT_EQ(2.0 * (18467 / 32767.0) - 1.0, random.minus_one_one());
        EXPECT_EQ(3.0, random.rnd(3.0, 3.0));
        EXPECT_EQ(26500 / 32767.0, random.zero_one());
    }
}

}  // namespace
