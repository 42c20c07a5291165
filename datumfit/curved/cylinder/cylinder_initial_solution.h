#pragma once

#include <datumfit/curved/cylinder/probe_set.h>
#include <datumfit/foundation/geometry/vector3.h>

/// Finds an axis direction from which a cylinder fit can start, without a start value.
///
/// Six points on two rings of three give the normal of the first ring. In all other cases fans of directions are
/// walked, the first one around the direction from the second point to the first, each later one finer and around the
/// best so far: that along which a circle comes nearest to the point farthest from it. A direction that keeps all
/// points within 0.1, in the unit in use, ends a walk. Always 1; with fewer than 3 points the axis is the direction
/// between the first two, or the x axis.
int sqCylinder_InitialSolution(giPoint3coDynArr const & points, giVector3 & axis);

/// The same from probe centres, with one radius for each at least, within the cylinder for `inside` not 0, else around
/// it.
int sqCylinder_InitialSolutionProbed(giPoint3coDynArr const & points, doublecoDynArr const & radii, int inside,
                                     giVector3 & axis);

namespace datumfit {
namespace internal {

/// The direction that the two functions find, of either kind of points.
giVector3 initial_axis(probe_set const & set);

}  // namespace internal
}  // namespace datumfit
