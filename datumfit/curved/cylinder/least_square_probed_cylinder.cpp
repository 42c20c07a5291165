#include <datumfit/curved/cylinder/least_square_probed_cylinder.h>

#include <datumfit/curved/axis_frame.h>
#include <datumfit/curved/cylinder/cylinder_kernel.h>
#include <datumfit/primitives/probe_radii.h>

using namespace datumfit::internal;

sqLeastSquareProbedCylinder::sqLeastSquareProbedCylinder(giPoint3coDynArr const & points, doublecoDynArr const & radii,
                                                         int inside)
    : sqLeastSquareCylinder(points), radii_(signed_radii(radii, inside)) {
    offer_all_points(model_about_mean<cylinder_kernel<true>>(points, radii_.data()),
                     typeid(sqLeastSquareProbedCylinder));
}

sqLeastSquareProbedCylinder::~sqLeastSquareProbedCylinder() = default;

void sqLeastSquareProbedCylinder::normalize_parameters(mlVector & p) const {
    sqLeastSquareCylinder::normalize_parameters(p);
}

void sqLeastSquareProbedCylinder::get_distance_and_gradient(double & d, mlVector & gradient, int i) const {
    sqLeastSquareCylinder::get_distance_and_gradient(d, gradient, i);
    d += radii_.read(i);
    remember_distance(d);
}

void sqLeastSquareProbedCylinder::get_distance(double & d, int i) const {
    sqLeastSquareCylinder::get_distance(d, i);
    d += radii_.read(i);
    remember_distance(d);
}
