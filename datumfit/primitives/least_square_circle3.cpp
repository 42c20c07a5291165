#include <datumfit/primitives/least_square_circle3.h>

#include <datumfit/primitives/point_sums.h>
#include <datumfit/primitives/ring_kernel.h>

#include <cmath>

using namespace datumfit::internal;

namespace {
// A point nearer to the circle than this has no direction to it that could be told from rounding.
constexpr double on_the_circle = 1e-7;
}  // namespace

sqLeastSquareCircle3::sqLeastSquareCircle3(giPoint3coDynArr const & points)
    : sqLeastSquareDistance3(ring_kernel::parameters, points), last_square_distance_(0.0) {
    set_norm_distance(1);
    offer_all_points(std::make_unique<lane_model<ring_kernel>>(plain(points), nullptr, points.size()),
                     typeid(sqLeastSquareCircle3));
}

sqLeastSquareCircle3::~sqLeastSquareCircle3() = default;

void sqLeastSquareCircle3::normalize_parameters(mlVector & p) const {
    ring_kernel::normalize(p);
}

void sqLeastSquareCircle3::get_distance_and_gradient(double & d, mlVector & gradient, int i) const {
    double f, g;
    mlVector df(mlVectorDim, 6), dg(mlVectorDim, 6);
    F_G_and_derivatives(centre(), normal(), points()[i], g, dg, f, df);
    double const a = f - radius();
    last_square_distance_ = a * a + g * g;
    d = std::sqrt(last_square_distance_);
    bool const has_direction = d > on_the_circle;
    for (int k = 0; k < 6; ++k) gradient[k] = has_direction ? (a * df[k] + g * dg[k]) / d : 0.0;
    gradient[6] = has_direction ? -a / d : -1.0;
}

void sqLeastSquareCircle3::get_distance(double & d, int i) const {
    giPoint3 const c = centre();
    giUnitVec3 const u = normal();
    double const a = F(c, u, points()[i]) - radius();
    double const g = G(c, u, points()[i]);
    last_square_distance_ = a * a + g * g;
    d = std::sqrt(last_square_distance_);
}

double sqLeastSquareCircle3::get_last_square_distance() const {
    return last_square_distance_;
}

int sqLeastSquareCircle3::n_independent_parameters() const {
    return n_parameters() - 1;
}

void sqLeastSquareCircle3::parameter_scales(mlVector & s) const {
    s.clear(0);
    for (int k = 0; k < 7; ++k) s[k] = k >= 3 && k < 6 ? radius() : 1.0;
}

giPoint3 sqLeastSquareCircle3::centre() const {
    return giPoint3(parameters()[0], parameters()[1], parameters()[2]);
}

giUnitVec3 sqLeastSquareCircle3::normal() const {
    return giUnitVec3(parameters()[3], parameters()[4], parameters()[5]);
}
