#include "engine_host.h"

#include <gtest/gtest.h>

namespace {

// Shifts along z alone, from 0: a record bounds them directly.
struct sliding_engine : engine_host {
    sliding_engine() { lock_rotations(giAxisZ, giVector3(), giVector3()); }

    void add(double lower, double upper, double weight, double target = 0.0) {
        giPoint3 const p(1.0, 2.0, 3.0);
        add_bestfit(p, p + giVector3(0.0, 0.0, target), giAxisZ, lower - target, upper - target, weight);
    }
    // The height that a step leads to.
    double height() {
        giXform3 step;
        EXPECT_EQ(1, single_linear_step(step));
        return step.matrix()(2, 3);
    }
    std::vector<int> given_up() const {
        intcoDynArr const & list = overdetermined_constraints();
        return std::vector<int>(list.data(), list.data() + list.size());
    }
};

using numbers = std::vector<int>;

TEST(ConstrainedMinimum, StaysWithinABand) {
    struct {
        double lower, upper, target, height;
    } const cases[] = {{-DBL_MAX, 0.5, 2.0, 0.5}, {-DBL_MAX, 0.5, -2.0, -2.0}, {0.25, DBL_MAX, -1.0, 0.25},
                       {0.25, 0.5, 9.0, 0.5},     {0.25, 0.5, 0.3, 0.3},       {0.5, 0.5, 0.0, 0.5}};
    for (auto const & c : cases) {
        for (double const weight : {1.0, 3.0, -0.5}) {
            // A negative weight turns the normal, but neither the band nor the target.
            sliding_engine e;
            e.add(c.lower, c.upper, weight, c.target);
            EXPECT_NEAR(c.height, e.height(), 1e-12) << c.lower << ' ' << c.upper << ' ' << c.target;
            EXPECT_EQ(numbers(), e.given_up());
        }
    }
}

TEST(ConstrainedMinimum, MakesARowOfEachEndThatIsKept) {
    engine_host e;
    giPoint3 const p(1.0, 2.0, 3.0), q(1.0, 2.0, 5.0);
    e.add_unbanded(p, q, giAxisX);
    e.add_bestfit(p, q, giAxisZ, -0.5, 0.25, -2.0);
    e.add_bestfit(p, q, giAxisY, -DBL_MAX, 4.0, 3.0);
    e.rotation_scale_ = 0.5;
    e.constraint_coefs(6);
    // p x n times the scale, and the deviation -2 along z.
    double const rows[3][6] = {{0, 0, 1, 1, -0.5, 0}, {0, 0, -1, -1, 0.5, 0}, {0, -1, 0, 1.5, 0, -0.5}};
    double const values[] = {1.5, -2.25, -4.0}, weights[] = {-2.0, -2.0, 3.0};
    ASSERT_TRUE(e.constraint_matrix().rows() == 3 && e.constraint_matrix().cols() == 6);
    ASSERT_TRUE(e.constraint_values().size() == 3 && e.constraint_priorities().size() == 3);
    for (int r = 0; r < 3; ++r) {
        for (int k = 0; k < 6; ++k) EXPECT_EQ(rows[r][k], e.constraint_matrix()(r, k)) << r << k;
        EXPECT_EQ(values[r], e.constraint_values()[r]);
        EXPECT_EQ(weights[r], e.constraint_priorities()[r]);
    }
}

TEST(ConstrainedMinimum, GivesUpOneOfTwoBandsOfEqualWeight) {
    sliding_engine e;
    e.add(-DBL_MAX, 0.5, 1.0, 99.0);
    e.add(1.0, 2.0, 1.0);
    EXPECT_NEAR(0.5, e.height(), 1e-12);
    EXPECT_EQ(numbers{1}, e.given_up());
    e.constraint_coefs(1);
    EXPECT_EQ(2, e.constraint_matrix().rows());
    // Record 2 clashes with what is left: it has the numbers 3 and 4, and the rows 2 and 3.
    e.add(7.0, 8.0, 1.0);
    EXPECT_NEAR(0.5, e.height(), 1e-12);
    EXPECT_EQ((numbers{1, 3}), e.given_up());
    e.add(-4.0, 9.0, 1.0);
    EXPECT_NEAR(0.5, e.height(), 1e-12);
    EXPECT_EQ((numbers{1, 3}), e.given_up());

    sliding_engine strict;
    strict.add(-DBL_MAX, 0.5, 1.0);
    strict.add(1.0, 2.0, 1.0);
    strict.disable_overdetermined_resolution();
    giXform3 step(giXformTranslate, giVector3(1.0, 2.0, 3.0)), before = step;
    EXPECT_EQ(0, strict.single_linear_step(step));
    EXPECT_TRUE(equal(before, step, 0.0));
    EXPECT_EQ(numbers(), strict.given_up());
}

TEST(ConstrainedMinimum, GoesOnWithoutRowsWhenAllAreGivenUp) {
    sliding_engine e;
    e.add(DBL_MAX, DBL_MAX, 1.0);  // out of reach
    EXPECT_NEAR(0.0, e.height(), 1e-12);
    EXPECT_EQ(numbers{0}, e.given_up());
    e.bestfit_[0].plane_point += giVector3(0.0, 0.0, 2.0);
    EXPECT_NEAR(2.0, e.height(), 1e-12);
    EXPECT_EQ(numbers{0}, e.given_up());
    e.clear_bestfit_data();
    EXPECT_TRUE(e.given_up().empty() && e.has_bands_ == 1);
    EXPECT_EQ(0.0, e.height());
}

TEST(ConstrainedMinimum, ServesHeavierRecordsFirst) {
    struct band {
        double lower, upper, weight;
    };
    struct {
        char const * what;
        std::vector<band> bands;
        double height;
        numbers given_up;
    } const cases[] = {
        {"light first", {{-DBL_MAX, 0.0, 1.0}, {1.0, DBL_MAX, 2.0}}, 1.0, {0}},
        {"heavy first", {{1.0, DBL_MAX, 2.0}, {-DBL_MAX, 0.0, 1.0}}, 1.0, {1}},
        {"one heavy against two", {{-DBL_MAX, 0.0, 1.0}, {-1.0, 0.1, 1.0}, {1.0, DBL_MAX, 2.0}}, 1.0, {0, 2}},
        {"the heavier of two above a third", {{2.0, DBL_MAX, 2.0}, {-DBL_MAX, 1.0, 3.0}, {-5.0, 5.0, 1.0}}, 0.0, {0}},
        {"two heaviest of one weight", {{1.0, DBL_MAX, 2.0}, {-DBL_MAX, 0.0, 2.0}, {0.5, DBL_MAX, 1.0}}, 1.0, {1}},
        {"a head of three of five",
         {{4.0, DBL_MAX, 2.0}, {-DBL_MAX, 3.0, 5.0}, {1.0, DBL_MAX, 7.0}, {2.0, DBL_MAX, 6.0}, {0.0, 9.0, 1.0}},
         2.0,
         {0}},
        {"nothing can meet the heaviest",
         {{DBL_MAX, DBL_MAX, 3.0}, {-DBL_MAX, 0.0, 1.0}, {1.0, 2.0, 2.0}},
         1.0,
         {0, 1}},
        {"a negative weight is the lightest", {{-DBL_MAX, 0.0, -9.0}, {1.0, DBL_MAX, 1.0}}, 1.0, {0}}};
    for (auto const & c : cases) {
        sliding_engine e;
        for (band const & b : c.bands) e.add(b.lower, b.upper, b.weight);
        EXPECT_NEAR(c.height, e.height(), 1e-12) << c.what;
        EXPECT_EQ(c.given_up, e.given_up()) << c.what;
        // Resolution can't be disabled where weights differ.
        e.clear_bestfit_data();
        e.disable_overdetermined_resolution();
        for (band const & b : c.bands) e.add(b.lower, b.upper, b.weight);
        EXPECT_NEAR(c.height, e.height(), 1e-12) << c.what;
    }
}

TEST(ConstrainedMinimum, RefusesBandsThatAreNotFinite) {
    sliding_engine e;
    e.add(0.0, 1.0, 1.0);
    e.add(0.0, 1.0, 1e-310);
    giXform3 step(giXformTranslate, giVector3(1.0, 2.0, 3.0)), before = step;
    EXPECT_EQ(0, e.single_linear_step(step));
    EXPECT_TRUE(equal(before, step, 0.0));
}

}  // namespace
