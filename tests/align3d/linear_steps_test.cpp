#include "engine_host.h"

#include <datumfit/align3d/points_to_planes/interpolated_square_dists_sum_free.h>
#include <gtest/gtest.h>

using namespace align3d_tests;

namespace {

class LinearStep : public testing::TestWithParam<step_form> {};
INSTANTIATE_TEST_SUITE_P(Forms, LinearStep, testing::ValuesIn(step_forms()),
                         [](auto const & form) { return std::string(form.param.name); });

struct equations {
    mlMatrix A;
    mlVector b;
    explicit equations(int n) : A(mlMatrixZero, n, n), b(mlVectorZero, n) {}
};

equations by_engine(engine_host const & e, step_form const & form, bool planes) {
    equations q(form.unknowns);
    std::string const name = form.name;
    giPoint3 const p = form.pivot, o = form.nominal_pivot;
    if (name == "free") {
        planes ? e.linear_step_free_points_to_planes(q.A, q.b) : e.linear_step_free_points_to_points(q.A, q.b);
    } else if (name == "point") {
        planes ? e.linear_step_rotation_points_to_planes(p, o, q.A, q.b)
               : e.linear_step_rotation_points_to_points(p, o, q.A, q.b);
    } else if (name == "shifts") {
        planes ? e.linear_step_translates_points_to_planes(q.A, q.b)
               : e.linear_step_translates_points_to_points(q.A, q.b);
    } else {
        planes ? e.linear_step_fixed_axis_points_to_planes(form.unknowns, p, o, lock_axis, q.A, q.b)
               : e.linear_step_fixed_axis_points_to_points(form.unknowns, p, o, lock_axis, q.A, q.b);
    }
    return q;
}

// The sum of squares of the linear residuals is x A x - 2 b x + c: what it is at 0, at unit vectors and at sums of two
// tells A and b.
void expect_equations_of_residuals(engine_host const & e, step_form const & form, bool planes, double tolerance) {
    constexpr int none = 6;
    equations const found = by_engine(e, form, planes);
    auto const sum = [&](int j, int k) {
        double x[none + 1] = {}, result = 0.0;
        x[j] += 1.0;
        x[k] += 1.0;
        for (int i = 0; i < e.bestfit_.size(); ++i) {
            giVector3 const d = linear_offset(e, form, e.bestfit_[i], x);
            result += planes ? std::pow(d.dot(e.bestfit_[i].normal), 2) : d.dot(d);
        }
        return result;
    };
    double const c = sum(none, none);
    for (int j = 0; j < form.unknowns; ++j) {
        EXPECT_NEAR((found.A(j, j) + c - sum(j, none)) / 2.0, found.b[j], tolerance) << j;
        for (int k = 0; k < form.unknowns; ++k) {
            EXPECT_NEAR((sum(j, k) - sum(j, none) - sum(k, none) + c) / 2.0, found.A(j, k), tolerance) << j << k;
            EXPECT_EQ(found.A(j, k), found.A(k, j));
        }
    }
}

TEST_P(LinearStep, HasTheNormalEquationsOfItsResiduals) {
    for (double const offset : {0.0, 1e5}) {
        engine_host e;
        add_records(e, GetParam(), giXform3(giXformRotate, giPoint3(1.0, 2.0, 3.0), lock_axis, giAngle90), offset);
        e.rotation_scale_ = 0.37;
        for (bool const planes : {true, false}) {
            expect_equations_of_residuals(e, GetParam(), planes, 1e-11 * (1.0 + offset * offset));
        }
    }
}

TEST(LinearStep, ShiftsAlongMoreThanThreeDirections) {
    engine_host e;
    step_form form = step_forms()[6];
    add_records(e, form, giXform3(giXformTranslate, giVector3(0.1, 0.2, 0.3)));
    e.lock_rotations(giVector3(0.0, 2.0, 1.0), giVector3(1.0, 0.0, 0.0), nowhere);
    ASSERT_EQ(5, e.shift_directions_.size());
    EXPECT_NEAR(0.0, (e.shift_directions_[2] - giVector3(0.0, 2.0, 1.0).unit()).length(), 1e-16);
    EXPECT_EQ(0.0, e.shift_directions_[4].length());
    form.unknowns = 5;
    form.motion = [&](double, int k) { return small_motion{e.shift_directions_[k], nowhere}; };
    expect_equations_of_residuals(e, form, true, 1e-13);
}

TEST_P(LinearStep, MakesARowOfEachEndOfABand) {
    step_form const & form = GetParam();
    engine_host e;
    add_records(e, form, aside, 5.0);
    e.rotation_scale_ = 0.37;
    int row = 0;
    for (int i = 0; i < e.bestfit_.size(); ++i) {
        if (i % 3 != 0) e.bestfit_[i].lower = -0.1 * i;
        if (i % 3 != 1) e.bestfit_[i].upper = 0.2 * i;
    }
    e.constraint_coefs(form.unknowns);
    for (int i = 0; i < e.bestfit_.size(); ++i) {
        sqPlaneAndPoint const & r = e.bestfit_[i];
        auto const deviation = [&](int unknown) {
            double x[7] = {};
            x[unknown] = 1.0;
            return linear_offset(e, form, r, x).dot(r.normal) / r.weight;
        };
        double const at_0 = deviation(6);
        for (double const sign : {1.0, -1.0}) {
            double const end = sign > 0.0 ? r.lower : r.upper;
            if (std::abs(end) == DBL_MAX) continue;
            for (int k = 0; k < form.unknowns; ++k) {
                EXPECT_NEAR(sign * (deviation(k) - at_0), e.constraint_matrix()(row, k), 1e-12) << i << k;
            }
            EXPECT_NEAR(sign * (end - at_0), e.constraint_values()[row], 1e-12);
            EXPECT_EQ(r.weight, e.constraint_priorities()[row++]);
        }
    }
    EXPECT_EQ(row, e.constraint_matrix().rows());
}

TEST(LinearStep, TurnsTheRecordsWithALockedDirectionForGood) {
    giUnitVec3 const from(0.2, -0.7, 0.4);
    engine_host e;
    giXform3 lock, step, second;
    sqPointsToPlanes::find_lock_matrix(from, lock_axis, lock);
    add_records(e, step_forms()[1], aside * lock, 3.0);
    e.locked_from_[0] = from;
    sqPlaneAndPoint const & record = e.bestfit_[5];
    giPoint3 const p = record.point;
    ASSERT_EQ(1, e.single_linear_step(step));
    EXPECT_NEAR(0.0, (lock * p).distance(record.point), 1e-13);
    EXPECT_NEAR(0.0, (step * p).distance(record.plane_point), 1e-12);
    EXPECT_NEAR(0.0, (e.locked_from_[0] - lock_axis).length(), 1e-15);
    ASSERT_EQ(1, e.single_linear_step(second));
    EXPECT_NEAR(0.0, (second * record.point).distance(record.plane_point), 1e-12);
}

TEST(LinearStep, ScalesRotationsByTheLeverArms) {
    engine_host e;
    giXform3 step;
    auto const scale = [&] {
        e.single_linear_step(step);
        return e.rotation_scale_;
    };
    e.add_unbanded(giPoint3(giOrigin), giPoint3(0.0, 0.0, 1.0), giAxisZ);
    EXPECT_EQ(1.0, scale());
    e.add_unbanded(giPoint3(3.0, 4.0, 5.0), giPoint3(3.0, 4.0, 6.0), giAxisZ, 2.0);
    EXPECT_DOUBLE_EQ(0.2, scale());
    e.lock_direction(giAxisZ, giAxisZ, 0);
    EXPECT_DOUBLE_EQ(1.0 / std::sqrt(50.0), scale());  // |p x n|, with the weight in n
    e.clear_bestfit_data();
    e.add_unbanded(giPoint3(giOrigin), giPoint3(0.0, 0.0, 1.0), giAxisZ);
    EXPECT_DOUBLE_EQ(1.0 / std::sqrt(50.0), scale());
    e.add_unbanded(giPoint3(1e-9, 0.0, 0.0), giPoint3(0.0, 0.0, 1.0), giAxisZ);
    e.single_linear_step_free(step);
    EXPECT_EQ(1e7, e.rotation_scale_);
}

TEST(LinearStep, LeavesOpenDirectionsAndRefusesWithoutALock) {
    engine_host e;
    giXform3 step = aside;
    EXPECT_EQ(0, e.single_linear_step_locked_axis(step) + e.single_linear_step_locked_point(step) +
                     e.single_linear_step_translates(step));
    EXPECT_TRUE(equal(aside, step, 0.0));
    ASSERT_EQ(1, e.single_linear_step(step));
    EXPECT_TRUE(equal(unity, step, 0.0));
    e.add_positioning(giPoint3(1.0, 1.0, 1.0), giPoint3(1.0, 2.0, 4.0), giAxisX, 0);
    giXform3 const onto_nominal(giXformTranslate, giVector3(0.0, 1.0, 3.0));
    for (double const height : {1.0, 1e300}) {  // sums that overflow tell nothing
        ASSERT_EQ(1, e.single_linear_step(step));
        EXPECT_TRUE(equal(onto_nominal, step, 1e-15)) << height;
        e.add_unbanded(giPoint3(1.0, 1.0, 1e300), giPoint3(giOrigin), giAxisX, 1e10);
    }
}

double sum_of_squares(engine_host const & e, giXform3 const & x, double point_weight) {
    double sum = 0.0;
    for (int i = 0; i < e.bestfit_.size(); ++i) {
        giVector3 const d = x * e.bestfit_[i].point - e.bestfit_[i].plane_point;
        sum += std::pow(d.dot(e.bestfit_[i].normal), 2) + point_weight * d.dot(d);
    }
    return sum;
}

// The part turns by half a radian, far from the origin, so that the full step throws it out of place. Only a short part
// of the step makes it better, or none.
TEST(LinearStep, BacksOffWhereTheFullStepIsWorse) {
    for (double const offset : {30.0, 1e3, 1e5}) {
        engine_host e;
        noise random;
        giPoint3 const centre(offset, 0.0, 0.0);
        giXform3 const turn(giXformRotate, centre, lock_axis, giAngle(giAngleRadians, 0.5));
        for (int i = 0; i < 60; ++i) {
            giPoint3 const p = centre + random.vector(1.0);
            e.add_unbanded(p, turn * p, giUnitVec3(random.vector(1.0)), 1000.0);
        }
        giXform3 step;
        ASSERT_EQ(1, e.single_linear_step(step));
        EXPECT_EQ(offset == 1e5, equal(unity, step, 0.0));
        EXPECT_LE(sum_of_squares(e, step, 0.01), (offset < 1e5 ? 0.99 : 1.0) * sum_of_squares(e, unity, 0.01));
    }
}

TEST(InterpolatedSquareDistsSumFree, IsTheSumUnderTheRigidMotionOfT) {
    double const from[] = {0.1, 0.2, -0.3, 0.5, 0.0, 1.0}, to[] = {-0.5, 0.1, 2.0, 1.0, -3.0, 0.4};
    mlVector const start(utConvert, from, 6), end(utConvert, to, 6);
    for (int const n : {0, 1, 3, 4, 6, 1029}) {
        engine_host e;
        add_records(e, step_forms()[0], unity, 0.0, n);
        for (int i = 0; i < n; ++i) e.bestfit_[i].plane_point += giVector3(0.1, -0.2, 0.01 * i);
        sqInterpolatedSquareDistsSumFree const f(e.bestfit_, start, end, 0.3, 0.07, 1e-7);
        for (double const t : {0.0, 0.25, 1.0}) {
            double u[6];
            for (int k = 0; k < 6; ++k) u[k] = (1.0 - t) * from[k] + t * to[k];
            giVector3 const r = 0.3 * giVector3(u[3], u[4], u[5]);
            giAngle const angle(giAngleRadians, std::atan(r.length()));
            giXform3 const x = giXform3(giXformTranslate, giVector3(u[0], u[1], u[2])) *
                               giXform3(giXformRotate, giPoint3(giOrigin), r.unit(), angle);
            double const sum = sum_of_squares(e, x, 0.07);
            EXPECT_NEAR(sum, f.function(t), 1e-13 * sum);
            EXPECT_TRUE(equal(x, f.last_xform(), 1e-15));
        }
    }
}

TEST(InterpolatedSquareDistsSumFree, TurnsFromTheTinyAngleOn) {
    sqPlaneAndPointcoDynArr const none;
    mlVector const zero(mlVectorZero, 6);
    mlVector end = zero;
    end[5] = 0.5;
    for (double const tiny : {0.25, std::nextafter(0.25, 1.0)}) {
        sqInterpolatedSquareDistsSumFree const f(none, zero, end, 0.5, 0.01, tiny);
        EXPECT_EQ(tiny == 0.25, f.interpolate_xform(1.0).matrix()(1, 0) > 0.2);
        EXPECT_TRUE(equal(unity, f.interpolate_xform(0.0), 0.0));
    }
}

}  // namespace
