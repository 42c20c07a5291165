#pragma once

#include <datumfit/foundation/geometry/circle2.h>
#include <datumfit/foundation/geometry/unit_vec2.h>
#include <datumfit/foundation/utilities/optional_arg.h>

#include <cstddef>
#include <utility>
#include <vector>

/// The largest circle that has no point inside and is held by points on all sides, near a start.
///
/// The centre walks away from the points nearest to it, through the widest gap between their directions, until another
/// point is as near, and ends where no gap is as wide as half a turn. So the result is a local maximum of the distance
/// to the nearest point. Where points leave a way out the walk follows it, and ends where no other point gets as near:
/// the circle may then lie outside of the set. It takes at most as many steps as there are points. Where
/// distances leave the range of doubles the circle is empty.
class sqMaximumInscribedCircle {
public:
    /// @param start  its centre is where the walk begins, the mean of the points otherwise; not written to
    /// @return the circle; the start where it has no centre or there are no points, an empty circle for neither points
    ///         nor start, and one of radius 0 where a point lies in the centre
    static giCircle2 calculate_maximum_inscribed_circle(std::vector<giPoint2> const & points,
                                                        utOptionalArg<giCircle2 &> start);

    /// The same for probe centres, from whose distances the radii are taken (`inside` false) or to which they are added
    /// (true). The walk runs along curves of equal such distance.
    ///
    /// @param radii  one a point, at least as many as points, each at least 0
    ///
    /// The radius is 0 where its true value is negative, as from within a disc. A walk that cannot begin has the radius
    /// of the start or, from the mean of the points, the distance to the first point less its radius.
    static giCircle2 calculate_maximum_inscribed_circle_probed(std::vector<giPoint2> const & points,
                                                               std::vector<double> const & radii, bool inside,
                                                               utOptionalArg<giCircle2 &> start);

private:
    static bool step_direction_inscribed(std::vector<giPoint2> const & points,
                                         std::vector<std::pair<double, std::size_t>> const & near,
                                         giPoint2 const & centre, giUnitVec2 & direction, std::size_t & first,
                                         std::size_t & second);
    static bool inscribed_probe_step(giPoint2 const & centre, giVector2 const & direction,
                                     std::vector<giPoint2> const & points, std::vector<double> const & radii,
                                     std::vector<std::pair<double, std::size_t>> const & near, bool inside,
                                     giPoint2 & new_centre);
};
