#pragma once

#include <datumfit/foundation/geometry/circle2.h>

#include <cstddef>
#include <vector>

/// The smallest circle about points of the plane.
///
/// Points are taken one by one in the order given. One outside the circle so far lies on the rim of the circle about
/// itself and those before it, which is found in the same way with one point fixed to the rim, and at last with two
/// (Welzl 1991, as loops, without the shuffle). So the time is in proportion to the number of points when they come in
/// no order, to its square when they are sorted along a line, and to its cube at worst. Points within 2^-23 of each
/// other count as one where a circle is laid through them.
class sqMinimumCircumscribedCircle {
public:
    /// The smallest circle that holds all points: an empty one without points, one of radius 0 for one point or equal
    /// ones.
    static giCircle2 fit_smallest_enclosing_circle(std::vector<giPoint2> const & points);

    /// The same where each point stands for the disc of its probe radius, which is at least 0.
    ///
    /// @param radii   one a point, at least as many as points
    /// @param inside  true: the circle holds the discs, distance + radius i <= result radius;
    ///                false: it reaches the near side of each, distance - radius i <= result radius
    /// @return without points an empty circle; where all points lie within 2^-23 of the first, that point with
    ///         radius 0, whatever the probe radii
    ///
    /// Where discs overlap in one place and `inside` is false, a point there with radius 0 reaches them all. For equal
    /// radii the circle is that of the points, wider or narrower by the radius. Where one disc holds another one and
    /// `inside` is true, the circle may cut the greater one and be too small.
    static giCircle2 fit_smallest_enclosing_circle_probed(std::vector<giPoint2> const & points,
                                                          std::vector<double> const & radii, bool inside);

private:
    static giCircle2 fit_two_point_circle(giPoint2 const & a, giPoint2 const & b);
    // Circles as seen from the origin.
    static giCircle2 smallest_circle_with_one_point(std::vector<giPoint2> const & points, giVector2 const & origin,
                                                    std::size_t q);
    static giCircle2 smallest_circle_with_two_points(std::vector<giPoint2> const & points, giVector2 const & origin,
                                                     std::size_t j, std::size_t q);
    static giCircle2 smallest_circle_with_one_point_probed(std::vector<giPoint2> const & points,
                                                           std::vector<double> const & radii, bool inside,
                                                           std::size_t q);
    static giCircle2 smallest_circle_with_two_points_probed(std::vector<giPoint2> const & points,
                                                            std::vector<double> const & radii, bool inside,
                                                            std::size_t j, std::size_t q);
};
