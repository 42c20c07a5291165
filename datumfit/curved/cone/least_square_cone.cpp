#include <datumfit/curved/cone/least_square_cone.h>

#include <datumfit/curved/axis_limits.h>
#include <datumfit/curved/cone/cone_kernel.h>
#include <datumfit/curved/cone/cone_normal.h>

#include <algorithm>
#include <cmath>

using namespace datumfit::internal;
using cone = cone_kernel<false>;

namespace {

void extend(mlVector & p) {
    for (int k = p.dimension(); k < cone::parameters; ++k) p[k] = 0.0;
}

// How far the apex lies from Q along the axis; infinite for a cylinder.
double height_of_apex(double inset, double sine) {
    return inset == 0.0 ? 0.0 : inset / sine;
}

}  // namespace

sqLeastSquareCone::sqLeastSquareCone(giPoint3coDynArr const & points)
    : sqLeastSquareDistance3(cone::parameters, points), sin_half_angle_(0.0), cos_half_angle_(0.0), df_(mlVectorDim, 6),
      dg_(mlVectorDim, 6) {
    offer_all_points(model_about_mean<cone>(points, nullptr), typeid(sqLeastSquareCone));
}

sqLeastSquareCone::~sqLeastSquareCone() = default;

void sqLeastSquareCone::set_parameters(mlVector const & p) {
    if (p.dimension() < cone::parameters) {
        mlVector full(utCopy, p);
        extend(full);
        sqLeastSquareDistance3::set_parameters(full);
    } else {
        sqLeastSquareDistance3::set_parameters(p);
    }
    sin_half_angle_ = std::sin(parameters()[7]);
    cos_half_angle_ = std::cos(parameters()[7]);
}

void sqLeastSquareCone::normalize_parameters(mlVector & p) const {
    extend(p);
    cone::normalize(p);
}

void sqLeastSquareCone::get_distance_and_gradient(double & d, mlVector & gradient, int i) const {
    double f, g;
    F_G_and_derivatives(axis_point(), axis_dir(), points()[i], g, dg_, f, df_);
    for (int k = 0; k < 6; ++k) gradient[k] = sin_half_angle_ * dg_[k] + cos_half_angle_ * df_[k];
    gradient[6] = -1.0;
    gradient[7] = g * cos_half_angle_ - f * sin_half_angle_;
    d = g * sin_half_angle_ + f * cos_half_angle_ - inset();
    remember_distance(d);
}

void sqLeastSquareCone::get_distance(double & d, int i) const {
    giPoint3 const q = axis_point();
    giUnitVec3 const a = axis_dir();
    d = G(q, a, points()[i]) * sin_half_angle_ + F(q, a, points()[i]) * cos_half_angle_ - inset();
    remember_distance(d);
}

int sqLeastSquareCone::n_independent_parameters() const {
    return n_parameters() - 2;
}

void sqLeastSquareCone::parameter_scales(mlVector & scales) const {
    giPoint3 const q = axis_point();
    giUnitVec3 const a = axis_dir();
    double const height = height_of_apex(inset(), sin_half_angle_);
    double from_apex = 0.0;
    for (int i = 0; i < points().size(); ++i) {
        double const f = F(q, a, points()[i]), g = G(q, a, points()[i]) - height;
        from_apex = std::max(from_apex, std::sqrt(f * f + g * g));
    }
    scales.clear(0);
    for (int k = 0; k < cone::parameters; ++k) scales[k] = k < 3 ? 1.0 : from_apex;
    scales[6] = 1.0 / sin_half_angle_;
}

int sqLeastSquareCone::are_normals_in_limit(giPoint3coDynArr const & points, giAngle const & limit,
                                            giUnitVec3 const & preferred_dir, giUnitVec3coDynArr const & normals,
                                            mlVector & parameters) {
    extend(parameters);
    giPoint3 const q(parameters[0], parameters[1], parameters[2]);
    giUnitVec3 const a(parameters[3], parameters[4], parameters[5]);
    giAngle const h(giAngleRadians, parameters[7]);
    double const height = height_of_apex(parameters[6], h.sin());
    return surface_in_limits(points, limit, preferred_dir, normals, a,
                             [&](giPoint3 const & p) { return cone_normal(q, height, a, h, p); });
}

void sqLeastSquareCone::add_distinct_result(sqFittedCone const & fit, double tolerance, giAngle angle_tolerance,
                                            sqFittedConecoDynArr & results) {
    append_distinct(fit, tolerance, angle_tolerance, results);
}

giPoint3 sqLeastSquareCone::axis_point() const {
    return giPoint3(parameters()[0], parameters()[1], parameters()[2]);
}

giUnitVec3 sqLeastSquareCone::axis_dir() const {
    return giUnitVec3(parameters()[3], parameters()[4], parameters()[5]);
}
