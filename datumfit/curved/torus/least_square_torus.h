#pragma once

#include <datumfit/primitives/least_square_distance.h>

/// Signed distances of points, or of probed surface points, from a torus, a model for mlLevenbergMarquardt.
///
/// With g the coordinate of a point along the axis from the centre and f its distance from the axis, its distance from
/// the torus of major radius R and minor radius r is |(f - R, g)| - r, plus the signed probe radius: positive outside
/// the tube, in the unit of the coordinates. Parameters: 0 to 2 the centre, 3 to 5 the axis direction, 6 the major and
/// 7 the minor radius. Seven of the eight are independent: the length of the direction says nothing.
class sqLeastSquareTorus : public sqLeastSquareDistance3 {
public:
    /// Copies the radii: one for each point at least, or none for points on the surface. With `inside` not 0 the probe
    /// centres lie within the tube, with 0 around it.
    sqLeastSquareTorus(giPoint3coDynArr const & points, doublecoDynArr const & radii, int inside);

    /// Gives the direction unit length; that of length 0 becomes the x axis. All else stays.
    void normalize_parameters(mlVector & p) const override;

    /// The distance of point i (not checked), and its derivatives by the eight parameters. Within 1e-7 of the tube's
    /// centre circle, where the direction to the point is lost, they are 0 but for -1 by either radius.
    void get_distance_and_gradient(double & d, mlVector & gradient, int i) const override;
    void get_distance(double & d, int i) const override;

    /// 7.
    int n_independent_parameters() const override;

    /// 1 for the centre and the radii, the root of 2 r² + R² for the direction.
    void parameter_scales(mlVector & scales) const override;
    ~sqLeastSquareTorus() override;

private:
    giPoint3 centre() const;
    giUnitVec3 axis_dir() const;
    double major() const { return parameters()[6]; }
    double minor() const { return parameters()[7]; }
    double probe_radius(int i) const { return radii_.size() != 0 ? radii_.read(i) : 0.0; }

    doublecoDynArr radii_;
};
