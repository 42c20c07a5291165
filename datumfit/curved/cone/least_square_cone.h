#pragma once

#include <datumfit/curved/cone/fitted_cone.h>
#include <datumfit/primitives/least_square_distance.h>

/// Signed distances of points from a cone, a model for mlLevenbergMarquardt.
///
/// The distance of x from the cone about the axis through Q along the unit vector a is g sin h + f cos h - p, with
/// g = (x - Q) · a and f = |a × (x - Q)|: positive outside, in the unit of the coordinates, and along the normal of the
/// straight line in which the plane of x and the axis cuts the surface. Parameters: 0 to 2 a point Q of the axis, 3 to
/// 5 its direction, in which the cone narrows, 6 the distance p of Q from the surface, positive inside, 7 the half
/// angle h in radians. Six of the eight are independent: the length of the direction and the place of Q along the axis
/// say nothing.
///
/// The apex stands at Q + (p / sin h) a. Where the cone becomes a cylinder of radius p, with h 0, or a plane, with h
/// pi / 2, the parameters stay finite and the distances smooth.
class sqLeastSquareCone : public sqLeastSquareDistance3 {
public:
    explicit sqLeastSquareCone(giPoint3coDynArr const & points);

    /// Makes p current; entries that it lacks are 0. To be called before any distance is asked for.
    void set_parameters(mlVector const & p) override;

    /// Gives the direction unit length (that of length 0 becomes the x axis), turns the half angle to [0, pi / 2] with
    /// the direction towards the apex, and moves Q along the axis to where it is nearest to the origin. Where that
    /// swaps inside and outside, the distances change their sign.
    void normalize_parameters(mlVector & p) const override;

    /// The distance of point i (not checked), and its derivatives by the eight parameters, with those of
    /// sqLeastSquareDistance3::F_G_and_derivatives, also within 1e-7 of the axis.
    void get_distance_and_gradient(double & d, mlVector & gradient, int i) const override;
    void get_distance(double & d, int i) const override;

    /// 6.
    int n_independent_parameters() const override;

    /// 1 for Q, the greatest distance of a point from the apex for the direction and the half angle, 1 / sin h for p.
    /// With h 0 those may be infinite.
    void parameter_scales(mlVector & scales) const override;
    ~sqLeastSquareCone() override;

    /// 1 when the axis of the parameters, either way round, lies within `limit` of the preferred direction, if that is
    /// set, and the normals, if there are any, within `limit` of those of the surface (sqGetConeNormal): all of these
    /// or all reversed. Else 0. There is one normal for each point.
    static int are_normals_in_limit(giPoint3coDynArr const & points, giAngle const & limit,
                                    giUnitVec3 const & preferred_dir, giUnitVec3coDynArr const & normals,
                                    mlVector & parameters);

    /// Appends a fit to the results unless it coincides with one of them: the first one found stands.
    static void add_distinct_result(sqFittedCone const & fit, double tolerance, giAngle angle_tolerance,
                                    sqFittedConecoDynArr & results);

private:
    giPoint3 axis_point() const;
    giUnitVec3 axis_dir() const;
    double inset() const { return parameters()[6]; }

    double sin_half_angle_, cos_half_angle_;
    mutable mlVector df_, dg_;
};
