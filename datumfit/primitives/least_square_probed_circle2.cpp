#include <datumfit/primitives/least_square_probed_circle2.h>

#include <datumfit/primitives/one_point.h>
#include <datumfit/primitives/point_sums.h>
#include <datumfit/primitives/probe_radii.h>
#include <datumfit/primitives/round_kernel.h>

using namespace datumfit::internal;
using probed_circle = round_kernel<2, true>;

sqLeastSquareProbedCircle2::sqLeastSquareProbedCircle2(giPoint2coDynArr const & points, doublecoDynArr const & radii,
                                                       int inside)
    : sqLeastSquareCircle2(points), radii_(signed_radii(radii, inside)) {
    offer_all_points(std::make_unique<lane_model<probed_circle>>(plain(points), radii_.data(), points.size()),
                     typeid(sqLeastSquareProbedCircle2));
}

sqLeastSquareProbedCircle2::~sqLeastSquareProbedCircle2() = default;

void sqLeastSquareProbedCircle2::normalize_parameters(mlVector &) const {}

void sqLeastSquareProbedCircle2::get_distance_and_gradient(double & d, mlVector & g, int i) const {
    gradient_at_point<probed_circle>(parameters(), plain(points()) + 2 * i, radii_.read(i), d, g);
    remember_distance(d);
}

void sqLeastSquareProbedCircle2::get_distance(double & d, int i) const {
    distance_of_point<probed_circle>(parameters(), plain(points()) + 2 * i, radii_.read(i), d);
    remember_distance(d);
}
