#include "align3d/test_surfaces.h"

#include <datumfit/align3d/surf_projector_for_fitting3.h>
#include <datumfit/align3d/surface_bestfit.h>
#include <datumfit/align3d/surface_maxi_min_fit.h>
#include <datumfit/foundation/maths/constrained_quadratic_minimiser.h>
#include <gtest/gtest.h>

using namespace align3d_tests;

namespace {

struct Fit {
    rectangles surface;
    sqSurfProjectorForFitting3 projector{surface};
    sqSurfaceMaxiMinFit fit{&projector};
    giXform3 x;
    double distance = -1.0, smallest = -1.0, largest = -1.0;
    int invalid = -1;

    explicit Fit(rectangles const & nominal) : surface(nominal) {}
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

// Whether some small motion raises the smallest deviation by more than `gain`, feet and normals staying.
bool can_be_raised(sqProjectedPoint3coDynArr const & cloud, double smallest, double gain) {
    mlMatrix rows(cloud.size(), 6);
    mlVector values(mlVectorDim, cloud.size()), motion(mlVectorZero, 6);
    for (int i = 0; i < cloud.size(); ++i) {
        giVector3 const & n = cloud[i].nominal_normal();
        giVector3 const c = cloud[i].measured_point().release().cross(n);
        double const row[] = {n.x(), n.y(), n.z(), c.x(), c.y(), c.z()};
        std::copy_n(row, 6, rows.row_data(i));
        values[i] = smallest + gain - cloud[i].signed_distance();
    }
    return mlConstrainedQuadraticMinimiser(rows, values, 0).stage1(motion) == 1;
}

sqProjectedPoint3coDynArr with_normals(std::vector<giUnitVec3> const & normals) {
    sqProjectedPoint3coDynArr cloud;
    for (giUnitVec3 const & n : normals) cloud.append(sqProjectedPoint3(giOrigin, giOrigin, n));
    return cloud;
}

}  // namespace

TEST(ExistsSolution, TellsWhetherNormalsHaveACommonSide) {
    giUnitVec3 const x(giAxisX), y(giAxisY), z(giAxisZ);
    EXPECT_EQ(0, exists_solution(with_normals({})));
    EXPECT_EQ(0, exists_solution(with_normals({z, z, z})));
    EXPECT_EQ(1, exists_solution(with_normals({x, -x, y, -y, z, -z})));
    for (double const degrees : {88.99, 89.01}) {  // a cone of this half angle, just around three normals
        giAngle const h(giAngleDegrees, degrees);
        auto const at = [&h](double t) { return giUnitVec3(std::cos(t) * h.sin(), std::sin(t) * h.sin(), h.cos()); };
        EXPECT_EQ(degrees > 89.0, exists_solution(with_normals({at(0.0), at(2.0), at(4.0)})));
    }
    sqProjectedPoint3coDynArr cloud = with_normals({z, -z});
    EXPECT_EQ(1, exists_solution(cloud));
    cloud[1].set_invalid();
    EXPECT_EQ(0, exists_solution(cloud));
}

// The corners of a square, raised in turn by half a unit up and down. Turning takes a tilt away, the saddle stays; all
// is lifted as far as the highest point was.
TEST(SurfaceMaxiMinFit, RaisesPointsOverAPlaneUpToTheHighest) {
    giXform3 const x = motion(giAxisY, 0.02, giVector3(0.0, 0.0, -3.0));
    giVector3 const tilted = x * giVector3(giAxisZ);
    for (bool const is_locked : {false, true}) {
        Fit fit(ground());
        for (int k = 0; k < 4; ++k) {
            fit.add(x * giPoint3(k < 2 ? 10.0 : -10.0, k % 3 ? 10.0 : -10.0, k % 2 ? 0.5 : -0.5), tilted);
        }
        if (is_locked) fit.fit.lock_axis(sqLOCKED_AXIS_DIRECTION, 2.0 * tilted, giAxisZ, giPoint3(), giPoint3());
        fit.run(1e-6);
        EXPECT_NEAR(-3.0 + 0.5 + 0.2 + 0.02, fit.largest, 3e-3);
        EXPECT_NEAR(fit.largest - 1.0, fit.smallest, 1e-5);
        EXPECT_TRUE(fit.smallest == fit.fit.achieved_deviation() && fit.invalid == 0);
        EXPECT_NEAR(0.0, (fit.x * tilted).cross(giAxisZ).length(), is_locked ? 1e-9 : 1e-3);
    }
    // A lock that costs is not followed, and the results are those of the points as measured.
    Fit flat(ground());
    for (double const y : {-10.0, 10.0}) flat.add(giPoint3(y, 0.0, 0.25), giAxisZ);
    flat.fit.lock_axis(sqLOCKED_AXIS_DIRECTION, giAxisZ, tilted, giPoint3(), giPoint3());
    flat.run(1e-6);
    EXPECT_TRUE(flat.x.identity() && flat.smallest == 0.25);
}

TEST(SurfaceMaxiMinFit, CentresAPartInASlot) {
    rectangles slot;
    for (double const side : {1.0, -1.0}) {
        slot.add(giPoint3(10.0 * side, 0.0, 0.0), giAxisY, giUnitVec3(side, 0.0, 0.0), 1e2, 1e2);
    }
    Fit fit(slot);
    for (int k = 0; k < 8; ++k) {
        double const side = k % 2 ? 1.0 : -1.0, y = k % 4 < 2 ? 7.0 : -7.0, z = k < 4 ? 6.0 : -6.0;
        fit.add(giPoint3(side * 10.2 + 0.1, y, z), giUnitVec3(side, 0.0, 0.0), 0.1 + 0.1 * side);
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
    Fit fit(box());
    giXform3 const x = motion(giUnitVec3(1.0, 2.0, 3.0), 0.003, giVector3(0.1, -0.05, 0.08));
    for (sqProbedPoint3 const & p : box_probes(60, 0.0, 0.2)) {
        fit.add(x * p.measured_point(), x * giVector3(p.approximate_normal()));
    }
    fit.run(1e-6);
    EXPECT_EQ(0, fit.invalid);
    EXPECT_GT(fit.smallest, -0.2);
    EXPECT_FALSE(can_be_raised(fit.fit.get_pointcloud(), fit.smallest, 1e-6));
    EXPECT_TRUE(can_be_raised(fit.fit.get_pointcloud(), fit.smallest, -1e-6));
}

TEST(SurfaceMaxiMinFit, TellsExtremesInItsOwnWay) {
    sqProjectedPoint3coDynArr cloud = with_normals({giAxisZ});  // a deviation of 0
    cloud.append(sqProjectedPoint3());
    cloud.append(sqProjectedPoint3(giPoint3(3.0, 0.0, -4.0), giOrigin, giAxisZ));
    auto const figures = [&cloud](auto const & get_parameters) {
        double distance = -1.0, first = -1.0, second = -1.0;
        int invalid = -1, valid = -1;
        get_parameters(cloud, distance, first, second, invalid, valid);
        return std::vector<double>{distance, first, second, double(invalid), double(valid)};
    };
    auto const & own = sqSurfaceMaxiMinFit::get_pointcloud_parameters;
    auto const & of_best_fit = sqSurfaceBestfit::get_pointcloud_parameters;
    EXPECT_EQ((std::vector<double>{5.0, -4.0, 0.0, 1.0, 2.0}), figures(own));
    EXPECT_EQ((std::vector<double>{5.0, 0.0, -4.0, 1.0, 2.0}), figures(of_best_fit));
    cloud[0].set_invalid();
    EXPECT_EQ((std::vector<double>{5.0, -4.0, -4.0, 2.0, 1.0}), figures(own));
    EXPECT_EQ((std::vector<double>{5.0, 0.0, -4.0, 2.0, 1.0}), figures(of_best_fit));
}

TEST(SurfaceMaxiMinFit, IsCalmWithoutPointsOrProjections) {
    Fit empty(ground()), lost{rectangles()}, level(ground());
    empty.run(1e-6);
    empty.fit.add_point(sqFitPoint3coPrf(), 0.0);
    EXPECT_TRUE(empty.fit.nb_points() == 0 && empty.invalid == -1 && empty.x.invalid());

    lost.add(giOrigin, giAxisZ);
    lost.run(0.0);
    EXPECT_TRUE(lost.x.identity() && lost.invalid == 1 && lost.smallest > lost.largest);

    // With no tolerance it still comes to an end, at the place where it was at first.
    for (double const y : {-1.0, 0.0, 2.0}) level.add(giPoint3(y, y * y, 0.3), giAxisZ);
    level.run(0.0);
    EXPECT_NEAR(0.3, level.smallest, 2e-5);
    EXPECT_NEAR(0.3, level.largest, 2e-5);
}
