#pragma once

#include <datumfit/direct/direct_fit.h>

/// A circle through points in the plane, by Pratt's method: of all A (x² + y²) + B x + C y + D = 0 the one of least
/// mean square of the left side under B² + C² - 4 A D = 1. Less drawn to small circles than other algebraic fits. Two
/// points are taken as a diameter; three give the circle through them.
///
/// The constraint is A² + B² + C² + D² = 1 instead where the singular values of the rows (x² + y², x, y, 1) have a
/// ratio of at most 1e-8: on exact circles, and far from the origin also on noisy ones. With noise of 1e-3 of the
/// radius that moves a full circle by less than 3e-6 of it as a rule, but by 1e-2 where the radius is 1e5 and the
/// circle goes through the origin.
///
/// All products are formed about the mean of the points. So distance from the origin costs no more digits than it costs
/// the coordinates: exact points give centre and radius to 1e-6, and better, up to 1e6 radii away (full circles to
/// 5e-12 there, arcs of 0.3 radians to 2e-9).
///
/// Status sqDirectFitSingular: three points in a line; sqDirectFitDegenerate: more of them, unless rounding bends the
/// line to a very large circle, or points in one place, or whose squares are not finite.
/// Pratt 1987, Computer Graphics 21(4), 145.
class sqDirectCircle2 : public sqDirectFit {
public:
    /// The points are copied.
    explicit sqDirectCircle2(giPoint2coDynArr const & points);

    double radius() const { return radius_; }
    giPoint2 const & centre() const { return centre_; }

    /// The root mean square distance of the points from the circle; the largest double when there is none.
    double chi() const;

protected:
    void fit();

    /// From the equal distances of the centre from the first point and from each other one, by least squares.
    void three_points_fit();

private:
    void pratt_fit();

    double radius_ = 0.0;
    giPoint2 centre_;
};
