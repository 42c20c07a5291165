#pragma once

#include <datumfit/primitives/least_square_circle2.h>

/// Signed distances from a circle of points that stand off it by a probe radius each.
///
/// With r the signed radius of the probe, the distance is |p - C| + r - R. Probe centres inside the circle have r above
/// 0, those outside below.
class sqLeastSquareProbedCircle2 : public sqLeastSquareCircle2 {
public:
    /// Copies the radii, one for each point at least; with `inside` 0 the copy is negated.
    sqLeastSquareProbedCircle2(giPoint2coDynArr const & points, doublecoDynArr const & radii, int inside);

    void normalize_parameters(mlVector & p) const override;
    void get_distance_and_gradient(double & d, mlVector & g, int i) const override;
    void get_distance(double & d, int i) const override;
    ~sqLeastSquareProbedCircle2() override;

private:
    doublecoDynArr radii_;
};
