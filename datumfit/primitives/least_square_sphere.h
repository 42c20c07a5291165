#pragma once

#include <datumfit/primitives/least_square_distance.h>

/// Signed distances of points from a sphere, a model for mlLevenbergMarquardt.
///
/// The distance of p from the sphere of centre C and radius R is |p - C| - R: positive outside, in the unit of the
/// coordinates. Parameters: 0 to 2 the centre, 3 the radius; all four are independent. Orthogonal distances (Shakarji
/// 1998), not algebraic ones, whose spheres come out too small on short arcs.
class sqLeastSquareSphere : public sqLeastSquareDistance3 {
public:
    explicit sqLeastSquareSphere(giPoint3coDynArr const & points);

    /// Does nothing: a centre and a radius are unique as they are.
    void normalize_parameters(mlVector & p) const override;

    /// The distance of point i (not checked), and its derivatives by the four parameters. Within 1e-7 of the centre,
    /// where the direction to the point is lost, the first three are 0.
    void get_distance_and_gradient(double & d, mlVector & g, int i) const override;
    void get_distance(double & d, int i) const override;
    ~sqLeastSquareSphere() override;

    /// The root of the mean squared distance of the points from a centre: the radius that suits it when squares of
    /// radii are to agree. 0 without points.
    double evaluate_radius(giPoint3 const & centre) const;
};
