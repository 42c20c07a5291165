#include "align3d/engine_host.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <functional>

namespace {

using namespace align3d_tests;
using engine = sqPointsToPlanes;

struct reference_point {
    giPoint3 place;
    giVector3 normal;
};

std::vector<reference_point> const three_two_one = {{{-20, -15, -12}, giAxisZ}, {{22, -14, -12}, giAxisZ},
                                                    {{1, 16, -12}, giAxisZ},    {{-21, -20, 2}, giAxisY},
                                                    {{18, -20, -3}, giAxisY},   {{-30, 3, 1}, giAxisX}};
giXform3 const pose =
    giXform3(giXformTranslate, giVector3(170, -220, 35))
        .postmultiply(giXform3(giXformRotate, giOrigin, giUnitVec3(1, -2, 0.5), giAngle(giAngleDegrees, 130)));
giXform3 const home(giXformInverse, pose);

void add(sqRPSFitting & fit, std::vector<reference_point> const & points, giXform3 const & measured = pose) {
    for (reference_point const & r : points) {
        giWorkplane3 const plane(r.place, giUnitVec3(r.normal).any_normal(), r.normal);
        fit.add_positioning(measured * r.place, plane, r.place, engine::PLANE_IGNORED, engine::PLANE_IGNORED,
                            engine::PLANE_LOCKED);
    }
}

// Points around the box.
void add_probes(sqRPSFitting & fit, int n, double error, giXform3 const & measured = pose) {
    for (sqProbedPoint3 const & p : box_probes(n, 1.0, error)) {
        giVector3 const & normal = p.approximate_normal();
        fit.add_point(new sqProbedPoint3(measured * p.measured_point(), giUnitVec3(measured * normal), 1.0));
    }
}

double off_by(giXform3 const & x, giXform3 const & truth = home) {
    double worst = 0.0;
    for (reference_point const & r : three_two_one) {
        giPoint3 const p = pose * r.place;
        worst = std::max<double>(worst, (x * p).distance(truth * p));
    }
    return worst;
}

sqSurfProjectorForFitting3 const & box_projector() {
    static rectangles const surface = box();
    static sqSurfProjectorForFitting3 const projector(surface);
    return projector;
}

TEST(RpsFitting, ComesHomeFromAnywhere) {
    for (int const points : {0, 2, 60}) {
        sqRPSFitting fit(30, 1e-6);
        fit.set_projector(&box_projector());
        add(fit, three_two_one);
        add_probes(fit, points, 0.01);
        giXform3 x;
        EXPECT_EQ(fit.rps_determined(1, x), 1);
        EXPECT_LT(off_by(x), 1e-4);
        EXPECT_EQ(fit.fit(), sqRPS_FITTING_OK);
        EXPECT_EQ(fit.num_valid_projections(), 0);  // as measured no point has a foot; a second fit starts at home
        EXPECT_EQ(fit.fit(), sqRPS_FITTING_OK);
        EXPECT_EQ(fit.num_valid_projections(), points);
        EXPECT_LT(off_by(fit.transform()), 1e-4) << points;
        EXPECT_LT(fit.standard_deviation_of_nominals(fit.transform()), 1e-5);
    }
}

// What the locks leave free is decided by the points of the box, which is a little out of place.
TEST(RpsFitting, HoldsLinesAndPlanes) {
    giXform3 const aside_a_little =
        giXform3(giXformTranslate, giVector3(0.4, -0.3, 0.5))
            .postmultiply(giXform3(giXformRotate, giOrigin, giUnitVec3(1, 1, -1), giAngle(giAngleDegrees, 1.0)));
    giInfLine3 const line(giPoint3(1, 2, 3), giUnitVec3(1, 3, -2));
    giPlane const plane(giUnitVec3(2, -1, 1), giPoint3(-3, 1, 2));
    for (bool const reversed : {false, true}) {
        double const sense = reversed ? -1.0 : 1.0;
        giVector3 const &d = line.direction(), &n = plane.normal();
        sqRPSFitting with_line(40, 1e-7), with_plane(40, 1e-7);
        giPoint3 const p = aside_a_little * line.interpolate(2.0), q = aside_a_little * plane.point();
        giUnitVec3 const from(aside_a_little * (sense * d)), normal(aside_a_little * (sense * n));
        with_line.lock_axis(giInfLine3(p, from), line, !reversed);
        with_plane.lock_plane(giPlane(normal, q), plane, !reversed);
        for (sqRPSFitting * fit : {&with_line, &with_plane}) {
            fit->set_projector(&box_projector());
            add_probes(*fit, 90, 0.0, aside_a_little);
            EXPECT_EQ(fit->fit(), sqRPS_FITTING_OK);
        }
        giVector3 const along = with_line.transform() * static_cast<giVector3 const &>(from);
        EXPECT_NEAR(std::abs(along.dot(d)), 1.0, 1e-12);
        EXPECT_NEAR(line.distance_of_point(with_line.transform() * p), 0.0, 1e-6);
        giVector3 const across = with_plane.transform() * static_cast<giVector3 const &>(normal);
        EXPECT_NEAR(std::abs(across.dot(n)), 1.0, 1e-12);
        EXPECT_NEAR(plane.distance(with_plane.transform() * q), 0.0, 1e-6);
        for (sqRPSFitting const * fit : {&with_line, &with_plane}) EXPECT_LT(fit->square_deviation(), 1e-8) << reversed;
    }
}

TEST(RpsFitting, RepairsAContradictionWhereToldTo) {
    std::vector<reference_point> contradictory = three_two_one;
    contradictory.insert(contradictory.begin() + 3, {{1, 16, -11.5}, giAxisZ});
    for (int const points : {0, 60}) {
        for (int const repair : {0, 1}) {
            sqRPSFitting fit(30, 1e-6);
            fit.set_projector(&box_projector());
            fit.overconstrained_mode(repair);
            add(fit, three_two_one);
            fit.add_positioning(pose * giPoint3(1, 16, -12), giWorkplane3(giOrigin, giAxisY, giAxisZ),
                                giPoint3(1, 16, -11.5), engine::PLANE_IGNORED, engine::PLANE_IGNORED,
                                engine::PLANE_LOCKED);
            add_probes(fit, points, 0.01);
            giXform3 untouched;
            EXPECT_EQ(fit.rps_determined(1, untouched), 1);
            EXPECT_TRUE(untouched.invalid());
            fit.fit();
            EXPECT_EQ(off_by(fit.transform()) < 1e-3, repair == 1) << points;
        }
    }
}

// A point whose foot is what the test makes it.
class scripted_point : public sqFitPoint3 {
public:
    using script = std::function<void(giXform3 const &, bool initial, sqProjectedPoint3 &)>;
    explicit scripted_point(script s) : script_(std::move(s)) {}
    void initial_projection(sqProjectedPoint3 & result, sqFitPointProjector3 const *) const override {
        script_(giXformIdentity, true, result);
    }
    void project_from_position(giXform3 const & x, sqProjectedPoint3 & result,
                               sqFitPointProjector3 const *) const override {
        script_(x, false, result);
    }

private:
    script script_;
};

// A plane that flees by `flight` on each projection, which also shows some form error, and that points leave from their
// second projection on.
struct fleeing_plane {
    double flight;
    int leaving;
    std::function<double(int)> error;
    int initial_projections = 0, projections = 0;

