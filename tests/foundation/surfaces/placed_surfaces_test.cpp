#include "support/shapes.h"

#include <datumfit/foundation/geometry/xform3_acc.h>
#include <datumfit/foundation/surfaces/cone_surf.h>
#include <datumfit/foundation/surfaces/cylinder_surf.h>
#include <datumfit/foundation/surfaces/plane_surf.h>
#include <datumfit/foundation/surfaces/quarter_turns.h>
#include <datumfit/foundation/surfaces/sphere_surf.h>
#include <datumfit/foundation/surfaces/torus_surf.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

constexpr double epsilon = std::numeric_limits<double>::epsilon();
constexpr double pi = 3.14159265358979323846;
constexpr double infinity = std::numeric_limits<double>::infinity();

giXform3 operator*(giXform3 const & a, giXform3 const & b) {
    return giXform3(giXformProduct, a, b);
}

giXform3 turn(double radians, giPoint3 const & about = giPoint3(1.0, -2.0, 0.5)) {
    return giXform3(giXformRotate, about, giUnitVec3(1.0, -2.0, 3.0), giAngle(giAngleRadians, radians));
}
giXform3 scale(double x, double y, double z) {
    return giXform3(giXformScale, x, y, z);
}
giXform3 shear(double s) {
    giXform3 x(giXformIdentity);
    giXform3Acc::access(x).set_matrix_value(0, 2, s);
    return x;
}

giPoint3coDynArr feet_of(sknSurfPtr const & surface, giPoint3 const & p, sknSurfPointList * list = nullptr) {
    sknSurfPointList feet(8, 8);
    int status = -1;
    (*surface).project_point(p, feet, status);
    EXPECT_EQ(feet.size() > 0 ? 0 : 1, status);
    giPoint3coDynArr points(feet.size() + 1, 1);
    for (int i = 0; i < feet.size(); ++i) points.append(feet[i].point);
    if (list) *list = feet;
    return points;
}

giUnitVec3 normal_of(sknSurfPtr const & surface, sknSurfPoint const & foot) {
    return (*surface).normal_at(foot, 1e-5, giAngle(giAngleRadians, 1e-5));
}

enum shape { plane, sphere, cylinder, cone, torus };
char const * const shape_names[] = {"plane", "sphere", "cylinder", "cone", "torus"};

// A surface with its points told by two numbers a and b in these ranges, before transforms.
struct model {
    shape kind;
    giPoint3 origin;
    double size;
    giUnitVec3 axis = general_direction();
    double low[2] = {-1.0, -1.0}, high[2] = {1.0, 1.0};

    model(shape k, placement const & at) : kind(k), origin(general_point(at.offset)), size(at.size) {
        if (kind == sphere) axis = giAxisZ;
        if (kind != plane) {
            low[0] = -pi;
            high[0] = pi;
        }
        if (kind == torus) {
            low[1] = -pi;
            high[1] = pi;
        }
        if (kind == sphere) {  // at the poles a tells nothing
            low[1] = -1.55;
            high[1] = 1.55;
        }
        if (kind == cone) low[1] = 0.1;
    }

    giPoint3 place(double a, double b) const {
        giVector3 const u = axis.any_normal(), v = axis.cross(u), e = std::cos(a) * u + std::sin(a) * v;
        if (kind == plane) return origin + size * (a * u + b * (0.3 * u + v));
        if (kind == sphere) return origin + size * (std::cos(b) * e + std::sin(b) * axis);
        if (kind == cylinder) return origin + size * (e + b * axis);
        if (kind == cone) return origin + size * b * (0.7 * e + axis);
        return origin + size * ((1.0 + 0.4 * std::cos(b)) * e + 0.4 * std::sin(b) * axis);
    }

    // The a and b that the parameters of a foot tell.
    void read(sknSurfPoint const & foot, double & a, double & b) const {
        double cu, su, cv, sv;
        datumfit::internal::from_quarter_turns(foot.u, cu, su);
        datumfit::internal::from_quarter_turns(foot.v, cv, sv);
        a = kind == plane ? foot.u : std::atan2(su, cu);
        b = kind == sphere || kind == torus ? std::atan2(sv, cv) : kind == plane ? foot.v : foot.v / size;
    }

