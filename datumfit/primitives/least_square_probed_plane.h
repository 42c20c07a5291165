#pragma once

#include <datumfit/primitives/least_square_distance.h>

/// Signed distances of probe centres from a plane, a model for mlLevenbergMarquardt.
///
/// The plane is the set of x with n · x = d. The distance of p is n · p - d - r, r the signed probe radius: the probe
/// centre stands r off the plane on the side to which n points. Parameters: 0 the offset d, 1 to 3 the normal n.
class sqLeastSquareProbedPlane : public sqLeastSquareDistance3 {
public:
    /// Copies the radii, one for each point at least; with `inside` 0 the copy is negated.
    sqLeastSquareProbedPlane(giPoint3coDynArr const & points, doublecoDynArr const & radii, int inside);

    /// Gives the normal length 1; one of length exactly 0 becomes (1, 0, 0). The offset stays.
    void normalize_parameters(mlVector & p) const override;

    /// The distance of point i (not checked), and its derivatives: -1 by the offset, and by the normal that part of p
    /// which is at right angles to it, since only the turn of the normal counts. The normal is taken as it stands.
    void get_distance_and_gradient(double & d, mlVector & g, int i) const override;
    void get_distance(double & d, int i) const override;
    ~sqLeastSquareProbedPlane() override;

private:
    doublecoDynArr radii_;
};
