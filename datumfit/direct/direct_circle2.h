#pragma once

#include <datumfit/direct/direct_fit.h>

/// A circle through points in the plane, by Pratt's method: of all A (x² + y²) + B x + C y + D = 0 the one of least mean
/// square of the left side under B² + C² - 4 A D = 1. Less drawn to small circles than other algebraic fits, and a good
/// start for the orthogonal one. Two points are taken as a diameter, three on a circle give it exactly.
///
/// Where the left side all but vanishes at all points, as it does on an exact circle, B² + C² + A² + D² = 1 stands in:
/// from 1e-8 on of its greatest value in any (A, B, C, D). Coordinates count from their origin in that: noisy points
/// far away are fitted so as well, and the circle moves by a small part of the noise. All products are formed about the
/// points' mean, so far points cost digits only by the rounding of their coordinates:
/// FAR_TABLE
///
/// Status sqDirectFitSingular: three points in a line; sqDirectFitDegenerate: more of them, as far as rounding lets it
/// be seen (else the radius is very large), or points that are not finite.
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
