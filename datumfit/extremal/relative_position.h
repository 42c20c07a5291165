#pragma once

#include <datumfit/foundation/geometry/point2.h>

/// Where a point lies with respect to a polygon.
enum sqRelativePosition {
    sqRelativeInside = 0,
    sqRelativeOnVertex = 1,
    sqRelativeOnEdge = 2,
    sqRelativeOutside = 3,
};

/// Tells where a point lies with respect to a polygon of at least one point, of either sense, which may repeat its
/// first point at the end or not. Where the polygon crosses itself, inside means encircled an odd number of times.
///
/// A point is on a vertex when it equals it, on an edge when its offset times the length of the edge is at most 1e-10
/// and it is not above, below or on the right of both ends. Otherwise the edges are counted that a ray from it along
/// the x axis crosses; the ray ends at x = 1e12, so all coordinates are to be well below that.
sqRelativePosition sq_relative_position(giPoint2 const & point, giPoint2 const * polygon, int count);
sqRelativePosition sq_relative_position(giPoint2 const & point, giPoint2coDynArr const & polygon);
