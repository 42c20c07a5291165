#include <datumfit/primitives/least_square_probed_line2.h>

#include <datumfit/primitives/flat_kernel.h>
#include <datumfit/primitives/one_point.h>
#include <datumfit/primitives/point_sums.h>
#include <datumfit/primitives/probe_radii.h>

using namespace datumfit::internal;
using line = flat_kernel<2>;

sqLeastSquareProbedLine2::sqLeastSquareProbedLine2(giPoint2coDynArr const & points, doublecoDynArr const & radii,
                                                   int inside)
    : sqLeastSquareDistance2(line::parameters, points), radii_(signed_radii(radii, inside)) {
    offer_all_points(std::make_unique<lane_model<line>>(plain(points), radii_.data(), points.size()),
                     typeid(sqLeastSquareProbedLine2));
}

sqLeastSquareProbedLine2::~sqLeastSquareProbedLine2() = default;

void sqLeastSquareProbedLine2::normalize_parameters(mlVector & p) const {
    line::normalize(p);
}

void sqLeastSquareProbedLine2::get_distance_and_gradient(double & d, mlVector & g, int i) const {
    gradient_at_point<line>(parameters(), plain(points()) + 2 * i, radii_.read(i), d, g);
    remember_distance(d);
}

void sqLeastSquareProbedLine2::get_distance(double & d, int i) const {
    distance_of_point<line>(parameters(), plain(points()) + 2 * i, radii_.read(i), d);
    remember_distance(d);
}
