#include "align3d/test_surfaces.h"

#include <datumfit/align3d/surf_projector_for_fitting3.h>
#include <datumfit/align3d/surface_bestfit.h>
#include <datumfit/align3d/surface_maxi_min_fit.h>
#include <datumfit/foundation/maths/constrained_quadratic_minimiser.h>
#include <gtest/gtest.h>

#include <array>
#include <random>

using namespace align3d_tests;

namespace {

struct Fit {
    sqSurfProjectorForFitting3 projector;
    sqSurfaceMaxiMinFit fit{&projector};
    giXform3 x;
    double distance = -1.0, smallest = -1.0, largest = -1.0;
    int invalid = -1;

    explicit Fit(sknSurf const & surface) : projector(surface) {}
    void add(giPoint3 const & centre, giUnitVec3 const & normal, double offset = 0.0) {
        fit.add_point(probed(centre, normal, 0.0), offset);
    }
    void run(double tolerance) { fit.fit(tolerance, x, distance, smallest, largest, invalid); }
};

rectangles ground() {
    rectangles result;
    result.add(giOrigin, giAxisX, giAxisZ, 1e3, 1e3);
    return result;
}

// The corners of a square of half side 10, raised in turn by half a unit up and down, under the given turn.
void add_saddle(Fit & fit, giXform3 const & x) {
    for (int k = 0; k < 4; ++k) {
        giPoint3 const corner(k < 2 ? 10.0 : -10.0, k % 3 ? 10.0 : -10.0, k % 2 ? 0.5 : -0.5);
        fit.add(x * corner, x * giVector3(giAxisZ));
    }
}

// Whether some small motion raises the smallest deviation by more than `gain`, feet and normals staying.
bool can_be_raised(sqProjectedPoint3coDynArr const & cloud, double smallest, double gain) {
    mlMatrix rows(cloud.size(), 6);
    mlVector values(mlVectorDim, cloud.size());
    for (int i = 0; i < cloud.size(); ++i) {
        giVector3 const & n = cloud[i].nominal_normal();
        giVector3 const c = cloud[i].measured_point().release().cross(n);
        double const row[] = {n.x(), n.y(), n.z(), c.x(), c.y(), c.z()};
        for (int j = 0; j < 6; ++j) rows(i, j) = row[j];
        values[i] = smallest + gain - cloud[i].signed_distance();
    }
    mlVector motion(mlVectorZero, 6);
    return mlConstrainedQuadraticMinimiser(rows, values, 0).stage1(motion) == 1;
}

sqProjectedPoint3coDynArr with_normals(std::vector<giUnitVec3> const & normals) {
    sqProjectedPoint3coDynArr cloud;
    for (giUnitVec3 const & n : normals) cloud.append(sqProjectedPoint3(giOrigin, giOrigin, n));
    return cloud;
}

// Three normals that just fit in a cone of this half angle.
sqProjectedPoint3coDynArr cone_of(double degrees) {
    giAngle const h(giAngleDegrees, degrees);
    auto const at = [&h](double t) { return giUnitVec3(std::cos(t) * h.sin(), std::sin(t) * h.sin(), h.cos()); };
    return with_normals({at(0.0), at(2.0), at(4.0)});
}

}  // namespace

TEST(ExistsSolution, TellsWhetherNormalsHaveACommonSide) {
    giUnitVec3 const x(giAxisX), y(giAxisY), z(giAxisZ);
    EXPECT_EQ(0, exists_solution(with_normals({})));
    EXPECT_EQ(0, exists_solution(with_normals({z, z, z})));
    EXPECT_EQ(1, exists_solution(with_normals({z, -z})));
    EXPECT_EQ(1, exists_solution(with_normals({x, -x, y, -y, z, -z})));
    EXPECT_EQ(0, exists_solution(cone_of(88.99)));
    EXPECT_EQ(1, exists_solution(cone_of(89.01)));
    sqProjectedPoint3coDynArr cloud = with_normals({z, -z});
    cloud[1].set_invalid();
    EXPECT_EQ(0, exists_solution(cloud));
}

TEST(SurfaceMaxiMinFit, RaisesPointsOverAPlaneUpToTheHighest) {
    rectangles const plane = ground();
    Fit fit(plane);
    add_saddle(fit, motion(giAxisY, 0.02, giVector3(0.0, 0.0, -3.0)));
    fit.run(1e-6);
    // Turning takes the tilt away, the saddle stays; all is lifted as far as the highest point was.
    EXPECT_NEAR(-3.0 + 0.5 + 0.2 + 0.02, fit.largest, 3e-3);
    EXPECT_NEAR(fit.largest - 1.0, fit.smallest, 1e-5);
    EXPECT_EQ(fit.smallest, fit.fit.achieved_deviation());
    EXPECT_EQ(0, fit.invalid);
}

TEST(SurfaceMaxiMinFit, CentresAPartInASlot) {
    rectangles slot;
    Fit fit(slot);
    for (double const side : {1.0, -1.0}) {
        giUnitVec3 const outwards(side, 0.0, 0.0);
        slot.add(giPoint3(10.0 * side, 0.0, 0.0), giAxisY, outwards, 1e2, 1e2);
        for (double const y : {-7.0, 7.0}) {
            for (double const z : {-6.0, 6.0}) fit.add(giPoint3(side * 10.2 + 0.1, y, z), outwards, 0.1 + 0.1 * side);
        }
    }
    fit.run(1e-7);
    EXPECT_NEAR(0.2, fit.smallest, 1e-7);
    // The offset of one side takes 0.2 from the 0.4 that both have.
    fit.fit.respect_tols(1);
    fit.run(1e-7);
    EXPECT_NEAR(0.1, fit.fit.achieved_deviation(), 1e-7);
    EXPECT_NEAR(0.1, fit.smallest, 1e-7);
    EXPECT_NEAR(0.3, fit.largest, 1e-7);
}

