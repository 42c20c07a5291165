#include <datumfit/curved/torus/least_square_torus.h>

#include <datumfit/curved/torus/torus_kernel.h>
#include <datumfit/primitives/probe_radii.h>

#include <cmath>

using namespace datumfit::internal;

namespace {
// A point nearer to the tube's centre circle than this has no direction from it.
constexpr double on_the_circle = 1e-7;
}  // namespace

sqLeastSquareTorus::sqLeastSquareTorus(giPoint3coDynArr const & points, doublecoDynArr const & radii, int inside)
    : sqLeastSquareDistance3(torus_kernel<false>::parameters, points), radii_(signed_radii(radii, inside)) {
    offer_all_points(radii_.size() != 0 ? model_about_mean<torus_kernel<true>>(points, radii_.data())
                                        : model_about_mean<torus_kernel<false>>(points, nullptr),
                     typeid(sqLeastSquareTorus));
}

sqLeastSquareTorus::~sqLeastSquareTorus() = default;

void sqLeastSquareTorus::normalize_parameters(mlVector & p) const {
    for (int k = p.dimension(); k < n_parameters(); ++k) p[k] = 0.0;
    torus_kernel<false>::normalize(p);
}

void sqLeastSquareTorus::get_distance_and_gradient(double & d, mlVector & gradient, int i) const {
    double f, g;
    mlVector df(mlVectorDim, 6), dg(mlVectorDim, 6);
    F_G_and_derivatives(centre(), axis_dir(), points()[i], g, dg, f, df);
    double const a = f - major();
    double const q = std::sqrt(a * a + g * g);
    bool const has_direction = q > on_the_circle;
    for (int k = 0; k < 6; ++k) gradient[k] = has_direction ? (a * df[k] + g * dg[k]) / q : 0.0;
    gradient[6] = has_direction ? -a / q : -1.0;
    gradient[7] = -1.0;
    d = q - minor() + probe_radius(i);
    remember_distance(d);
}

void sqLeastSquareTorus::get_distance(double & d, int i) const {
    giPoint3 const c = centre();
    giUnitVec3 const u = axis_dir();
    double const a = F(c, u, points()[i]) - major();
    double const g = G(c, u, points()[i]);
    d = std::sqrt(a * a + g * g) - minor() + probe_radius(i);
    remember_distance(d);
}

int sqLeastSquareTorus::n_independent_parameters() const {
    return n_parameters() - 1;
}

void sqLeastSquareTorus::parameter_scales(mlVector & scales) const {
    double const l = std::sqrt(2.0 * minor() * minor() + major() * major());
    scales.clear(0);
    for (int k = 0; k < n_parameters(); ++k) scales[k] = k >= 3 && k < 6 ? l : 1.0;
}

giPoint3 sqLeastSquareTorus::centre() const {
    return giPoint3(parameters()[0], parameters()[1], parameters()[2]);
}

giUnitVec3 sqLeastSquareTorus::axis_dir() const {
    return giUnitVec3(parameters()[3], parameters()[4], parameters()[5]);
}
