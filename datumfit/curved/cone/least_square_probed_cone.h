#pragma once

#include <datumfit/curved/cone/least_square_cone.h>

/// Signed distances of probed surface points from a cone, from the probe centres and radii.
///
/// As sqLeastSquareCone, with the signed probe radius added to the distance; the derivatives are the same.
class sqLeastSquareProbedCone : public sqLeastSquareCone {
public:
    /// Copies the radii, one for each point at least. With `inside` not 0 the probe centres lie within the cone, as in
    /// a countersink: the surface is one probe radius further from the axis than the centre. With 0 they lie around it.
    sqLeastSquareProbedCone(giPoint3coDynArr const & points, doublecoDynArr const & radii, int inside);

    void normalize_parameters(mlVector & p) const override;
    void get_distance_and_gradient(double & d, mlVector & gradient, int i) const override;
    void get_distance(double & d, int i) const override;
    ~sqLeastSquareProbedCone() override;

private:
    doublecoDynArr radii_;
};
