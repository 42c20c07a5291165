#pragma once

#include <datumfit/foundation/geometry/point2.h>
#include <datumfit/foundation/utilities/optional_arg.h>

#include <cstddef>
#include <utility>
#include <vector>

/// What the fits of extremal circles share. A record is the distance of a point, less its radius where radii are given,
/// and the index of the point.
class sqCircleFitUtils {
public:
    /// Lists the points farthest from a centre and those nearest to it, all within 2^-23 of the first of their list.
    ///
    /// @param[in,out] far   farthest first; of equal distances, the higher index first
    /// @param[in,out] near  nearest first; of equal distances, the lower index first
    /// @param radii         one a point, at least as many as points
    ///
    /// What the lists held is dropped, with the room kept. The far list drops it only where a distance exceeds -1, and
    /// gets no record where radii leave all distances below that by more than 2^-23.
    static void calculate_distances(std::vector<giPoint2> const & points, giPoint2 const & centre,
                                    std::vector<std::pair<double, std::size_t>> & far,
                                    std::vector<std::pair<double, std::size_t>> & near,
                                    utOptionalArg<std::vector<double> const &> radii);

    /// The least move along a direction, in units of its length, that brings the centre equally far from a point of
    /// the list and some other point. False when no move of more than 2^-23 does; the step is then the largest double.
    static bool step_distance(giPoint2 const & centre, giVector2 const & direction,
                              std::vector<giPoint2> const & points,
                              std::vector<std::pair<double, std::size_t>> const & list, double & step);
};
