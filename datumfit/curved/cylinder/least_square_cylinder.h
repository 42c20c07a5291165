#pragma once

#include <datumfit/curved/cylinder/fitted_cylinder.h>
#include <datumfit/primitives/least_square_distance.h>

/// Signed distances of points from a cylinder, a model for mlLevenbergMarquardt.
///
/// The distance of p from the cylinder of radius R about the axis through Q along the unit vector a is
/// |a × (p - Q)| - R: positive outside, in the unit of the coordinates. Parameters: 0 to 2 a point Q of the axis, 3 to
/// 5 its direction, 6 the radius. Five of the seven are independent: the length of the direction and the place of Q
/// along the axis say nothing.
class sqLeastSquareCylinder : public sqLeastSquareDistance3 {
public:
    explicit sqLeastSquareCylinder(giPoint3coDynArr const & points);

    /// Gives the direction unit length (that of length 0 becomes the x axis) and moves the point along the axis to
    /// where it is nearest to the origin. The sense of the axis and the radius stay.
    void normalize_parameters(mlVector & p) const override;

    /// The distance of point i (not checked), and its derivatives by the seven parameters as
    /// sqLeastSquareDistance3::F_G_and_derivatives has them, also within 1e-7 of the axis.
    void get_distance_and_gradient(double & d, mlVector & gradient, int i) const override;
    void get_distance(double & d, int i) const override;

    /// 5.
    int n_independent_parameters() const override;

    /// 1 for the axis point and the radius; for the direction the root of the squares of the points' extent along the
    /// axis and of the radius, since so far does the surface move.
    void parameter_scales(mlVector & scales) const override;
    ~sqLeastSquareCylinder() override;

    /// 1 when the axis of the parameters, either way round, lies within `limit` of the preferred direction, if that is
    /// set, and the normals, if there are any, within `limit` of the directions from the axis to their points: all of
    /// these or all reversed. Else 0. A point on the axis agrees with any normal. There is one normal for each point.
    static int are_normals_in_limit(giPoint3coDynArr const & points, giAngle const & limit,
                                    giUnitVec3 const & preferred_dir, giUnitVec3coDynArr const & normals,
                                    mlVector & parameters);

    /// Appends a fit to the results unless it coincides with one of them: the first one found stands.
    static void add_distinct_result(sqFittedCylinder const & fit, double tolerance, giAngle angle_tolerance,
                                    sqFittedCylindercoDynArr & results);

protected:
    /// The axis and the radius of the current parameters.
    giPoint3 axis_point() const;
    giUnitVec3 axis_dir() const;
    double radius() const { return parameters()[6]; }
};
