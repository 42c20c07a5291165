#include "examples/run_program.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace datumfit::tests;

// The numbers that follow a phrase, each time that it comes.
std::vector<double> numbers_after(std::string const & text, std::string const & phrase) {
    std::vector<double> numbers;
    for (auto at = text.find(phrase); at != text.npos; at = text.find(phrase, at + 1)) {
        numbers.push_back(std::stod(text.substr(at + phrase.size())));
    }
    return numbers;
}

TEST(AlignPart, BringsThePartBackToItsMeshAndToItsSurfaces) {
    Outcome const outcome = run(DATUMFIT_EXAMPLES_DIR "/align_part");
    ASSERT_EQ(0, outcome.code) << outcome.text;
    std::vector<double> const off = numbers_after(outcome.text, "no point farther than");
    std::vector<double> const beyond = numbers_after(outcome.text, "exceeded by more than");
    ASSERT_TRUE(off.size() == 2 && beyond.size() == 2) << outcome.text;
    for (double const d : off) EXPECT_LT(d, 0.005) << outcome.text;
    for (double const d : beyond) EXPECT_LT(d, 1e-6) << outcome.text;
    EXPECT_EQ(2u, numbers_after(outcome.text, "given up: 1 of 112 ends, number").size()) << outcome.text;
}

}  // namespace
