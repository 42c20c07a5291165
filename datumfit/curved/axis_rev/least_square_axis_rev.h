#pragma once

#include <datumfit/foundation/geometry/unit_vec3.h>
#include <datumfit/primitives/least_square_distance.h>

class mlLevenbergMarquardt;

/// Signed distances between the normals of points on a surface of revolution and its axis, a model for
/// mlLevenbergMarquardt.
///
/// The lines along the normals of such a surface meet its axis, whatever its profile. The distance of the line through
/// p along n from the axis through Q along a is (p - Q) · w, w the unit vector of n × a, in the unit of the
/// coordinates; its sign changes with the sense of the normal. Parameters: 0 to 2 a point Q of the axis, 3 to 5 its
/// direction. Four of the six are independent: the length of the direction and the place of Q along the axis say
/// nothing.
///
/// A line along the axis counts as meeting it. So normals that are all parallel fit the axis along them, wherever it
/// is, and normals through one place fit every axis through that.
/// Points and normals, one for each point, are referred to: they must outlive the object and stay as they are.
class sqLeastSquareAxisRev : public sqLeastSquareDistance3 {
public:
    sqLeastSquareAxisRev(giPoint3coDynArr const & points, giUnitVec3coDynArr const & normals);

    /// Gives the direction unit length (that of length 0 becomes the x axis) and moves the point along the axis to
    /// where it is nearest to the origin.
    void normalize_parameters(mlVector & p) const override;

    /// The distance of the normal of point i (not checked), and its derivatives by the six parameters. With |n × a| at
    /// most 1e-7 all are 0.
    void get_distance_and_gradient(double & d, mlVector & gradient, int i) const override;
    void get_distance(double & d, int i) const override;

    /// 4.
    int n_independent_parameters() const override;

    /// 1 for the point; for the direction the largest distance of a point from Q.
    void parameter_scales(mlVector & scales) const override;
    ~sqLeastSquareAxisRev() override;

    /// Finds the axis from each of the guess directions in turn, through `point` or, if that is not set, the centroid:
    /// the best one stands, and the search ends at the first mean square distance of 0.01 or less, a number in the
    /// square of the unit in use. `point` is the point of the axis nearest to the origin, `square` the mean square.
    void evaluate(giPoint3 & point, giUnitVec3 & direction, double & square);

    /// The same from one line, through `point` or the centroid along `direction`.
    void evaluate_with_guess(giPoint3 & point, giUnitVec3 & direction, double & square);

private:
    void solve(mlLevenbergMarquardt & solver, giPoint3 & point, giUnitVec3 & direction, double & square);
    giVector3 normal_across(int i) const;
    giVector3 from_axis_point(int i) const;

    giUnitVec3coDynArr const * normals_;
};
