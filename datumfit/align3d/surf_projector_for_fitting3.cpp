#include <datumfit/align3d/surf_projector_for_fitting3.h>

#include <cmath>
#include <limits>

namespace {

// Nearer to its foot than this, in the unit of the coordinates, a probe centre gives no direction to be trusted.
constexpr double on_surface = 1e-4;

// The greatest sine of the angle between the normal at a foot and the direction to the centre.
constexpr double greatest_tilt = 0.01;

// How exact the surface's normals have to be, in length and in radians.
constexpr double normal_tolerance = 1e-5;

// Room for the feet of one point on common surfaces, and for those of a point amid many facets.
constexpr int few_feet = 8, more_feet = 64;

// A probe centre as it lies now, with the side of the surface that it was taken from.
struct moved_probe {
    giPoint3 centre;
    giVector3 side;  // only its signs along normals count
    double radius;
};

// The normal to measure along at a foot, and n . v, the centre's place along it: that of a unit vector where there is
// one. false when the centre does not lie over the foot.
bool orient(moved_probe const & probe, giPoint3 const & foot, giUnitVec3 & n, double & n_v) {
    giVector3 const v = probe.centre - foot;
    if (v.length() < on_surface) {
        if (probe.side.dot(n) < 0.0) n = -n;
        n_v = n.dot(v);
        return true;
    }
    giUnitVec3 const direction(v);
    if (n.cross(direction).length() > greatest_tilt) return false;
    // n is v or -v, and n . v is 1 or -1 to the last bit: rounding does not tell feet apart that are equally good.
    bool const same_side = probe.side.dot(direction) > 0.0;
    n = same_side ? direction : -direction;
    n_v = same_side ? 1.0 : -1.0;
    return true;
}

}  // namespace

sqSurfProjectorForFitting3::~sqSurfProjectorForFitting3() = default;

void sqSurfProjectorForFitting3::rotate_and_project(giXform3 const & x, sqProbedPoint3 const * point,
                                                    sqProjectedPoint3 & result) const {
    static giAngle const angle_tolerance(giAngleRadians, normal_tolerance);
    giVector3 const & normal = point->approximate_normal();
    moved_probe const probe{x * point->measured_point(), x * normal, point->radius()};
    result = sqProjectedPoint3();
    if (probe.centre.invalid() || probe.side.invalid()) return;

    sknSurfPointList feet(few_feet, more_feet);
    int status = 0;
    surface_->project_point(probe.centre, feet, status);
    double least = std::numeric_limits<double>::max();
    for (int i = 0; i < feet.size(); ++i) {
        sknSurfPoint const & foot = feet.read(i);
        giUnitVec3 n = surface_->normal_at(foot, normal_tolerance, angle_tolerance);
        double n_v = 0.0;
        if (n.invalid() || !orient(probe, foot.point, n, n_v)) continue;
        double const misfit = std::abs(n_v - probe.radius);
        if (misfit < least) {
            least = misfit;
            result = sqProjectedPoint3(probe.centre, foot.point + probe.radius * n, n);
        }
    }
}
