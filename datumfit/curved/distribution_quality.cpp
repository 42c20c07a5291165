#include <datumfit/primitives/least_square_distribution_quality.h>

#include <datumfit/curved/cone/least_square_probed_cone.h>
#include <datumfit/curved/cylinder/least_square_probed_cylinder.h>
#include <datumfit/curved/ellipse/least_square_ellipse.h>
#include <datumfit/curved/torus/least_square_torus.h>
#include <datumfit/primitives/quality_of_model.h>

using namespace datumfit::internal;

namespace {

// What parts measured all over give, about; probed cones and ellipses are not compared with one.
constexpr double whole_cylinder = 0.26;
constexpr double whole_probed_cylinder = 0.177;
constexpr double whole_cone = 0.15;
constexpr double whole_torus = 0.51;

}  // namespace

double sqLeastSquareDistributionQuality::distribution_quality_cylinder(giPoint3coDynArr const & points,
                                                                       giPoint3 const & q, giUnitVec3 const & a,
                                                                       double radius) {
    if (points.size() < fewest_graded_points) return 0.0;
    return quality_of(sqLeastSquareCylinder(points), {q.x(), q.y(), q.z(), a.x(), a.y(), a.z(), radius},
                      whole_cylinder);
}

double sqLeastSquareDistributionQuality::distribution_quality_probed_cylinder(giPoint3coDynArr const & points,
                                                                              doublecoDynArr const & radii, int inside,
                                                                              giPoint3 const & q, giUnitVec3 const & a,
                                                                              double radius) {
    if (points.size() < fewest_graded_points) return 0.0;
    return quality_of(sqLeastSquareProbedCylinder(points, radii, inside),
                      {q.x(), q.y(), q.z(), a.x(), a.y(), a.z(), radius}, whole_probed_cylinder);
}

double sqLeastSquareDistributionQuality::distribution_quality_cone(giPoint3coDynArr const & points, giPoint3 const & q,
                                                                   giUnitVec3 const & a, double half_angle) {
    if (points.size() < fewest_graded_points) return 0.0;
    return quality_of(sqLeastSquareCone(points), {q.x(), q.y(), q.z(), a.x(), a.y(), a.z(), 0.0, half_angle},
                      whole_cone);
}

double sqLeastSquareDistributionQuality::distribution_quality_probed_cone(giPoint3coDynArr const & points,
                                                                          doublecoDynArr const & radii, int inside,
                                                                          giPoint3coDynArr const &, giPoint3 const & q,
                                                                          giUnitVec3 const & a, double half_angle) {
    if (points.size() < fewest_graded_points) return 0.0;
    return quality_of(sqLeastSquareProbedCone(points, radii, inside),
                      {q.x(), q.y(), q.z(), a.x(), a.y(), a.z(), 0.0, half_angle}, 1.0);
}

double sqLeastSquareDistributionQuality::distribution_quality_ellipse(giPoint2coDynArr const & points,
                                                                      giPoint2 const & centre, double a, double b,
                                                                      double theta) {
    if (points.size() < fewest_graded_points) return 0.0;
    return quality_of(sqLeastSquareEllipse(points), {a, b, centre.x(), centre.y(), theta}, 1.0);
}

double sqLeastSquareDistributionQuality::distribution_quality_torus(giPoint3coDynArr const & points, giPoint3 const & c,
                                                                    giUnitVec3 const & a, double major_radius,
                                                                    double minor_radius) {
    if (points.size() < fewest_graded_points) return 0.0;
    return quality_of(sqLeastSquareTorus(points, doublecoDynArr(), 1),
                      {c.x(), c.y(), c.z(), a.x(), a.y(), a.z(), major_radius, minor_radius}, whole_torus);
}
