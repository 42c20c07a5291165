#include <datumfit/primitives/least_square_probed_plane.h>

#include <datumfit/primitives/flat_kernel.h>
#include <datumfit/primitives/one_point.h>
#include <datumfit/primitives/point_sums.h>
#include <datumfit/primitives/probe_radii.h>

using namespace datumfit::internal;
using plane = flat_kernel<3>;

sqLeastSquareProbedPlane::sqLeastSquareProbedPlane(giPoint3coDynArr const & points, doublecoDynArr const & radii,
                                                   int inside)
    : sqLeastSquareDistance3(plane::parameters, points), radii_(signed_radii(radii, inside)) {
    offer_all_points(std::make_unique<lane_model<plane>>(plain(points), radii_.data(), points.size()),
                     typeid(sqLeastSquareProbedPlane));
}

sqLeastSquareProbedPlane::~sqLeastSquareProbedPlane() = default;

void sqLeastSquareProbedPlane::normalize_parameters(mlVector & p) const {
    plane::normalize(p);
}

void sqLeastSquareProbedPlane::get_distance_and_gradient(double & d, mlVector & g, int i) const {
    gradient_at_point<plane>(parameters(), plain(points()) + 3 * i, radii_.read(i), d, g);
    remember_distance(d);
}

void sqLeastSquareProbedPlane::get_distance(double & d, int i) const {
    distance_of_point<plane>(parameters(), plain(points()) + 3 * i, radii_.read(i), d);
    remember_distance(d);
}
