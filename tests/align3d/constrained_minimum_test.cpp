#include "engine_host.h"

#include <gtest/gtest.h>

using namespace align3d_tests;

namespace {

struct band {
    double lower, upper, weight = 1.0, target = 0.0;
};

// Shifts along z alone, from 0: a record bounds them directly.
struct sliding_engine : engine_host {
    explicit sliding_engine(std::vector<band> const & bands = {}) {
        lock_rotations(giAxisZ, giVector3(), giVector3());
        add(bands);
    }
    void add(std::vector<band> const & bands) {
        giPoint3 const p(1.0, 2.0, 3.0);
        for (auto const & [lower, upper, weight, target] : bands) {
            add_bestfit(p, p + giVector3(0.0, 0.0, target), giAxisZ, lower - target, upper - target, weight);
        }
    }
    void expect(double height, numbers const & expected, char const * what = "") {
        giXform3 step;
        EXPECT_EQ(1, single_linear_step(step)) << what;
        EXPECT_NEAR(height, step.matrix()(2, 3), 1e-12) << what;
        EXPECT_EQ(expected, given_up()) << what;
    }
    void expect_refusal() {
        giXform3 step = aside;
        EXPECT_EQ(0, single_linear_step(step));
        EXPECT_TRUE(equal(aside, step, 0.0));
        EXPECT_EQ(numbers(), given_up());
    }
};

TEST(ConstrainedMinimum, StaysWithinABand) {
    double const cases[][4] = {{-DBL_MAX, 0.5, 2.0, 0.5}, {-DBL_MAX, 0.5, -2.0, -2.0}, {0.25, DBL_MAX, -1.0, 0.25},
                               {0.25, 0.5, 9.0, 0.5},     {0.25, 0.5, 0.3, 0.3},       {0.5, 0.5, 0.0, 0.5}};
    for (auto const & [lower, upper, target, height] : cases) {
        // A negative weight turns the normal, but neither the band nor the target.
        for (double const w : {1.0, 3.0, -0.5}) sliding_engine({{lower, upper, w, target}}).expect(height, {});
    }
}

TEST(ConstrainedMinimum, GivesUpOneOfTwoBandsOfEqualWeight) {
    sliding_engine e({{-DBL_MAX, 0.5, 1.0, 99.0}, {1.0, 2.0}});
    e.expect(0.5, {1});
    // Record 2 clashes with what is left: it has the numbers 3 and 4, and the rows 2 and 3.
    e.add({{7.0, 8.0}});
    e.expect(0.5, {1, 3});
    e.add({{-4.0, 9.0}});
    e.expect(0.5, {1, 3});
    sliding_engine strict({{-DBL_MAX, 0.5}, {1.0, 2.0}});
    strict.disable_overdetermined_resolution();
    strict.expect_refusal();
}

TEST(ConstrainedMinimum, GoesOnWithoutRowsWhenAllAreGivenUp) {
    sliding_engine e({{DBL_MAX, DBL_MAX}});  // out of reach
    e.expect(0.0, {0});
    e.bestfit_[0].plane_point += giVector3(0.0, 0.0, 2.0);
    e.expect(2.0, {0});
    e.clear_bestfit_data();
    EXPECT_EQ(1, e.has_bands_);
    e.expect(0.0, {});
}

TEST(ConstrainedMinimum, ServesHeavierRecordsFirst) {
    struct {
        char const * what;
        std::vector<band> bands;
        double height;
        numbers given_up;
    } const cases[] = {
        {"light first", {{-DBL_MAX, 0.0}, {1.0, DBL_MAX, 2.0}}, 1.0, {0}},
        {"heavy first", {{1.0, DBL_MAX, 2.0}, {-DBL_MAX, 0.0}}, 1.0, {1}},
        {"one heavy against two", {{-DBL_MAX, 0.0}, {-1.0, 0.1}, {1.0, DBL_MAX, 2.0}}, 1.0, {0, 2}},
        {"the heavier of two above a third", {{2.0, DBL_MAX, 2.0}, {-DBL_MAX, 1.0, 3.0}, {-5.0, 5.0}}, 0.0, {0}},
        {"two heaviest of one weight", {{1.0, DBL_MAX, 2.0}, {-DBL_MAX, 0.0, 2.0}, {0.5, DBL_MAX}}, 1.0, {1}},
        {"a head of three of five",
         {{4.0, DBL_MAX, 2.0}, {-DBL_MAX, 3.0, 5.0}, {1.0, DBL_MAX, 7.0}, {2.0, DBL_MAX, 6.0}, {0.0, 9.0}},
         2.0,
         {0}},
        {"nothing can meet the heaviest", {{DBL_MAX, DBL_MAX, 3.0}, {-DBL_MAX, 0.0}, {1.0, 2.0, 2.0}}, 1.0, {0, 1}},
        {"a negative weight is the lightest", {{-DBL_MAX, 0.0, -9.0}, {1.0, DBL_MAX}}, 1.0, {0}}};
    for (auto const & c : cases) {
        sliding_engine e(c.bands);
        e.expect(c.height, c.given_up, c.what);
        // Resolution can't be disabled where weights differ.
        e.clear_bestfit_data();
        e.disable_overdetermined_resolution();
        e.add(c.bands);
        e.expect(c.height, c.given_up, c.what);
    }
}

TEST(ConstrainedMinimum, RefusesBandsThatAreNotFinite) {
    sliding_engine({{0.0, 1.0}, {0.0, 1.0, 1e-310}}).expect_refusal();
}

}  // namespace
