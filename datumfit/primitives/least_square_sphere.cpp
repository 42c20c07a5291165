#include <datumfit/primitives/least_square_sphere.h>

#include <datumfit/primitives/one_point.h>
#include <datumfit/primitives/point_sums.h>
#include <datumfit/primitives/round_kernel.h>

#include <cmath>

using namespace datumfit::internal;
using sphere = round_kernel<3, false>;

sqLeastSquareSphere::sqLeastSquareSphere(giPoint3coDynArr const & points)
    : sqLeastSquareDistance3(sphere::parameters, points) {
    offer_all_points(std::make_unique<lane_model<sphere>>(plain(points), nullptr, points.size()),
                     typeid(sqLeastSquareSphere));
}

sqLeastSquareSphere::~sqLeastSquareSphere() = default;

void sqLeastSquareSphere::normalize_parameters(mlVector &) const {}

void sqLeastSquareSphere::get_distance_and_gradient(double & d, mlVector & g, int i) const {
    gradient_at_point<sphere>(parameters(), plain(points()) + 3 * i, 0.0, d, g);
    remember_distance(d);
}

void sqLeastSquareSphere::get_distance(double & d, int i) const {
    distance_of_point<sphere>(parameters(), plain(points()) + 3 * i, 0.0, d);
    remember_distance(d);
}

double sqLeastSquareSphere::evaluate_radius(giPoint3 const & centre) const {
    int const n = points().size();
    double sum = 0.0;
    for (int i = 0; i < n; ++i) sum += points()[i].distance(centre).squared();
    return n > 0 ? std::sqrt(sum / n) : 0.0;
}
