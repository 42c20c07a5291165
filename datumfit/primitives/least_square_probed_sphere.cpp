#include <datumfit/primitives/least_square_probed_sphere.h>

#include <datumfit/primitives/one_point.h>
#include <datumfit/primitives/point_sums.h>
#include <datumfit/primitives/probe_radii.h>
#include <datumfit/primitives/round_kernel.h>

using namespace datumfit::internal;
using probed_sphere = round_kernel<3, true>;

sqLeastSquareProbedSphere::sqLeastSquareProbedSphere(giPoint3coDynArr const & points, doublecoDynArr const & radii,
                                                     int inside)
    : sqLeastSquareSphere(points), radii_(signed_radii(radii, inside)) {
    offer_all_points(std::make_unique<lane_model<probed_sphere>>(plain(points), radii_.data(), points.size()),
                     typeid(sqLeastSquareProbedSphere));
}

sqLeastSquareProbedSphere::~sqLeastSquareProbedSphere() = default;

void sqLeastSquareProbedSphere::get_distance_and_gradient(double & d, mlVector & g, int i) const {
    gradient_at_point<probed_sphere>(parameters(), plain(points()) + 3 * i, radii_.read(i), d, g);
    remember_distance(d);
}

void sqLeastSquareProbedSphere::get_distance(double & d, int i) const {
    distance_of_point<probed_sphere>(parameters(), plain(points()) + 3 * i, radii_.read(i), d);
    remember_distance(d);
}
