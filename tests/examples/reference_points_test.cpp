#include "examples/run_program.h"

#include <gtest/gtest.h>

namespace {

using namespace datumfit::tests;

TEST(ReferencePoints, BringAllPartsHomeAndNameTheOneThatIsWrong) {
    Outcome const outcome = run(DATUMFIT_EXAMPLES_DIR "/reference_points");
    EXPECT_EQ(0, outcome.code) << outcome.text;
    EXPECT_NE(outcome.text.npos, outcome.text.find("20 of 20 parts")) << outcome.text;
    EXPECT_NE(outcome.text.npos, outcome.text.find("is over-determined, and without A4, which stays out, determined"));
}

}  // namespace
