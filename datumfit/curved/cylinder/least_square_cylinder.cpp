#include <datumfit/curved/cylinder/least_square_cylinder.h>

#include <datumfit/curved/axis_limits.h>
#include <datumfit/curved/cylinder/cylinder_kernel.h>

#include <algorithm>
#include <cmath>

using namespace datumfit::internal;
using cylinder = cylinder_kernel<false>;

sqLeastSquareCylinder::sqLeastSquareCylinder(giPoint3coDynArr const & points)
    : sqLeastSquareDistance3(cylinder::parameters, points) {
    offer_all_points(model_about_mean<cylinder>(points, nullptr), typeid(sqLeastSquareCylinder));
}

sqLeastSquareCylinder::~sqLeastSquareCylinder() = default;

void sqLeastSquareCylinder::normalize_parameters(mlVector & p) const {
    for (int k = p.dimension(); k < cylinder::parameters; ++k) p[k] = 0.0;
    axis_frame::normalize(p);
}

void sqLeastSquareCylinder::get_distance_and_gradient(double & d, mlVector & gradient, int i) const {
    double f, g;
    mlVector df(mlVectorDim, 6), dg(mlVectorDim, 6);
    F_G_and_derivatives(axis_point(), axis_dir(), points()[i], g, dg, f, df);
    for (int k = 0; k < 6; ++k) gradient[k] = df[k];
    gradient[6] = -1.0;
    d = f - radius();
    remember_distance(d);
}

void sqLeastSquareCylinder::get_distance(double & d, int i) const {
    d = F(axis_point(), axis_dir(), points()[i]) - radius();
    remember_distance(d);
}

int sqLeastSquareCylinder::n_independent_parameters() const {
    return n_parameters() - 2;
}

void sqLeastSquareCylinder::parameter_scales(mlVector & scales) const {
    giPoint3 const q = axis_point();
    giUnitVec3 const a = axis_dir();
    double smallest = 0.0, largest = 0.0;
    for (int i = 0; i < points().size(); ++i) {
        double const g = G(q, a, points()[i]);
        smallest = i == 0 ? g : std::min(smallest, g);
        largest = i == 0 ? g : std::max(largest, g);
    }
    double const extent = largest - smallest;
    double const l = std::sqrt(extent * extent + radius() * radius());
    scales.clear(0);
    for (int k = 0; k < cylinder::parameters; ++k) scales[k] = k >= 3 && k < 6 ? l : 1.0;
}

int sqLeastSquareCylinder::are_normals_in_limit(giPoint3coDynArr const & points, giAngle const & limit,
                                                giUnitVec3 const & preferred_dir, giUnitVec3coDynArr const & normals,
                                                mlVector & parameters) {
    giPoint3 const q(parameters[0], parameters[1], parameters[2]);
    giUnitVec3 const a(parameters[3], parameters[4], parameters[5]);
    return surface_in_limits(points, limit, preferred_dir, normals, a,
                             [&](giPoint3 const & p) { return giUnitVec3(a.project_normal(p - q)); });
}

void sqLeastSquareCylinder::add_distinct_result(sqFittedCylinder const & fit, double tolerance, giAngle angle_tolerance,
                                                sqFittedCylindercoDynArr & results) {
    append_distinct(fit, tolerance, angle_tolerance, results);
}

giPoint3 sqLeastSquareCylinder::axis_point() const {
    return giPoint3(parameters()[0], parameters()[1], parameters()[2]);
}

giUnitVec3 sqLeastSquareCylinder::axis_dir() const {
    return giUnitVec3(parameters()[3], parameters()[4], parameters()[5]);
}
