#pragma once

#include <datumfit/primitives/least_square_distance.h>

/// Signed distances of points in the plane from a circle, a model for mlLevenbergMarquardt.
///
/// The distance of p from the circle of centre C and radius R is |p - C| - R: positive outside, in the unit of the
/// coordinates. Parameters: 0 and 1 the centre, 2 the radius; all three are independent. Orthogonal distances (Gander,
/// Golub & Strebel 1994), not algebraic ones, whose circles come out too small on short arcs.
class sqLeastSquareCircle2 : public sqLeastSquareDistance2 {
public:
    explicit sqLeastSquareCircle2(giPoint2coDynArr const & points);

    /// Does nothing: a centre and a radius are unique as they are.
    void normalize_parameters(mlVector & p) const override;

    /// The distance of point i (not checked), and its derivatives by the three parameters. Within 1e-7 of the centre,
    /// where the direction to the point is lost, the first two are 0.
    void get_distance_and_gradient(double & d, mlVector & g, int i) const override;
    void get_distance(double & d, int i) const override;
    ~sqLeastSquareCircle2() override;
};