    sknSurfPtr make() const {
        giVector3 const u = axis.any_normal(), v = axis.cross(u);
        if (kind == plane) return new sknPlaneSurf(origin, size * u, size * (0.3 * u + v));
        if (kind == sphere) return new sknSphereSurf(origin, size);
        if (kind == cylinder) return new sknCylinderSurf(origin, axis, size, -size, size);
        giAngle const half(giAngleTangent2, 0.7, 1.0);
        if (kind == cone) return new sknConeSurf(origin, -axis, half, 0.1 * size, size);
        return new sknTorusSurf(origin, axis, size, 0.4 * size);
    }

    giVector3 outward(double a, double b) const {
        giVector3 const u = axis.any_normal(), v = axis.cross(u), e = std::cos(a) * u + std::sin(a) * v;
        if (kind == plane) return axis;
        if (kind == cone || kind == cylinder) return e;
        return std::cos(b) * e + std::sin(b) * axis;
    }
};

// Where the gradient of the distance by a and b turns once around the border of a cell of a grid: that holds a
// stationary place, whatever the formulas of the feet say.
giPoint3coDynArr stationary_places(model const & m, giXform3 const & x, giPoint3 const & p, int n) {
    double const da = (m.high[0] - m.low[0]) / n, db = (m.high[1] - m.low[1]) / n, h = 1e-3;
    doublecoDynArr angles((n + 1) * (n + 1), 1);
    for (int j = 0; j <= n; ++j) {
        for (int i = 0; i <= n; ++i) {
            double const a = m.low[0] + i * da, b = m.low[1] + j * db;
            giVector3 const away = x * m.place(a, b) - p;
            double const by_a = away.dot(x * m.place(a + h, b) - x * m.place(a - h, b));
            double const by_b = away.dot(x * m.place(a, b + h) - x * m.place(a, b - h));
            angles.append(std::atan2(by_b, by_a));
        }
    }
    auto const angle = [&](int i, int j) { return angles.read(j * (n + 1) + i); };
    giPoint3coDynArr found(8, 8);
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i < n; ++i) {
            double const corners[] = {angle(i, j), angle(i + 1, j), angle(i + 1, j + 1), angle(i, j + 1), angle(i, j)};
            double turned = 0.0;
            for (int k = 0; k < 4; ++k) turned += std::remainder(corners[k + 1] - corners[k], 2.0 * pi);
            if (std::abs(turned) > pi) found.append(x * m.place(m.low[0] + (i + 0.5) * da, m.low[1] + (j + 0.5) * db));
        }
    }
    return found;
}

struct stretching {
    char const * name;
    giXform3 x;
};
std::vector<stretching> stretchings() {
    return {{"none", giXform3(giXformIdentity)},
            {"similarity", turn(0.8) * scale(-1.7, 1.7, 1.7) * turn(2.1)},
            {"slight", turn(0.3) * scale(1.03, 0.98, 1.0)},
            {"strong", scale(0.6, 1.4, 1.0) * turn(1.1)},
            {"sheared", turn(0.5) * shear(0.7) * scale(1.0, 0.8, 1.3)}};
}

double least_distance(giPoint3 const & p, giPoint3coDynArr const & points) {
    double least = infinity;
    for (int i = 0; i < points.size(); ++i) least = std::min(least, distance(p, points[i]).value());
    return least;
}

class PlacedSurface : public testing::TestWithParam<std::tuple<shape, placement>> {
protected:
    placement const at_ = std::get<1>(GetParam());
    model const model_{std::get<0>(GetParam()), at_};
    // Of coordinates, also of those in between the steps of a transform.
    double const rounding_ = 32.0 * epsilon * (at_.offset + 4.0 * at_.size + 2.0);
    mlRandom random_{5};

    giPoint3 random_point() {
        double const x = random_.minus_one_one(), y = random_.minus_one_one(), z = random_.minus_one_one();
        return model_.origin + 1.5 * at_.size * giVector3(x, y, z);
    }
};

