#include "align3d/engine_host.h"

#include <gtest/gtest.h>
#include <support/vectors.h>

#include <cfloat>
#include <cmath>

namespace {

using namespace align3d_tests;
using search_function = sqAmoebaPointsToPlanesDirectShift;
using balance_list = search_function::balance_list;

giVector3coDynArr const nothing;

// Positioning records, then best-fit ones with a pair of partners among them.
struct search_input {
    sqPlaneAndPointcoDynArr pairs;
    balance_list balance;
    int positioning;

    explicit search_input(bool banded, int n_positioning = 2) : positioning(n_positioning) {
        noise random;
        engine_host e;
        auto const q = [&] { return giPoint3(giOrigin) + random.vector(10.0); };
        for (int i = 0; i < positioning; ++i) e.add_positioning(q(), q(), giUnitVec3(random.vector(1.0)), 1);
        for (int i = 0; i < 5; ++i) {
            if (banded && i % 2) {
                e.add_bestfit(q(), q(), giUnitVec3(random.vector(1.0)), -0.5, i == 1 ? DBL_MAX : 0.25, 1.5);
            } else {
                e.add_unbanded(q(), q(), giUnitVec3(random.vector(1.0)), 1.5);
            }
        }
        e.add_balance(q(), q(), giUnitVec3(random.vector(1.0)), 0.7, q(), q(), giUnitVec3(random.vector(1.0)), -1.2,
                      1.0);
        e.add_unbanded(q(), q(), giUnitVec3(random.vector(1.0)));
        e.data_for_downhill(pairs, balance, 0, 0);
    }

