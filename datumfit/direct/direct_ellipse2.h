#pragma once

#include <datumfit/direct/direct_fit.h>
#include <datumfit/foundation/geometry/angle.h>
#include <datumfit/foundation/geometry/workplane2.h>

/// An ellipse through points in the plane: of all conics the one of least algebraic distance under 4 a c - b² = 1,
/// which only ellipses meet. Noise makes it too flat on short arcs.
///
/// Where the points give no ellipse, the result is their direct circle, with its status, equal axes along x and y and
/// the angle 0: with 2 or 3 points; with points all but in a line; with an axis above 1000, or above 1000 times the
/// other. Also where the matrix of the means of the products of (x, y, 1) has singular values in a ratio of at most
/// 1e-6: with points far from the origin, or small or large for their unit. Ellipses of semi-axes 1 and 0.5 are found
/// as such up to 26 from the origin along the longer axis, 3 and 1 up to 45, 40 and 13 up to 160, 400 and 133 up to
/// 450; about the origin, nearly round ones from a semi-axis of 0.0015 to 1000. So far they keep six digits and more:
/// exact ones are found to 4e-13 at an axis ratio of 100, to 1e-15 at 3.
///
/// Four points have a whole pencil of conics through them: of these it is the roundest ellipse, so of four points of a
/// circle that circle. Halir & Flusser 1998; the moments are taken in a frame in which the points are round, which
/// changes the digits of the solution and nothing else.
class sqDirectEllipse2 : public sqDirectFit {
public:
    /// The points are copied.
    explicit sqDirectEllipse2(giPoint2coDynArr const & points);

    giPoint2 const & centre() const { return centre_; }

    /// The semi-axes; that of a is the longer one.
    double a_length() const { return a_length_; }
    double b_length() const { return b_length_; }

    /// From the x axis to a_axis(), which has either sense.
    giAngle const & angle() const { return angle_; }
    giVector2 const & a_axis() const { return a_axis_; }
    giVector2 const & b_axis() const { return b_axis_; }

    /// The frame of the centre with a_axis() as the x axis.
    giWorkplane2 const & workplane() const { return ellipse_plane_; }

    /// The root mean square distance of the points from the ellipse along the rays from its centre; the largest double
    /// when there is none.
    double chi() const;

protected:
    void fit();

private:
    struct conic;
    bool accept(conic const & c);

    giPoint2 centre_;
    double a_length_ = 0.0, b_length_ = 0.0;
    giAngle angle_;
    giVector2 a_axis_, b_axis_;
    giWorkplane2 ellipse_plane_;
};
