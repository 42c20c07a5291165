#pragma once

#include <datumfit/primitives/least_square_distance.h>

namespace datumfit {
namespace internal {
class fixed_axis_passes;
}  // namespace internal
}  // namespace datumfit

/// Distances of points from the best cone about an axis of fixed direction, a model for mlLevenbergMarquardt.
///
/// The two parameters are the place (x, y) of the axis in the plane across it. About an axis in that place the heights
/// z of the points along it and their distances r from it are a plane figure, in which the cone is a straight line
/// z = q + k r: the one of least squares of the heights, found in closed form. The distance of a point is z - q - k r,
/// measured along the axis and not across the surface; the derivatives take account of how q and k follow the axis
/// (Golub & Pereyra 1973). So a search over places costs two variables, where the cone itself has six.
class sqLeastSquareConeFixedAxis : public sqLeastSquareDistance3 {
public:
    explicit sqLeastSquareConeFixedAxis(giPoint3coDynArr const & points);

    /// Fixes the direction, a unit vector, and the frame about it. To be called before anything else, and anew for each
    /// direction; then set_parameters(). A vector without direction counts as the z axis.
    void set_axis(giVector3 const & axis);

    /// Makes the place of the axis current and finds the line. Where all points have one distance from the axis (their
    /// distances' squared deviations from the mean, times the number of points, sum to less than 2^-23) there is none,
    /// and the line is z = 0 with all derivatives 0.
    void set_parameters(mlVector const & p) override;

    /// Does nothing: every place is its own unique form.
    void normalize_parameters(mlVector & p) const override;

    /// The distance of point i (not checked), and its derivatives by x and y; none within 2^-23 of the axis.
    void get_distance_and_gradient(double & d, mlVector & gradient, int i) const override;
    void get_distance(double & d, int i) const override;
    ~sqLeastSquareConeFixedAxis() override;

    /// Writes the cone as the eight parameters of sqLeastSquareCone, its apex as the point of the axis.
    void full_fit_parameters(mlVector & p) const;

    /// The directions of x and y in space: with the axis, a right-handed frame through the origin.
    giVector3 const x_axis() const { return x_dir_; }
    giVector3 const y_axis() const { return y_dir_; }

private:
    void find_line(double origin);

    double offset_, slope_;
    double d_offset_dx_, d_offset_dy_, d_slope_dx_, d_slope_dy_;
    doublecoDynArr radial_, unit_x_, unit_y_;
    giPoint3coDynArr frame_points_;
    giVector3 axis_, x_dir_, y_dir_;
    double mean_height_;
    datumfit::internal::fixed_axis_passes * passes_;  // the base's, which the solver uses in place of the slots
};
