#pragma once

#include <datumfit/curved/cylinder/least_square_cylinder.h>

/// Signed distances of probed surface points from a cylinder, from the probe centres and radii.
///
/// As sqLeastSquareCylinder, with the signed probe radius added to the distance; the derivatives are the same.
class sqLeastSquareProbedCylinder : public sqLeastSquareCylinder {
public:
    /// Copies the radii, one for each point at least. With `inside` not 0 the probe centres lie within the cylinder, as
    /// in a bore: the surface is one probe radius further from the axis than the centre. With 0 they lie around it.
    sqLeastSquareProbedCylinder(giPoint3coDynArr const & points, doublecoDynArr const & radii, int inside);

    void normalize_parameters(mlVector & p) const override;
    void get_distance_and_gradient(double & d, mlVector & gradient, int i) const override;
    void get_distance(double & d, int i) const override;
    ~sqLeastSquareProbedCylinder() override;

private:
    doublecoDynArr radii_;
};
