#pragma once

#include <datumfit/primitives/least_square_distance.h>

/// Signed distances of points in the plane from an ellipse, a model for mlLevenbergMarquardt.
///
/// The distance is that to the nearest point of the ellipse: positive outside, negative inside, in the unit of the
/// coordinates. Parameters: 0 and 1 the semi-axes a and b, 2 and 3 the centre, 4 the angle in radians of the axis of a
/// from the x axis; all five are independent. Either semi-axis may be the longer one, and the sign of a semi-axis says
/// nothing. Orthogonal distances (Gander, Golub & Strebel 1994), not algebraic ones, whose ellipses come out too small
/// on short arcs.
///
/// Seen in the ellipse's own axes, points within 1e-10 of one of them count as lying on it. The operations write down
/// what they find in the object, const as they are: it serves one thread at a time.
class sqLeastSquareEllipse : public sqLeastSquareDistance2 {
public:
    explicit sqLeastSquareEllipse(giPoint2coDynArr const & points);

    /// Does nothing.
    void normalize_parameters(mlVector & p) const override;

    /// The distance of point i (not checked), and its derivatives by the five parameters. From a point on the long axis
    /// within the evolute two feet are equally near: the derivatives are the mean of those of the two. When such a
    /// point lies within 1e-7 of the ellipse the first four are 0 and the fifth is not written.
    void get_distance_and_gradient(double & d, mlVector & gradient, int i) const override;
    void get_distance(double & d, int i) const override;

    /// 1 for semi-axes and centre; for the angle the root of a² + b².
    void parameter_scales(mlVector & scales) const override;
    ~sqLeastSquareEllipse() override;

protected:
    /// For a derived class, with the same distances: points treated all at once are offered for that class, too.
    sqLeastSquareEllipse(giPoint2coDynArr const & points, std::type_info const & of_class);

    /// What get_distance() found of its point, in the ellipse's axes.
    struct foot {
        enum place { general, axis_of_a, axis_of_b };
        place from = general;       // where the point lies
        bool in_evolute = false;    // of a point on an axis: the other axis divides its two feet
        double x = 0.0, y = 0.0;    // the point
        double x0 = 0.0, y0 = 0.0;  // its foot
        double nx = 0.0, ny = 0.0;  // of a general point the normal there,
        double over_h = 0.0;        // and one over the reach of the ellipse along it
        double distance = 0.0;
    };
    foot const & last_foot() const { return foot_; }

    /// A vector given in the ellipse's axes.
    giVector2 turned(double x, double y) const;

private:
    void see(int i) const;
    void find_foot() const;
    void general_gradient(mlVector & g) const;
    void evolute_gradient(mlVector & g) const;
    void end_gradient(mlVector & g) const;

    mutable foot foot_;
    mutable double angle_ = 0.0, cosine_ = 1.0, sine_ = 0.0;  // of the angle last seen
};
