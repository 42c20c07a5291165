#include "align2d/plane_motions.h"

#include <datumfit/align2d/chain_projector2.h>
#include <datumfit/align2d/curve_bestfit2.h>
#include <datumfit/align2d/points_to_lines.h>
#include <datumfit/align2d/probed_point2.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

using namespace align2d_tests;

namespace {

struct Figures {
    giXform2 transform;
    double distance = -1.0, positive = -1.0, negative = 1.0;
    int invalid = -1;
};

Figures fit(sqCurveBestfit2 & alignment, double tolerance) {
    Figures f;
    alignment.fit(tolerance, f.transform, f.distance, f.positive, f.negative, f.invalid);
    return f;
}

// A host's own point: it belongs on the line y = height, along x as long as `reach`.
struct height_point : sqFitPoint2 {
    giPoint2 measured;
    double height = 0.0, from = -HUGE_VAL, to = HUGE_VAL;
    mutable int initial = 0, from_position = 0;

    explicit height_point(double x, double y) : measured(x, y) {}
    void initial_projection(sqProjectedPoint2 & result, sqFitPointProjector2 const *) const override {
        ++initial;
        project(giXformIdentity, result);
    }
    void project_from_position(giXform2 const & x, sqProjectedPoint2 & result,
                               sqFitPointProjector2 const *) const override {
        ++from_position;
        project(x, result);
    }

private:
    // Writes nothing where there is no foot.
    void project(giXform2 const & x, sqProjectedPoint2 & result) const {
        giPoint2 const at = x * measured;
        bool const has_foot = at.y() >= from && at.y() <= to;
        if (has_foot) result = sqProjectedPoint2(at, giPoint2(at.x(), height), giUnitVec2(0.0, 1.0));
    }
};

struct Heights {
    sqCurveBestfit2 alignment;
    std::vector<std::unique_ptr<height_point>> points;

    height_point & add(double x, double y, double lower = -unbounded, double upper = unbounded) {
        points.push_back(std::make_unique<height_point>(x, y));
        alignment.add_point(sqFitPoint2coPrf(coPrfExtern, points.back().get()), lower, upper);
        return *points.back();
    }
    std::vector<int> given_up() const { return numbers_in(alignment.overdetermined_constraints()); }
};

// A rounded plate, 4 by 2, with a corner cut off: no symmetry. Probe centres stand off it by the radius.
struct Plate {
    giPoint2 at;
    double size, radius;

    giPoint2 p(double x, double y) const { return at + giVector2(size * x, size * y); }

    sqChainProjector2 chain() const {
        double const pi = utMath::pi();
        sqChainElement2coDynArr e;
        e.append(sqChainElement2::segment(p(-2.0, -1.0), p(1.5, -1.0)));
        e.append(sqChainElement2::arc(p(1.5, -0.5), 0.5 * size, -0.5 * pi, 0.5 * pi));
        giPoint2 const corners[] = {p(2.0, -0.5), p(2.0, 0.2), p(1.2, 1.0), p(-2.0, 1.0), p(-2.0, -1.0)};
        for (int k = 0; k < 4; ++k) e.append(sqChainElement2::segment(corners[k], corners[k + 1]));
        return sqChainProjector2(e);
    }

    // Centres off the sides, and off the rounded corner, by the radius and errors.
    std::vector<sqProbedPoint2> centres(double error) const {
        noise draw;
        std::vector<sqProbedPoint2> points;
        auto const add = [&](giPoint2 const & place, giVector2 const & n) {
            giUnitVec2 const normal(n);
            points.emplace_back(place + (radius + error * size * draw()) * giVector2(normal), normal, radius);
        };
        for (int i = 0; i < 12; ++i) {
            double const t = (i + 0.5) / 12.0;
            add(p(-1.8 + 3.1 * t, -1.0), giVector2(0.0, -1.0));
            add(p(-1.8 + 2.8 * t, 1.0), giVector2(0.0, 1.0));
            add(p(-2.0, -0.9 + 1.8 * t), giVector2(-1.0, 0.0));
            if (i % 2 == 0) add(p(1.95 - 0.7 * t, 0.25 + 0.7 * t), giVector2(1.0, 1.0));
            giVector2 const out(std::cos(1.2 * t - 1.4), std::sin(1.2 * t - 1.4));
            add(p(1.5, -0.5) + 0.5 * size * out, out);
        }
        return points;
    }
};

struct Placed {
    Plate plate;
    sqChainProjector2 chain;
    std::vector<sqProbedPoint2> points;
    sqCurveBestfit2 alignment;