TEST_P(PlacedSurface, FindsAllFeetWithTheirNormals) {
    constexpr int cells = 80;
    double const reach = 8.0 * at_.size / cells;
    for (stretching const & s : stretchings()) {
        SCOPED_TRACE(s.name);
        sknSurfPtr surface = model_.make();
        sknSurf::transform(surface, s.x);
        for (int trial = 0; trial < 8; ++trial) {
            giPoint3 const p = s.x * random_point();
            sknSurfPointList list;
            giPoint3coDynArr const feet = feet_of(surface, p, &list),
                                   expected = stationary_places(model_, s.x, p, cells);
            double last = 0.0;
            int in_sight = 0;
            for (int i = 0; i < feet.size(); ++i) {
                double a, b;
                model_.read(list[i], a, b);
                EXPECT_LE(distance(s.x * model_.place(a, b), feet[i]), rounding_);
                giVector3 const away = p - feet[i];
                giUnitVec3 const n = normal_of(surface, list[i]);
                EXPECT_LE(n.project_normal(away).length(), rounding_);
                EXPECT_GT(n.dot(s.x * model_.outward(a, b)), 0.0);
                EXPECT_GE(away.length(), last - rounding_);
                last = away.length();
                // Where the parameters end, the cells do not quite reach.
                in_sight += least_distance(feet[i], expected) <= reach;
            }
            EXPECT_EQ(expected.size(), in_sight);
            for (int i = 0; i < expected.size(); ++i) EXPECT_LE(least_distance(expected[i], feet), reach);
        }
    }
}

