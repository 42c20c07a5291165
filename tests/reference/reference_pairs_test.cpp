#include "support/extended_fit.h"
#include "support/reference_case.h"
#include "support/reference_fit.h"
#include "support/tally.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <set>

// Fits the points of every pair of points and known result, and compares.

namespace {

using namespace reference;

// What the certified pairs ask for, in mm and radians, and what the software of a measuring machine printed.
constexpr Differences certified_bounds = {1e-12L, 1e-12L, 1e-12L, 1e-12L, 1e-12L};
constexpr Differences machine_bounds = {5e-9L, 1e-9L, 5e-9L, 5e-9L};

Differences bounds_of(Case const & known, Solution const & found) {
    switch (known.kind) {
        case Case::certified:
            return certified_bounds;
        case Case::machine:
            return machine_bounds;
        case Case::exact:
            return bounds(known.data, known.truth, found, known.noise_gain, false);
        default:
            return bounds(known.data, known.truth, found, fit_extended(known.data, known.truth).gain, true);
    }
}

void compare(Cases const & cases, Tally & tally) {
    for (Case const & known : cases.known) {
        SCOPED_TRACE(testing::Message() << known.file << ", " << known.id << ", " << name(known.data.primitive));
        std::optional<Solution> const found = fit(known.data);
        if (found) {
            tally.compare(known, differences(known.data, known.truth, *found), bounds_of(known, *found));
        } else {
            ADD_FAILURE() << "no fit";
        }
    }
    for (auto const & [reason, count] : cases.skipped) {
        std::cout << "[ skipped  ] " << count << " of " << reason << "\n";
    }
}

}  // namespace

TEST(ReferencePairs, OwnPairsAgreeToRounding) {
    Tally tally;
    compare(read_cases(DATUMFIT_TEST_DATA_DIR), tally);
    std::map<std::string, int> const known = {{"plane", 18},         {"line2", 11},          {"line3", 11},
                                              {"circle", 25},        {"circle3", 25},        {"circle_in_plane", 25},
                                              {"sphere", 23},        {"cylinder", 24},       {"cone", 24},
                                              {"probed plane", 7},   {"probed line2", 7},    {"probed circle", 12},
                                              {"probed sphere", 12}, {"probed cylinder", 6}, {"probed cone", 6}};
    for (auto const & [kind, count] : known) EXPECT_GE(tally.compared(kind), count) << kind;
}

TEST(ReferencePairs, PairsOfTheGivenFolderAgree) {
    char const * const folder = std::getenv("DATUMFIT_REFERENCE_DATA");
    if (!folder) GTEST_SKIP() << "DATUMFIT_REFERENCE_DATA names no folder";
    Cases const cases = read_cases(folder);
    Tally tally;
    compare(cases, tally);
    EXPECT_GT(cases.known.size(), 0U);

    // No known file may drop out because its keys have changed.
    std::set<std::string> files;
    for (Case const & known : cases.known) files.insert(known.file);
    for (char const * file :
         {"nist_l2_plane", "nist_l2_line2d", "nist_l2_line3d", "nist_l2_circle2d", "nist_l2_circle3d", "nist_l2_sphere",
          "nist_l2_cylinder", "nist_l2_cone", "measured", "published_small", "probe_centres", "roundness_published"}) {
        std::string const full_name = std::string(file) + ".json";
        if (std::filesystem::exists(std::filesystem::path(folder) / full_name)) {
            EXPECT_EQ(files.count(full_name), 1U) << "nothing compared of " << full_name;
        }
    }
}