    void add_to(sqRPSFitting & fit, int n) {
        for (int i = 0; i < n; ++i) {
            giPoint3 const p(i % 4, i / 4, 0.0);
            fit.add_point(new scripted_point([=](giXform3 const & x, bool initial, sqProjectedPoint3 & result) {
                if (i == 0) ++(initial ? initial_projections : projections);
                if (!initial && i < leaving) return;
                giPoint3 const moved = x * p;
                double const height = 5.0 + flight * projections + (i % 2 ? 1.0 : -1.0) * error(projections);
                result = sqProjectedPoint3(moved, giPoint3(moved.x(), moved.y(), height), giAxisZ);
            }));
        }
    }
};

TEST(RpsFitting, StopsByItsRules) {
    struct {
        char const * name;
        int points, leaving, limit, status, iterations;
        double height, deviation;
        std::function<double(int)> error;
    } const cases[] = {
        {"no data", 2, 0, 50, sqRPS_FITTING_NO_DATA, 0, 0.0, 0.0, [](int) { return 0.1; }},
        {"half are left", 12, 6, 3, sqRPS_FITTING_OK, 4, 6.0, 0.1, [](int k) { return k == 1 ? 0.1 : 0.2; }},
        {"half are left of an odd number", 11, 6, 3, sqRPS_FITTING_OK, 4, 5.98, 0.098,
         [](int k) { return k == 1 ? 0.1 : 0.2; }},
        {"more are lost", 12, 8, 3, sqRPS_FITTING_POINTS_LOST, 2, 6.0, 0.2, [](int) { return 0.2; }},
        {"no step", 8, 0, 0, sqRPS_FITTING_OK, 1, 0.0, std::sqrt(DBL_MAX), [](int) { return 0.1; }},
        {"the best is not the last", 8, 0, 5, sqRPS_FITTING_OK, 6, 7.0, 0.1,
         [](int k) { return k == 2 ? 0.1 : 0.1 + 0.1 / (1 + k); }},
        {"eleven stale steps, most tried twice", 8, 0, 100, sqRPS_FITTING_OK, 20, 5.0, 0.1,
         [](int k) { return 0.1 * (1 + k); }}};
    for (auto const & c : cases) {
        fleeing_plane plane{1.0, c.leaving, c.error};
        sqRPSFitting fit(c.limit, 1e-3);
        if (c.points > 2) fit.lock_direction(giAxisZ, giAxisZ);
        plane.add_to(fit, c.points);
        fit.set_projector(&box_projector());
        EXPECT_EQ(fit.fit(), c.status) << c.name;
        EXPECT_EQ(fit.status_code(), c.status) << c.name;
        EXPECT_EQ(fit.get_iterations(), c.iterations) << c.name;
        EXPECT_NEAR((fit.transform() * giPoint3(giOrigin)).z(), c.height, 0.01) << c.name;
        EXPECT_NEAR(std::sqrt(fit.square_deviation()), c.deviation, 1e-3) << c.name;
        EXPECT_EQ(plane.initial_projections, 1) << c.name;
        fit.slow_first_iteration();
        fit.fit();
        EXPECT_EQ(plane.initial_projections, 2) << c.name;
    }
}

// Of two partners only the combined deviation counts, and only while both have a foot.
TEST(RpsFitting, BalancesPartners) {
    for (bool const lost : {false, true}) {
        sqRPSFitting fit(10, 1e-9);
        fit.set_projector(&box_projector());
        fit.lock_direction(giAxisZ, giAxisZ);
        auto const point = [](double z, bool seen) {
            return sqFitPoint3coPrf(new scripted_point([=](giXform3 const & x, bool, sqProjectedPoint3 & result) {
                if (seen) result = sqProjectedPoint3(x * giPoint3(1.0, 2.0, z), giPoint3(1.0, 2.0, 0.0), giAxisZ);
            }));
        };
        fit.add_point(point(0.5, true));
        fit.add_balance(point(1.0, true), 0.25, point(3.0, !lost), 0.75);
        fit.add_point(point(0.5, true));
        fit.reproject_all_points(const_cast<giXform3 &>(fit.transform()));
        sqProjectedPoint3coDynArr cloud;
        for (double const z : {0.5, 1.0, 3.0, 0.5}) {
            cloud.append(sqProjectedPoint3(giPoint3(1.0, 2.0, z), giPoint3(1.0, 2.0, 0.0), giAxisZ));
        }
        if (lost) cloud[2].set_invalid();
        EXPECT_NEAR(fit.get_square_distance(cloud, unity), lost ? 0.25 : (0.5 + 2.5 * 2.5) / 3.0, 1e-15);
        EXPECT_EQ(fit.num_valid_projections(), lost ? 3 : 4);
        fit.fit();
        giVector3 const shift = fit.transform() * giPoint3(giOrigin) - giPoint3(giOrigin);
        EXPECT_NEAR(shift.z(), lost ? -0.5 : -(0.5 + 2.5 + 0.5) / 3.0, 0.03);
    }
}

}  // namespace