    // The sum of squares at a transform, term by term.
    double sum_at(giXform3 const & x, double a, bool min_max) const {
        double total = 0.0;
        for (int i = 0; i < pairs.size(); ++i) {
            sqPlaneAndPoint const & r = pairs[i];
            giVector3 const e = x * r.point - r.plane_point;
            double d = e.dot(r.normal), of_points = e.dot(e);
            if (i < static_cast<int>(balance.size()) && balance.at(i).first != -1) {
                sqPlaneAndPoint const & s = pairs[i + 1];
                giVector3 const f = x * s.point - s.plane_point;
                d = balance.at(i).second * d + balance.at(i + 1).second * f.dot(s.normal);
                of_points +=
                    f.dot(f) - std::pow(e.dot(giUnitVec3(r.normal)), 2) - std::pow(f.dot(giUnitVec3(s.normal)), 2);
                ++i;
            }
            double const share = i < positioning ? 0.0 : a;
            total += (1.0 - share) * d * d + share * of_points;
            if (min_max && r.lower != -DBL_MAX && d < r.lower) total += 1e6 * std::pow(d - r.lower, 2);
            if (min_max && r.upper != DBL_MAX && d > r.upper) total += 1e6 * std::pow(d - r.upper, 2);
        }
        return total;
    }
};

giXform3 transform_of(search_function const & f) {
    return giXform3(giXformTranslate, f.get_shift()).postmultiply(f.get_matrix());
}

TEST(DirectShift, TakesTheUnknownsThatTheLocksLeave) {
    giVector3coDynArr const two{giAxisX, giAxisY};
    EXPECT_EQ(search_function::get_dimension(0, nothing, 0), 3);
    EXPECT_EQ(search_function::get_dimension(1, nothing, 0), 1);
    EXPECT_EQ(search_function::get_dimension(0, nothing, 1), 6);
    EXPECT_EQ(search_function::get_dimension(1, nothing, 1), 4);
    EXPECT_EQ(search_function::get_dimension(0, two, 0), 2);
    EXPECT_EQ(search_function::get_dimension(0, two, 1), 2);
}

struct search_case {
    char const * name;
    giVector3coDynArr axis, shifts;
    int flipped;
};

class SearchCases : public testing::TestWithParam<search_case> {};

INSTANTIATE_TEST_SUITE_P(Locks, SearchCases,
                         testing::Values(search_case{"free", {}, {}, 0},
                                         search_case{"axis", {giVector3(1, 2, 3), giVector3(-1, 1, 2)}, {}, 0},
                                         search_case{"flipped", {giVector3(1, 2, 3), giVector3(-1, 1, 2)}, {}, 1},
                                         search_case{"shifts", {}, {giAxisX, giAxisY, giAxisZ}, 0}),
                         [](auto const & c) { return c.param.name; });

// The shift found is the best one of its rotation, the sum is that of the transform that is told, and the unknowns of
// the min-max mode give the same transform again.
TEST_P(SearchCases, FindsTheBestShiftOfARotation) {
    search_case const & c = GetParam();
    for (double const a : {0.0, 0.3}) {
        search_input const input(false);
        search_function f(input.pairs, input.balance, c.axis, c.shifts, a, 0);
        f.flip_locked_axis(c.flipped);
        double const values[] = {7.0, -3.0, 11.0};
        mlVector const x(utConvert, values, f.variables());
        double const sum = f.function(x);
        giXform3 const found = transform_of(f);
        EXPECT_NEAR(sum, input.sum_at(found, a, false), 1e-11 * sum);
        for (gi_Axis const along : {giAxisX, giAxisY, giAxisZ}) {
            auto const sum_aside = [&](double h) {
                return input.sum_at(giXform3(giXformTranslate, h * giVector3(along)).postmultiply(found), a, false);
            };
            double const ahead = sum_aside(1.0), behind = sum_aside(-1.0);
            EXPECT_NEAR(ahead, behind, 1e-9 * (ahead + behind)) << along;
        }
        if (c.axis.size() > 0) {
            giVector3 const turned = found * giVector3(c.axis[0].unit());
            EXPECT_NEAR(turned.dot(c.axis[1].unit()), c.flipped ? -1.0 : 1.0, 1e-14);
        }

        mlVector with_shift;
        f.convert_to_min_max_parameter(x, with_shift);
        search_function min_max(input.pairs, input.balance, c.axis, c.shifts, a, 1);
        min_max.flip_locked_axis(c.flipped);
        EXPECT_NEAR(min_max.function(with_shift), sum, 1e-11 * sum);
    }
}

TEST(DirectShift, MakesBandsStiffPenalties) {
    for (double const a : {0.0, 0.3}) {
        search_input const input(true);
        search_function f(input.pairs, input.balance, nothing, nothing, a, 1);
        double const values[] = {1.0, -2.0, 0.5, 3.0, 1.0, -2.0};
        double const sum = f.function(mlVector(utConvert, values, 6));
        giXform3 const x = transform_of(f);
        EXPECT_GT(sum, 2.0 * input.sum_at(x, a, false));
        EXPECT_NEAR(sum, input.sum_at(x, a, true), 1e-11 * sum);
    }
    sqPlaneAndPointcoDynArr one{sqPlaneAndPoint({0, 0, 3}, {0, 0, 0}, giAxisZ, 0, -DBL_MAX, 1.0, 1.0)};
    search_function const f(one, {}, nothing, nothing, 0.0, 1);
    mlVector const still(mlVectorZero, 6);
    EXPECT_EQ(f.function(still), 9.0 + 4e6);
    double positioning, fitting;
    f.get_max_deviations(still, positioning, fitting);
    EXPECT_EQ(positioning, 2.0);  // a broken band is a hard demand that is missed
    EXPECT_EQ(fitting, 3.0);
}

TEST(DirectShift, TellsDeviationsWithoutWeights) {
    sqPlaneAndPointcoDynArr pairs{
        sqPlaneAndPoint({0, 0, 3}, {0, 0, 0}, 1000.0 * giVector3(giAxisZ), 1, -DBL_MAX, DBL_MAX, 1.0),
        sqPlaneAndPoint({0, 5, 4}, {0, 0, 0}, giAxisZ, 1, -DBL_MAX, DBL_MAX, 2.5)};
    pairs[0].weight = 1.0;
    giVector3coDynArr const along_x{giAxisX};  // no help in z
    for (double const a : {0.0, 0.25}) {
        search_function const f(pairs, {}, nothing, along_x, a, 0);
        double positioning, fitting;
        f.get_max_deviations(mlVector(mlVectorZero, 1), positioning, fitting);
        EXPECT_NEAR(positioning, 3.0, 1e-14);
        EXPECT_NEAR(fitting, std::sqrt((1.0 - a) * 16.0 + a * 41.0), 1e-14);
    }
}

// A point that has passed through another one's plane is found, on whichever side; one on the plane is on none.
TEST(DirectShift, ChecksTheSidesOfReferencePoints) {
    auto const check = [](double z, int located, double & mean_square) {
        sqPlaneAndPointcoDynArr pairs{
            sqPlaneAndPoint({0, 0, 0}, {0, 0, 0}, 1000.0 * giVector3(giAxisZ), 0, -DBL_MAX, DBL_MAX, 1.0),
            sqPlaneAndPoint({4, 0, z}, {4, 0, 2}, 1000.0 * giVector3(giAxisX), located, -DBL_MAX, DBL_MAX, 1.0)};
        for (int i = 0; i < 2; ++i) pairs[i].weight = 1.0;
        giVector3coDynArr const nowhere_else{nowhere};
        search_function const f(pairs, {}, nothing, nowhere_else, 0.0, 0);
        f.function(mlVector(mlVectorZero, 1));
        return f.check_transformation(mean_square);
    };
    double mean_square = -1.0;
    EXPECT_TRUE(check(1.0, 1, mean_square));
    EXPECT_NEAR(mean_square, 1.0, 1e-15);
    EXPECT_FALSE(check(-1.0, 1, mean_square));
    EXPECT_NEAR(mean_square, 9.0, 1e-15);
    EXPECT_TRUE(check(0.0, 1, mean_square));
    EXPECT_TRUE(check(-1.0, 0, mean_square));
    EXPECT_EQ(mean_square, 0.0);
}

}  // namespace
