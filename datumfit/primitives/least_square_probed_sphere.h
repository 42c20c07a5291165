#pragma once

#include <datumfit/primitives/least_square_sphere.h>

/// Signed distances from a sphere of points that stand off it by a probe radius each.
///
/// With r the signed radius of the probe, the distance is |p - C| + r - R. Probe centres inside the sphere have r above
/// 0, those outside below.
class sqLeastSquareProbedSphere : public sqLeastSquareSphere {
public:
    /// Copies the radii, one for each point at least; with `inside` 0 the copy is negated.
    sqLeastSquareProbedSphere(giPoint3coDynArr const & points, doublecoDynArr const & radii, int inside);

    void get_distance_and_gradient(double & d, mlVector & g, int i) const override;
    void get_distance(double & d, int i) const override;
    ~sqLeastSquareProbedSphere() override;

private:
    doublecoDynArr radii_;
};
