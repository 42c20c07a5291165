#include <datumfit/primitives/least_square_circle2.h>

#include <datumfit/primitives/one_point.h>
#include <datumfit/primitives/point_sums.h>
#include <datumfit/primitives/round_kernel.h>

using namespace datumfit::internal;
using circle = round_kernel<2, false>;

sqLeastSquareCircle2::sqLeastSquareCircle2(giPoint2coDynArr const & points)
    : sqLeastSquareDistance2(circle::parameters, points) {
    offer_all_points(std::make_unique<lane_model<circle>>(plain(points), nullptr, points.size()),
                     typeid(sqLeastSquareCircle2));
}

sqLeastSquareCircle2::~sqLeastSquareCircle2() = default;

void sqLeastSquareCircle2::normalize_parameters(mlVector &) const {}

void sqLeastSquareCircle2::get_distance_and_gradient(double & d, mlVector & g, int i) const {
    gradient_at_point<circle>(parameters(), plain(points()) + 2 * i, 0.0, d, g);
    remember_distance(d);
}

void sqLeastSquareCircle2::get_distance(double & d, int i) const {
    distance_of_point<circle>(parameters(), plain(points()) + 2 * i, 0.0, d);
    remember_distance(d);
}