TEST_P(PlacedSurface, MovesWithItsFeetApartFromItsClone) {
    sknSurfPtr const surface = model_.make();
    giXform3 const motion = turn(0.8) * giXform3(giXformTranslate, giVector3(3.0, -2.0, 0.5));
    sknSurfPtr moved, there_and_back;
    (*surface).clone(moved);
    (*surface).clone(there_and_back);
    sknSurf::transform(moved, motion);
    for (int pass = 0; pass < 20; ++pass) {
        sknSurf::transform(there_and_back, scale(0.7, 1.3, 1.0));
        sknSurf::transform(there_and_back, scale(1.0 / 0.7, 1.0 / 1.3, 1.0));
    }
    for (int trial = 0; trial < 20; ++trial) {
        giPoint3 const p = random_point();
        giPoint3coDynArr const feet = feet_of(surface, p), after = feet_of(moved, motion * p),
                               again = feet_of(there_and_back, p);
        ASSERT_EQ(feet.size(), after.size());
        ASSERT_EQ(feet.size(), again.size());
        for (int i = 0; i < feet.size(); ++i) {
            EXPECT_LE(distance(motion * feet[i], after[i]), rounding_);
            EXPECT_LE(distance(feet[i], again[i]), 4.0 * rounding_);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Shapes, PlacedSurface,
                         testing::Combine(testing::Values(plane, sphere, cylinder, cone, torus),
                                          testing::ValuesIn(placements)),
                         [](auto const & shown) {
                             return std::string(shape_names[std::get<0>(shown.param)]) + "_" +
                                    std::get<1>(shown.param).name;
                         });

TEST(BoundedSurface, EndsAtItsRim) {
    giXform3 const far = turn(0.8) * giXform3(giXformTranslate, giVector3(1e5, -3e4, 2e4));
    struct rim {
        sknSurfPtr surface;
        giPoint3 on;
        giVector3 beyond;
    };
    giAngle const half(giAngleDegrees, 45.0);
    rim const rims[] = {
        {new sknPlaneSurf(giPoint3(giOrigin), giVector3(3.0, 0.0, 0.0), giVector3(1.0, 2.0, 0.0)),
         giPoint3(3.5, 1.0, 0.0), giVector3(1.0, 0.0, 0.0)},
        {new sknCylinderSurf(giPoint3(giOrigin), giAxisZ, 2.0, 5.0, -1.0), giPoint3(0.0, 2.0, 5.0), giVector3(giAxisZ)},
        {new sknConeSurf(giPoint3(giOrigin), -giUnitVec3(giAxisZ), half, 1.0, 4.0), giPoint3(0.0, 4.0, 4.0),
         giVector3(0.0, 1.0, 1.0)}};
    for (rim const & r : rims) {
        for (giXform3 const & x : {giXform3(giXformIdentity), far, far * shear(0.6), far * scale(0.7, 1.3, 1.0)}) {
            sknSurfPtr surface;
            (*r.surface).clone(surface);
            sknSurf::transform(surface, x);
            sknSurfPointList feet;
            ASSERT_LT(0, feet_of(surface, x * r.on, &feet).size());
            EXPECT_LE(distance(x * r.on, feet[0].point), 1e-10);
            giVector3 const n = normal_of(surface, feet[0]);
            for (double const off : {-0.5, 0.0, 0.5}) {
                giPoint3 const inside = x * (r.on - 1e-8 * r.beyond) + off * n, outside = x * (r.on + 1e-8 * r.beyond);
                EXPECT_LE(least_distance(inside, feet_of(surface, inside)), std::abs(off) + 1e-9);
                EXPECT_GT(least_distance(outside + off * n, feet_of(surface, outside + off * n)), std::abs(off) + 0.1);
            }
        }
    }
}

TEST(BoundedSurface, HasNoEndWhereNoneIsTold) {
    sknSurfPtr const wide = new sknPlaneSurf(giPlane(giAxisZ, giPoint3(giOrigin)));
    EXPECT_EQ(0.0, distance(giPoint3(1e9, -1e9, 0.0), feet_of(wide, giPoint3(1e9, -1e9, 3.0))[0]));
    sknSurfPtr const rod = new sknCylinderSurf(giPoint3(giOrigin), giAxisZ, 2.0);
    EXPECT_EQ(2, feet_of(rod, giPoint3(3.0, 0.0, -1e9)).size());
    giAngle const half(giAngleDegrees, 45.0);
    sknSurfPtr const nappe = new sknConeSurf(giPoint3(giOrigin), giAxisZ, half);
    sknSurfPtr const both = new sknConeSurf(giPoint3(giOrigin), giAxisZ, half, -infinity, infinity);
    giPoint3 const below(5e8, 0.0, -1e9), beside(3.0, 0.0, 1.0);
    EXPECT_LE(distance(giPoint3(7.5e8, 0.0, -7.5e8), feet_of(nappe, below)[0]), 1e-6);
    EXPECT_EQ(1, feet_of(nappe, beside).size());
    EXPECT_EQ(2, feet_of(both, beside).size());
}

// All that a point in such a place can ask for: a few feet on the surface, at right angles, each once.
TEST(ReadySurface, ChoosesFeetWhereThereIsAContinuum) {
    giPoint3 const o(0.2, 0.3, -0.4);
    giUnitVec3 const axis = general_direction(), across = axis.any_normal();
    giAngle const half(giAngleRadians, 0.4);
    sknSurfPtr const surfaces[] = {new sknSphereSurf(o, 2.0), new sknCylinderSurf(o, axis, 2.0),
                                   new sknConeSurf(o, axis, half, -infinity, infinity),
                                   new sknTorusSurf(o, axis, 2.0, 0.5)};
    giXform3 const to_axes(giXformLocal, o, axis, across), back(giXformInverse, to_axes);
    for (giXform3 const & x : {giXform3(giXformIdentity), turn(0.3), back * scale(1.2, 1.2, 1.0) * to_axes,
                               back * scale(1.0, 1.0, 1.2) * to_axes, back * scale(1.3, 0.9, 1.0) * to_axes}) {
        for (sknSurfPtr const & made : surfaces) {
            sknSurfPtr surface;
            (*made).clone(surface);
            sknSurf::transform(surface, x);
            for (giPoint3 const & p : {o, o + 0.7 * axis, o - 3.0 * axis, o + 2.0 * across, o + 0.1 * across}) {
                sknSurfPointList feet;
                giPoint3 const q = x * p;
                feet_of(surface, q, &feet);
                EXPECT_LT(0, feet.size());
                EXPECT_GE(8, feet.size());
                for (int i = 0; i < feet.size(); ++i) {
                    giUnitVec3 const n = normal_of(surface, feet[i]);
                    bool const apex = distance(feet[i].point, x * o) < 1e-13;
                    EXPECT_TRUE(apex || n.project_normal(q - feet[i].point).length() <= 1e-14);
                    for (int j = 0; j < i; ++j) EXPECT_GT(distance(feet[i].point, feet[j].point), 1e-9);
                }
            }
        }
    }
    sknSurfPtr const cone = surfaces[2];
    sknSurfPointList feet;
    feet_of(cone, o, &feet);
    EXPECT_TRUE(feet.size() == 1 && normal_of(cone, feet[0]).invalid());
    EXPECT_EQ(0.0, distance(o, feet[0].point));
}

// Off a plane of symmetry feet come in pairs, which a search by one coordinate misses.
TEST(ReadySurface, FindsPairsOfFeetInPlanesOfSymmetry) {
    giPoint3 const o(giOrigin);
    giAngle const half(giAngleDegrees, 45.0);
    sknSurfPtr surfaces[] = {new sknSphereSurf(o, 1.0), new sknCylinderSurf(o, giAxisZ, 1.0),
                             new sknConeSurf(o, giAxisZ, half, -infinity, infinity),
                             new sknTorusSurf(o, giAxisZ, 1.0, 0.5)};
    for (sknSurfPtr & surface : surfaces) sknSurf::transform(surface, scale(1.0, 2.0, 3.0));
    auto const expect_feet = [](sknSurfPtr const & surface, giPoint3 const & p, std::vector<double> const & distances) {
        giPoint3coDynArr const feet = feet_of(surface, p);
        ASSERT_EQ(static_cast<int>(distances.size()), feet.size());
        for (int i = 0; i < feet.size(); ++i) {
            EXPECT_NEAR(distances[static_cast<std::size_t>(i)], distance(p, feet[i]), 1e-14);
        }
    };
    expect_feet(surfaces[0], o, {1.0, 1.0, 2.0, 2.0, 3.0, 3.0});
    expect_feet(surfaces[1], giPoint3(0.0, 0.0, 7.0), {1.0, 1.0, 2.0, 2.0});
    double const aslant = std::sqrt(0.9);
    expect_feet(surfaces[2], giPoint3(1.0, 0.0, 0.0), {aslant, aslant});
    // The tube's ellipse in the plane y = 0 has its foot at x = 1.125 besides those in z = 0.
    double const high = std::sqrt(1.125 * 1.125 + 2.25 * (1.0 - 0.0625));
    expect_feet(surfaces[3], o, {0.5, 0.5, 1.0, 1.0, 1.5, 1.5, high, high, high, high, 3.0, 3.0});
}

TEST(ReadySurface, StaysExactWhenItIsThin) {
    giUnitVec3 const axis = general_direction();
    giPoint3 const o = general_point(1e5);
    giXform3 const x = turn(0.4, o) * scale(1.3, 0.7, 1.0);
    sknSurfPtr surfaces[] = {new sknSphereSurf(o, 1.0), new sknConeSurf(o, axis, giAngle(giAngleRadians, 1e-3)),
                             new sknConeSurf(o, axis, giAngle(giAngleRadians, 1.57))};
    giXform3 const shift(giXformTranslate, o.release());
    sknSurf::transform(surfaces[0], shift * scale(1e-3, 1.0, 30.0) * giXform3(giXformInverse, shift));
    for (sknSurfPtr & surface : surfaces) {
        sknSurf::transform(surface, x);
        for (double const t : {0.1, 1.0, 2.0, 3.0}) {
            giPoint3 const start = x * (o - 20.0 * axis + giVector3(std::cos(t), 3.0 * std::sin(t), 2.0));
            sknSurfPointList feet;
            ASSERT_LT(0, feet_of(surface, start, &feet).size());
            // Off along the normal and back again.
            giUnitVec3 const n = normal_of(surface, feet[0]);
            EXPECT_LE(n.project_normal(start - feet[0].point).length(), 1e-9);
            EXPECT_LE(distance(feet[0].point, feet_of(surface, feet[0].point + 1e-3 * n)[0]), 1e-9);
        }
    }
}

TEST(ReadySurface, ListsFeetAsFarAsItsReach) {
    auto * const sphere = new sknSphereSurf(giPoint3(1.0, 2.0, 3.0), 2.0);
    sknSurfPtr surface(sphere);
    sknSurf::transform(surface, scale(10.0, 10.0, 10.0));  // the reach is a length as it is, not as it was
    giPoint3 const p(10.0, 20.0, 30.0 + 15.0);             // 5 and 35 from its feet
    for (auto const & [reach, feet] : {std::pair<double, int>{29.9, 1}, {30.1, 2}, {0.0, 1}, {-1.0, 2}}) {
        sphere->set_reach(reach);
        sknSurfPtr copy;
        sphere->clone(copy);
        EXPECT_EQ(feet, feet_of(surface, p).size());
        EXPECT_EQ(feet, feet_of(copy, p).size());
    }
}

TEST(ReadySurface, RefusesWhatIsNoSurface) {
    giPoint3 const o(1.0, 2.0, 3.0);
    giUnitVec3 const axis = general_direction();
    double const nan = std::numeric_limits<double>::quiet_NaN();
    giAngle const half(giAngleRadians, 0.4);
    giVector3 const edge(1.0, 2.0, 0.0);
    for (double const bad : {0.0, -1.0, nan, infinity, -infinity}) {
        EXPECT_EQ(1, sknSphereSurf(o, bad).invalid());
        EXPECT_EQ(1, sknCylinderSurf(o, axis, bad).invalid());
        EXPECT_EQ(1, sknTorusSurf(o, axis, bad, 0.5).invalid());
        EXPECT_EQ(1, sknTorusSurf(o, axis, 1.0, bad).invalid());
        EXPECT_EQ(1, sknPlaneSurf(o, edge, bad * edge).invalid());
    }
    EXPECT_EQ(1, sknSphereSurf(giPoint3(), 1.0).invalid());
    EXPECT_EQ(1, sknSphereSurf(giPoint3(0.0, nan, 0.0), 1.0).invalid());
    EXPECT_EQ(1, sknCylinderSurf(o, giUnitVec3(), 1.0).invalid());
    EXPECT_EQ(1, sknCylinderSurf(o, axis, 1.0, 2.0, 2.0).invalid());
    EXPECT_EQ(1, sknCylinderSurf(o, axis, 1.0, nan, 2.0).invalid());
    EXPECT_EQ(1, sknCylinderSurf(o, axis, 1.0, 2.0, nan).invalid());
    EXPECT_EQ(1, sknTorusSurf(o, axis, 1.0, 1.0).invalid());
    EXPECT_EQ(1, sknPlaneSurf(giPlane(giUnitVec3(), o)).invalid());
    for (double const degrees : {0.0, -10.0, 90.0, 120.0, 180.0}) {
        EXPECT_EQ(1, sknConeSurf(o, axis, giAngle(giAngleDegrees, degrees)).invalid());
    }
    EXPECT_EQ(1, sknConeSurf(o, giUnitVec3(), half).invalid());

    giXform3 broken = turn(0.3);
    giXform3Acc::access(broken).set_matrix_value(1, 1, nan);
    for (giXform3 const & x : {giXform3(), scale(1.0, 0.0, 1.0), scale(0.0, 0.0, 0.0),
                               turn(0.3) * scale(1.0, 1.0, 1e-18) * turn(0.3), broken, scale(1.0, infinity, 1.0)}) {
        sknSphereSurf * const sphere = new sknSphereSurf(o, 1.0);
        sknSurfPtr surface(sphere);
        EXPECT_EQ(0, sphere->invalid());
        sknSurfPointList feet;
        feet_of(surface, giPoint3(giOrigin), &feet);
        sknSurf::transform(surface, x);
        sknSurf::transform(surface, giXform3(giXformIdentity));
        EXPECT_EQ(1, sphere->invalid());
        EXPECT_EQ(0, feet_of(surface, giPoint3(giOrigin)).size());
        EXPECT_TRUE(normal_of(surface, feet[0]).invalid());
    }
    sknSurfPtr const surface = new sknSphereSurf(o, 1.0);
    for (giPoint3 const & p : {giPoint3(), giPoint3(nan, 0.0, 0.0), giPoint3(0.0, infinity, 0.0)}) {
        EXPECT_EQ(0, feet_of(surface, p).size());
    }
}

}  // namespace
