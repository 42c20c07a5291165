#include <datumfit/curved/cone/least_square_probed_cone.h>

#include <datumfit/curved/axis_frame.h>
#include <datumfit/curved/cone/cone_kernel.h>
#include <datumfit/primitives/probe_radii.h>

using namespace datumfit::internal;

sqLeastSquareProbedCone::sqLeastSquareProbedCone(giPoint3coDynArr const & points, doublecoDynArr const & radii,
                                                 int inside)
    : sqLeastSquareCone(points), radii_(signed_radii(radii, inside)) {
    offer_all_points(model_about_mean<cone_kernel<true>>(points, radii_.data()), typeid(sqLeastSquareProbedCone));
}

sqLeastSquareProbedCone::~sqLeastSquareProbedCone() = default;

void sqLeastSquareProbedCone::normalize_parameters(mlVector & p) const {
    sqLeastSquareCone::normalize_parameters(p);
}

void sqLeastSquareProbedCone::get_distance_and_gradient(double & d, mlVector & gradient, int i) const {
    sqLeastSquareCone::get_distance_and_gradient(d, gradient, i);
    d += radii_.read(i);
    remember_distance(d);
}

void sqLeastSquareProbedCone::get_distance(double & d, int i) const {
    sqLeastSquareCone::get_distance(d, i);
    d += radii_.read(i);
    remember_distance(d);
}
