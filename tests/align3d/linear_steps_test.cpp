#include "engine_host.h"

#include <datumfit/align3d/points_to_planes/interpolated_square_dists_sum_free.h>
#include <gtest/gtest.h>

#include <cmath>

namespace {

giXform3 const unity(giXformIdentity);

class LinearStep : public testing::TestWithParam<step_form> {};
INSTANTIATE_TEST_SUITE_P(Forms, LinearStep, testing::ValuesIn(step_forms()),
                         [](auto const & form) { return std::string(form.param.name); });

struct equations {
    mlMatrix A;
    mlVector b;
    explicit equations(int n) : A(mlMatrixZero, n, n), b(mlVectorZero, n) {}
};

// From the residuals at 0 and at each unit vector: they are linear, so that their differences are the derivatives.
equations by_differences(engine_host const & e, step_form const & form, bool planes) {
    equations result(form.unknowns);
    for (int i = 0; i < e.bestfit_.size(); ++i) {
        giVector3 const n = e.bestfit_[i].normal;
        auto const residuals = [&](int unknown) {
            std::vector<double> x(6);
            if (unknown >= 0) x[static_cast<std::size_t>(unknown)] = 1.0;
            giVector3 const d = linear_offset(e, form, e.bestfit_[i], x);
            return planes ? giVector3(d.dot(n), 0.0, 0.0) : d;
        };
        giVector3 const at_0 = residuals(-1);
        for (int j = 0; j < form.unknowns; ++j) {
            giVector3 const dj = residuals(j) - at_0;
            result.b[j] -= dj.dot(at_0);
            for (int k = 0; k < form.unknowns; ++k) result.A(j, k) += dj.dot(residuals(k) - at_0);
        }
    }
    return result;
}

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

TEST_P(LinearStep, HasTheNormalEquationsOfItsResiduals) {
    for (double const offset : {0.0, 1e5}) {
        engine_host e;
        add_records(e, GetParam(), giXform3(giXformRotate, giPoint3(1.0, 2.0, 3.0), lock_axis, giAngle90), offset);
        e.rotation_scale_ = 0.37;
        for (bool const planes : {true, false}) {
            equations const found = by_engine(e, GetParam(), planes), expected = by_differences(e, GetParam(), planes);
            double const tolerance = 1e-11 * (1.0 + offset * offset);
            for (int j = 0; j < GetParam().unknowns; ++j) {
                EXPECT_NEAR(expected.b[j], found.b[j], tolerance) << j;
                for (int k = 0; k < GetParam().unknowns; ++k) {
                    EXPECT_NEAR(expected.A(j, k), found.A(j, k), tolerance) << j << k;
                    EXPECT_EQ(found.A(j, k), found.A(k, j));
                }
            }
        }
    }
}

// A motion of h within the freedoms of the form: the pivot goes to its nominal place, and then shifts and turns.
giXform3 motion_of(step_form const & form, double h) {
    giVector3 shift = form.nominal_pivot - form.pivot, turn = nowhere;
    for (int k = 0; k < form.unknowns; ++k) {
        small_motion const m = form.motion(0.1, k);
        shift += (k - 0.5) * h * m.shift;
        turn += (1.5 - k) * h * m.turn;
    }
    giXform3 const x(giXformTranslate, shift);
    if (turn.is_zero(1e-12)) return x;
    return after(x, giXform3(giXformRotate, form.pivot, turn.unit(), giAngle(giAngleRadians, turn.length())));
}

double greatest_offset(engine_host const & e, giXform3 const & x) {
    double greatest = 0.0;
    for (int i = 0; i < e.bestfit_.size(); ++i) {
        sqPlaneAndPoint const & r = e.bestfit_[i];
        greatest = std::max<double>(greatest, (x * r.point).distance(r.plane_point));
    }
    return greatest;
}

TEST_P(LinearStep, FindsASmallMotionToSecondOrder) {
    for (double const h : {1e-2, 1e-3, 1e-4}) {
        engine_host e;
        add_records(e, GetParam(), motion_of(GetParam(), h), 20.0);
        giXform3 step;
        ASSERT_EQ(1, e.single_linear_step(step));
        EXPECT_LT(greatest_offset(e, step), 60.0 * h * h + 1e-12) << h;
    }
}

// All bands leave a place open, but only a narrow one, off the minimum.
TEST_P(LinearStep, KeepsBandsInTheLinearModel) {
    step_form const & form = GetParam();
    engine_host e;
    add_records(e, form, motion_of(form, 0.02), 5.0);
    e.rotation_scale_ = 0.1;
    auto const deviation = [&](int i, std::vector<double> const & x) {
        return linear_offset(e, form, e.bestfit_[i], x).dot(e.bestfit_[i].normal) / e.bestfit_[i].weight;
    };
    for (int i = 0; i < e.bestfit_.size(); ++i) {
        double const middle = deviation(i, {0.1, -0.08, 0.06, 0.1, -0.1, 0.12});
        if (i % 5 != 0) e.bestfit_[i].lower = middle - 0.001 * (1 + i % 4);
        if (i % 5 != 3) e.bestfit_[i].upper = middle + 0.001 * (1 + i % 3);
    }
    e.has_bands_ = 1;
    equations const q = by_engine(e, form, true);
    mlVector start, minimum;
    auto const broken = [&](mlVector const & x) {
        double worst = -1.0;
        for (int i = 0; i < e.bestfit_.size(); ++i) {
            double const d = deviation(i, std::vector<double>(x.data(), x.data() + x.dimension()));
            worst = std::max({worst, e.bestfit_[i].lower - d, d - e.bestfit_[i].upper});
        }
        return worst;
    };
    ASSERT_EQ(1, e.search_constrained_minimum(q.A, q.b, form.unknowns, start, minimum));
    EXPECT_EQ(0, e.overdetermined_constraints().size());
    EXPECT_LT(broken(start), 1e-9);
    EXPECT_NEAR(0.0, broken(minimum), 1e-9);  // some band is met with equality
    e.has_bands_ = 0;
    ASSERT_EQ(1, e.search_constrained_minimum(q.A, q.b, form.unknowns, start, minimum));
    EXPECT_GT(broken(minimum), 0.01);
    EXPECT_EQ(0.0, scalar_product(start, start));
}

TEST(LinearStep, TurnsTheRecordsWithALockedDirectionForGood) {
    giUnitVec3 const from(0.2, -0.7, 0.4);
    engine_host e;
    giXform3 lock;
    sqPointsToPlanes::find_lock_matrix(from, lock_axis, lock);
    step_form const form = step_forms()[1];
    add_records(e, form, after(giXform3(giXformTranslate, giVector3(1.0, 2.0, 3.0)), lock), 3.0);
    e.locked_from_[0] = from;
    giPoint3 const p = e.bestfit_[5].point;
    giXform3 step, second;
    ASSERT_EQ(1, e.single_linear_step(step));
    EXPECT_NEAR(0.0, (lock * p).distance(e.bestfit_[5].point), 1e-13);
    EXPECT_NEAR(0.0, (step * p).distance(e.bestfit_[5].plane_point), 1e-12);
    EXPECT_NEAR(0.0, (e.locked_from_[0] - lock_axis).length(), 1e-15);
    EXPECT_NEAR(0.0, (step * from - lock_axis).length(), 1e-14);
    ASSERT_EQ(1, e.single_linear_step(second));
    EXPECT_NEAR(0.0, (second * e.bestfit_[5].point).distance(e.bestfit_[5].plane_point), 1e-12);
}

TEST(LinearStep, ScalesRotationsByTheLeverArms) {
    engine_host e;
    giXform3 step;
    e.add_unbanded(giPoint3(giOrigin), giPoint3(0.0, 0.0, 1.0), giAxisZ);
    ASSERT_EQ(1, e.single_linear_step(step));
    EXPECT_EQ(1.0, e.rotation_scale_);
    e.add_unbanded(giPoint3(3.0, 4.0, 5.0), giPoint3(3.0, 4.0, 6.0), giAxisZ, 2.0);
    e.single_linear_step(step);
    EXPECT_DOUBLE_EQ(0.2, e.rotation_scale_);
    e.single_linear_step_locked_axis(step);
    EXPECT_DOUBLE_EQ(0.2, e.rotation_scale_);  // refused: there is no axis
    e.lock_direction(giAxisZ, giAxisZ, 0);
    e.single_linear_step(step);
    EXPECT_DOUBLE_EQ(1.0 / std::sqrt(50.0), e.rotation_scale_);  // |p x n|, with the weight in n
    e.clear_bestfit_data();
    e.add_unbanded(giPoint3(giOrigin), giPoint3(0.0, 0.0, 1.0), giAxisZ);
    e.single_linear_step(step);
    EXPECT_DOUBLE_EQ(1.0 / std::sqrt(50.0), e.rotation_scale_);
    e.add_unbanded(giPoint3(1e-9, 0.0, 0.0), giPoint3(0.0, 0.0, 1.0), giAxisZ);
    e.single_linear_step_free(step);
    EXPECT_EQ(1e7, e.rotation_scale_);
}

TEST(LinearStep, LeavesOpenDirectionsAndRefusesWithoutALock) {
    engine_host e;
    giXform3 step, before(giXformTranslate, giVector3(1.0, 2.0, 3.0));
    ASSERT_EQ(1, e.single_linear_step(step));
    EXPECT_TRUE(equal(unity, step, 0.0));
    step = before;
    EXPECT_EQ(0, e.single_linear_step_locked_axis(step) + e.single_linear_step_locked_point(step) +
                     e.single_linear_step_translates(step));
    EXPECT_TRUE(equal(before, step, 0.0));
    e.add_positioning(giPoint3(1.0, 1.0, 1.0), giPoint3(1.0, 2.0, 4.0), giAxisX, 0);
    ASSERT_EQ(1, e.single_linear_step(step));
    EXPECT_TRUE(equal(giXform3(giXformTranslate, giVector3(0.0, 1.0, 3.0)), step, 1e-15));
    e.add_unbanded(giPoint3(1.0, 1.0, 1e300), giPoint3(giOrigin), giAxisX, 1e10);
    ASSERT_EQ(1, e.single_linear_step(step));
    EXPECT_TRUE(equal(giXform3(giXformTranslate, giVector3(0.0, 1.0, 3.0)), step, 1e-15));
}

TEST(LinearStep, ShiftsAlongMoreThanThreeDirections) {
    engine_host e;
    step_form form = step_forms()[6];
    add_records(e, form, giXform3(giXformTranslate, giVector3(0.1, 0.2, 0.3)));
    e.lock_rotations(giVector3(0.0, 2.0, 1.0), giVector3(1.0, 0.0, 0.0), nowhere);
    ASSERT_EQ(5, e.shift_directions_.size());
    form.unknowns = 5;
    form.motion = [&](double, int k) { return small_motion{e.shift_directions_[k], nowhere}; };
    equations const found = by_engine(e, form, true), expected = by_differences(e, form, true);
    for (int j = 0; j < 5; ++j) {
        EXPECT_NEAR(expected.b[j], found.b[j], 1e-13);
        for (int k = 0; k < 5; ++k) EXPECT_NEAR(expected.A(j, k), found.A(j, k), 1e-13);
    }
}

// The part turns by half a radian, far from the origin, so that the full step throws it out of place. Only a short part
// of the step makes it better, or none.
TEST(LinearStep, BacksOffWhereTheFullStepIsWorse) {
    for (double const offset : {30.0, 1e3, 1e5}) {
        engine_host e;
        noise random;
        giXform3 const turn(giXformRotate, giPoint3(offset, 0.0, 0.0), lock_axis, giAngle(giAngleRadians, 0.5));
        for (int i = 0; i < 60; ++i) {
            giPoint3 const p = giPoint3(offset, 0.0, 0.0) + random.vector(1.0);
            e.add_unbanded(p, turn * p, giUnitVec3(random.vector(1.0)), 1000.0);
        }
        giXform3 step;
        ASSERT_EQ(1, e.single_linear_step(step));
        equations q(6), points(6);
        e.linear_step_free_points_to_planes(q.A, q.b);
        e.linear_step_free_points_to_points(points.A, points.b);
        q.A += points.A *= 0.01;
        q.b += points.b *= 0.01;
        mlVector start, end;
        ASSERT_EQ(1, e.search_constrained_minimum(q.A, q.b, 6, start, end));
        sqInterpolatedSquareDistsSumFree const f(e.bestfit_, start, end, e.rotation_scale_, 0.01, 1e-7);
        double found = 0.0;
        for (int i = 0; i < e.bestfit_.size(); ++i) {
            giVector3 const d = step * e.bestfit_[i].point - e.bestfit_[i].plane_point;
            found += std::pow(d.dot(e.bestfit_[i].normal), 2) + 0.01 * d.dot(d);
        }
        double least = f.function(0.0);
        EXPECT_GT(f.function(1.0), least);
        for (double t = 0.5; t > 0.03; t /= 2.0) least = std::min(least, f.function(t));
        EXPECT_EQ(offset == 1e5, equal(unity, step, 0.0));
        EXPECT_LE(found, (offset < 1e5 ? 0.99 : 1.0 + 1e-12) * f.function(0.0));
        EXPECT_LE(found, least * (1.0 + 1e-9));
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
            double u[6], sum = 0.0;
            for (int k = 0; k < 6; ++k) u[k] = (1.0 - t) * from[k] + t * to[k];
            giVector3 const r = 0.3 * giVector3(u[3], u[4], u[5]);
            giXform3 const x = after(
                giXform3(giXformTranslate, giVector3(u[0], u[1], u[2])),
                giXform3(giXformRotate, giPoint3(giOrigin), r.unit(), giAngle(giAngleRadians, std::atan(r.length()))));
            for (int i = 0; i < n; ++i) {
                giVector3 const d = x * e.bestfit_[i].point - e.bestfit_[i].plane_point;
                sum += std::pow(d.dot(e.bestfit_[i].normal), 2) + 0.07 * d.dot(d);
            }
            EXPECT_NEAR(sum, f.function(t), 1e-13 * sum);
            EXPECT_TRUE(equal(x, f.last_xform(), 1e-15));
            giXform3 const last = f.last_xform();
            EXPECT_TRUE(equal(last, f.interpolate_xform(t), 0.0));
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
