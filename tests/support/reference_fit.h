#pragma once

#include "support/point_set.h"

#include <optional>
#include <string>

namespace reference {

/// What the library's entry for the primitive finds; nothing when it returns 0.
std::optional<Solution> fit(PointSet const & data);

/// Lengths in the unit of the points, angles in radians.
struct Differences {
    long double place = 0, angle = 0, size = 0, rms = 0, half_angle = 0;
};

/// How far a result is from the truth, compared as geometry: the truth's place (of an axis, line or plane, the foot of
/// the centroid) from the primitive found, the angle of the directions without their sense, the radius, or a cone's
/// distance at the truth's place, the deviation, the half angle.
Differences differences(PointSet const & data, Solution const & truth, Solution const & found);

/// How far a careful computation in doubles may be from the truth. The distances themselves are rounded in proportion
/// to S, half the extent of the points plus the radius, and the gain carries this to the results:
///     8 * 2^-52 * S * gain, plus one unit in the last place of each returned number.
/// Coordinates are rounded once more when they are decimals, by half a unit each, which `rounded_input` grants.
Differences bounds(PointSet const & data, Solution const & truth, Solution const & found, Gain const & gain,
                   bool rounded_input);

/// The largest ratio of a difference and its bound.
long double worst_ratio(Differences const & differences, Differences const & bounds);

std::string text(Differences const & d);

}  // namespace reference
