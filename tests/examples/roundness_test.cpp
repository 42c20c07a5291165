#include "examples/run_program.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

namespace {

using namespace datumfit::tests;

std::size_t count(std::string const & text, std::string const & word) {
    std::size_t n = 0;
    for (auto at = text.find(word); at != text.npos; at = text.find(word, at + 1)) ++n;
    return n;
}

// The row of the table that begins with a name: centre x, centre y, radius, roundness.
void expect_row(std::string const & text, std::string const & name, double x, double y, double radius) {
    auto const at = text.find("\n" + name);
    ASSERT_NE(text.npos, at) << name;
    std::istringstream row(text.substr(at + 1 + name.size()));
    double found[3] = {};
    row >> found[0] >> found[1] >> found[2];
    EXPECT_NEAR(x, found[0], 1e-8) << name;
    EXPECT_NEAR(y, found[1], 1e-8) << name;
    EXPECT_NEAR(radius, found[2], 1e-8) << name;
}

// A measured section; its circles to 20 digits, from a computation apart.
TEST(Roundness, PutsFourCirclesToASectionAndDrawsThem) {
    std::string const picture = testing::TempDir() + "roundness_test.svg";
    Outcome const outcome =
        run(DATUMFIT_EXAMPLES_DIR "/roundness " DATUMFIT_EXAMPLES_SOURCE_DIR "/data/measured_roundness.csv '" +
            picture + "'");
    ASSERT_EQ(0, outcome.code) << outcome.text;
    expect_row(outcome.text, "least squares", 82.989748899569668711, 97.009115416940559160, 30.026820472707990970);
    expect_row(outcome.text, "smallest enclosing", 82.9907, 97.0081, 30.048841857881977279);
    expect_row(outcome.text, "largest inscribed", 82.984931797216012023, 97.010544957593653152, 30.011695172101870551);
    // Of the two circles of the ring the outer one comes first.
    expect_row(outcome.text, "narrowest ring", 82.990941049449509, 97.008387267061350, 30.048841860221954);
    std::ostringstream svg;
    svg << std::ifstream(picture).rdbuf();
    EXPECT_EQ(5u, count(svg.str(), "<path "));
    EXPECT_EQ(24u, count(svg.str(), "<circle "));
    std::remove(picture.c_str());
}

TEST(Roundness, RefusesAFileThatIsNotThere) {
    Outcome const outcome = run(DATUMFIT_EXAMPLES_DIR "/roundness nowhere.csv");
    EXPECT_EQ(1, outcome.code);
    EXPECT_NE(outcome.text.npos, outcome.text.find("nowhere.csv: there is no such file")) << outcome.text;
}

}  // namespace
