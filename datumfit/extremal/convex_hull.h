#pragma once

#include <datumfit/foundation/geometry/point2.h>

/// The convex hull of points in the plane, counterclockwise from the lowest point (the rightmost of several).
///
/// Points along an edge of the hull stay in it, without those of the edge that leads back to the start; so do all
/// points of a set on one line. A point within 1e-12 of the one before it in the order of directions from the start is
/// left out, of equal points all but the first. Up to 3 distinct points come back in that order. Without points nothing
/// is changed.
///
/// `hull` may be `points` itself. Graham 1972, with the order of a simple closed path, after points well within an
/// octagon of extreme points have been put aside (Akl & Toussaint 1978).
void sq_calculate_convex_hull(giPoint2coDynArr const & points, giPoint2coDynArr & hull);

/// The same as indices of the points, which are appended to `indices`.
void sq_calculate_convex_hull(giPoint2coDynArr const & points, intcoDynArr & indices);