    // The points are measured off their nominal places by the inverse of a motion, `away`.
    Placed(placement const & at, double error, double radius, giXform2 const & away)
        : plate{general_point2(at.offset), at.size, radius * at.size}, chain(plate.chain()) {
        for (sqProbedPoint2 const & p : plate.centres(error)) {
            giUnitVec2 const normal(away * p.approximate_normal().anchor() - away * giPoint2(giOrigin));
            points.emplace_back(away * p.measured_point(), normal, p.radius());
        }
        alignment.set_projector(&chain);
        for (sqProbedPoint2 & p : points) alignment.add_point(sqFitPoint2coPrf(coPrfExtern, &p));
    }

    double apart(giXform2 const & a, giXform2 const & b) const {
        double largest = 0.0;
        for (sqProbedPoint2 const & p : points) {
            largest = std::max<double>(largest, (a * p.measured_point()).distance(b * p.measured_point()));
        }
        return largest;
    }
    double sum_of_squares(giXform2 const & x) const {
        double sum = 0.0;
        for (sqProbedPoint2 const & p : points) {
            sqProjectedPoint2 result;
            p.project_from_position(x, result, &chain);
            sum += result.signed_distance() * result.signed_distance();
        }
        return sum;
    }
};

class CurveBestfit : public testing::TestWithParam<placement> {};

TEST_P(CurveBestfit, BringsAnExactPartBack) {
    placement const at = GetParam();
    giPoint2 const about = general_point2(at.offset);
    giVector2 const shift(0.04 * at.size, -0.05 * at.size);
    giXform2 const away = motion(about, 0.05, shift);
    for (double const radius : {0.0, 0.2}) {
        Placed part(at, 0.0, radius, away);
        Figures const f = fit(part.alignment, 4.0 * rounding_at(at));
        EXPECT_EQ(0, f.invalid);
        EXPECT_LT(f.distance, 16.0 * rounding_at(at));
        EXPECT_LT(part.apart(product(f.transform, away), giXformIdentity), 16.0 * rounding_at(at));
    }
}

TEST_P(CurveBestfit, FindsTheLeastSquares) {
    placement const at = GetParam();
    giPoint2 const about = general_point2(at.offset);
    Placed part(at, 1e-3, 0.2, motion(about, -0.03, giVector2(0.02 * at.size, 0.03 * at.size)));
    Figures const f = fit(part.alignment, 1e-11 * at.size + 4.0 * rounding_at(at));
    // Moves that lower the sum by less than the rounding of the coordinates are too small to be told apart.
    double const h = at.offset > 1e5 ? 1e-6 : 1e-7, least = part.sum_of_squares(f.transform) * (1.0 - 1e-13);
    for (double const step : {h, -h}) {
        for (giXform2 const & x :
             {motion(about, 0.0, giVector2(step * at.size, 0.0)), motion(about, 0.0, giVector2(0.0, step * at.size)),
              motion(about, step, giVector2(0.0, 0.0))}) {
            EXPECT_GE(part.sum_of_squares(product(x, f.transform)), least);
        }
    }
    EXPECT_GT(f.positive, 1e-3 * at.size);
    EXPECT_LT(f.negative, -1e-3 * at.size);
    EXPECT_EQ(std::max(f.positive, -f.negative), f.distance);
}

INSTANTIATE_TEST_SUITE_P(Placements, CurveBestfit, testing::ValuesIn(placements),
                         [](auto const & at) { return name_of(at.param); });

TEST(CurveBestfit, ArrivesAtTheLockedPose) {
    placement const at{"", 20.0, 10.0};
    giPoint2 const about = general_point2(at.offset), nominal = about + giVector2(3.0, -4.0);
    giXform2 const away = motion(about, 0.06, giVector2(0.3, -0.2));
    giPoint2 const measured = away * nominal;
    giVector2 const axis(1.0, 2.0), axis_measured = 3.0 * (away * (nominal + axis) - measured);
    for (int const locks : {1, 2, 3}) {
        SCOPED_TRACE(locks);
        Placed part(at, 1e-3, 0.3, away);
        if (locks & 1) part.alignment.lock_origin(measured, nominal);
        if (locks & 2) part.alignment.lock_axis(axis_measured, axis);
        giXform2 const found = fit(part.alignment, 1e-12).transform;
        giVector2 const off = found * measured - nominal,
                        turned = found * (measured + axis_measured) - found * measured;
        giVector2 const lost = locks == 3 ? giVector2(off.cross(axis.unit()), 0.0) : off;
        EXPECT_NEAR(0.0, locks == 2 ? 0.0 : lost.length().value(), 1e-13);
        EXPECT_NEAR(0.0, locks == 1 ? 0.0 : turned.cross(axis) / 15.0, 1e-13);
        EXPECT_LT(part.apart(product(found, away), giXformIdentity), 0.05);
        // Once more, from the same points: nothing of a fit has stayed behind.
        EXPECT_EQ(0.0, part.apart(found, fit(part.alignment, 1e-12).transform));
    }
}

TEST(CurveBestfit, CountsItsPassesAndProjections) {
    Heights h;
    height_point const & first = h.add(0.0, 1.0);
    h.add(4.0, 1.0);
    Figures f = fit(h.alignment, 1e-9);
    EXPECT_EQ(1, first.from_position) << "the second step moves nothing";
    EXPECT_NEAR(0.0, f.distance, 1e-15);
    f = fit(h.alignment, 10.0);
    EXPECT_EQ(1, first.initial);
    EXPECT_EQ(2, first.from_position);
    EXPECT_TRUE(f.distance == 1.0 && f.positive == 1.0 && f.negative == 0.0) << "the figures before the step";
    EXPECT_NEAR(0.0, (f.transform * giPoint2(4.0, 1.0)).y(), 1e-15);
    fit(h.alignment, 0.0);
    EXPECT_EQ(52, first.from_position);
}

TEST(CurveBestfit, HasAnswersForNothingToFit) {
    for (int const n : {0, 3}) {
        Heights h;
        for (int i = 0; i < n; ++i) h.add(i, 1.0, 2.0, 3.0).from = HUGE_VAL;
        Figures const f = fit(h.alignment, 1.0);
        EXPECT_TRUE(f.invalid == n && f.distance + f.positive - f.negative == 0.0 && h.given_up().empty());
        EXPECT_EQ(0.0, (f.transform * giPoint2(3.0, 4.0)).distance(giPoint2(3.0, 4.0)));
    }
    // The first projection has been made, so that points that come later are never asked for their initial one.
    Heights h;
    fit(h.alignment, 1.0);
    height_point const & late = h.add(0.0, 1.0);
    h.alignment.add_point(sqFitPoint2coPrf());
    EXPECT_EQ(1, fit(h.alignment, 1e-9).invalid);
    EXPECT_TRUE(late.initial == 0 && h.alignment.point(0) == &late && h.alignment.point(1) == nullptr);
    giXform2 up(giXformTranslate, giVector2(0.0, 2.0));
    sqProjectedPoint2 const of_before(giPoint2(9.0, 9.0), giPoint2(9.0, 9.0), giUnitVec2(1.0, 0.0));
    sqProjectedPoint2coDynArr cloud{of_before, of_before};
    h.alignment.reproject_all_points(up, cloud);
    EXPECT_EQ(3.0, cloud[0].signed_distance());
    EXPECT_NE(0, cloud[1].invalid());
}

// A point without a foot at first, above the reach of its line, has the numbers 0 and 1 all the same.
TEST(CurveBestfit, NumbersBandsThroughPointsWithoutProjection) {
    Heights h;
    h.add(-2.0, 5.0, -1.0, 1.0).to = 4.0;
    h.add(0.0, 5.0, 0.5, 0.4);          // 2, 3: contradict each other
    h.add(2.0, 5.0, -unbounded, 0.45);  // 4
    h.add(4.0, 5.0, -0.1, 0.45);        // 5, 6
    Figures f = fit(h.alignment, 1e-12);
    EXPECT_EQ(std::vector<int>({3}), h.given_up());
    EXPECT_EQ(0, f.invalid) << "the point is back";
    EXPECT_NEAR(2.0 / 3.0, f.positive, 1e-9);

    // Two more on the same place, the first of which is lost when the others have come down.
    h.add(0.0, 5.0, 0.1, 0.3).from = 1.0;  // 7, 8: 8 contradicts 2 as long as it is seen
    f = fit(h.alignment, 1e-12);
    EXPECT_EQ(std::vector<int>({3, 8}), h.given_up());
    EXPECT_EQ(1, f.invalid);
    h.add(0.0, 5.0, 0.1, 0.3);  // 9, 10
    f = fit(h.alignment, 1e-12);
    EXPECT_EQ(std::vector<int>({3, 8, 10}), h.given_up());
}

TEST(CurveBestfit, LeavesOutRecordsThatAreNotComplete) {
    struct careless_point : sqFitPoint2 {
        void initial_projection(sqProjectedPoint2 & result, sqFitPointProjector2 const *) const override {
            result = sqProjectedPoint2(giPoint2(1.0, 2.0), giPoint2(giOrigin), giUnitVec2());
        }
        void project_from_position(giXform2 const &, sqProjectedPoint2 & result,
                                   sqFitPointProjector2 const *) const override {
            result = sqProjectedPoint2(giPoint2(1.0, std::nan("")), giPoint2(giOrigin), giUnitVec2(1.0, 0.0));
        }
    };
    Heights h;
    h.add(0.0, 1.0);
    h.add(1.0, 1.0);
    h.alignment.add_point(sqFitPoint2coPrf(new careless_point), 5.0, 6.0);
    Figures const f = fit(h.alignment, 1e-12);
    EXPECT_TRUE(f.invalid == 1 && h.given_up().empty());
    EXPECT_NEAR(0.0, (f.transform * giPoint2(0.5, 1.0)).y(), 1e-14);
}

}  // namespace