TEST(SurfaceMaxiMinFit, LeavesNoMotionThatRaisesTheWorstPoint) {
    rectangles const block = box(30.0, 20.0, 12.0);
    Fit fit(block);
    std::mt19937_64 engine(11);
    giXform3 const x = motion(giUnitVec3(1.0, 2.0, 3.0), 0.003, giVector3(0.1, -0.05, 0.08));
    for (std::size_t k = 0; k < 60; ++k) {
        auto const uniform = [&] { return static_cast<double>(engine() >> 11) * 0x1p-52 - 1.0; };
        std::array<double, 3> p = {27.0 * uniform(), 18.0 * uniform(), 10.0 * uniform()}, n = {};
        n.at(k % 3) = k % 2 ? 1.0 : -1.0;
        p.at(k % 3) = n.at(k % 3) * (std::array<double, 3>{30.0, 20.0, 12.0}.at(k % 3) + 0.2 * uniform());
        fit.add(x * giPoint3(p[0], p[1], p[2]), x * giVector3(n[0], n[1], n[2]));
    }
    fit.run(1e-6);
    EXPECT_EQ(0, fit.invalid);
    EXPECT_GT(fit.smallest, -0.2);
    EXPECT_FALSE(can_be_raised(fit.fit.get_pointcloud(), fit.smallest, 1e-6));
    EXPECT_TRUE(can_be_raised(fit.fit.get_pointcloud(), fit.smallest, -1e-6));
}

TEST(SurfaceMaxiMinFit, BringsALockedDirectionHome) {
    rectangles const plane = ground();
    Fit fit(plane);
    giXform3 const tilt = motion(giAxisY, 0.1, giVector3(0.0, 0.0, 0.0));
    add_saddle(fit, tilt);
    giVector3 const from = tilt * giVector3(giAxisZ);
    fit.fit.lock_axis(sqLOCKED_AXIS_DIRECTION, 2.0 * from, giAxisZ, giPoint3(), giPoint3());
    fit.run(1e-6);
    EXPECT_NEAR(0.0, (fit.x * from).cross(giAxisZ).length(), 1e-9);
    EXPECT_NEAR(fit.largest - 1.0, fit.smallest, 1e-5);
    EXPECT_GT(fit.largest, 1.4);  // the highest point was at 1.5 and more

    // A lock that costs is not followed, and the results are those of the points as measured.
    Fit flat(plane);
    for (double const y : {-10.0, 10.0}) flat.add(giPoint3(y, 0.0, 0.25), giAxisZ);
    flat.fit.lock_axis(sqLOCKED_AXIS_DIRECTION, giAxisZ, from, giPoint3(), giPoint3());
    flat.run(1e-6);
    EXPECT_TRUE(flat.x.identity());
    EXPECT_EQ(0.25, flat.smallest);
}

TEST(SurfaceMaxiMinFit, TellsExtremesInItsOwnWay) {
    sqProjectedPoint3coDynArr cloud = with_normals({giAxisZ});  // a deviation of 0
    cloud.append(sqProjectedPoint3());
    cloud.append(sqProjectedPoint3(giPoint3(3.0, 0.0, -4.0), giOrigin, giAxisZ));
    double distance = -1.0, first = -1.0, second = -1.0;
    int invalid = -1, valid = -1;
    sqSurfaceMaxiMinFit::get_pointcloud_parameters(cloud, distance, first, second, invalid, valid);
    EXPECT_EQ((std::array<double, 5>{5.0, -4.0, 0.0, 1.0, 2.0}),
              (std::array<double, 5>{distance, first, second, double(invalid), double(valid)}));
    sqSurfaceBestfit::get_pointcloud_parameters(cloud, distance, first, second, invalid, valid);
    EXPECT_EQ((std::array<double, 5>{5.0, 0.0, -4.0, 1.0, 2.0}),
              (std::array<double, 5>{distance, first, second, double(invalid), double(valid)}));
    cloud[0].set_invalid();
    sqSurfaceMaxiMinFit::get_pointcloud_parameters(cloud, distance, first, second, invalid, valid);
    EXPECT_EQ(-4.0, second);
    sqSurfaceBestfit::get_pointcloud_parameters(cloud, distance, first, second, invalid, valid);
    EXPECT_EQ(0.0, first);
}

TEST(SurfaceMaxiMinFit, IsCalmWithoutPointsOrProjections) {
    rectangles const nothing, plane = ground();
    Fit empty(plane);
    empty.run(1e-6);
    empty.fit.add_point(sqFitPoint3coPrf(), 0.0);
    EXPECT_EQ(0, empty.fit.nb_points());
    EXPECT_EQ(-1, empty.invalid);
    EXPECT_TRUE(empty.x.invalid());

    Fit lost(nothing);
    lost.add(giOrigin, giAxisZ);
    lost.run(0.0);
    EXPECT_TRUE(lost.x.identity());
    EXPECT_EQ(1, lost.invalid);
    EXPECT_GT(lost.smallest, lost.largest);

    // With no tolerance it still comes to an end, at the place where it was at first.
    Fit level(plane);
    for (double const y : {-1.0, 0.0, 2.0}) level.add(giPoint3(y, y * y, 0.3), giAxisZ);
    level.run(0.0);
    EXPECT_NEAR(0.3, level.smallest, 2e-5);
    EXPECT_NEAR(0.3, level.largest, 2e-5);
}
