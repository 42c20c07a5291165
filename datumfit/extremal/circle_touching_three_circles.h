#pragma once

#include <datumfit/foundation/geometry/point2.h>
#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/vector3.h>

/// The circle that touches three circles, all from the same side: one of the problems of Apollonius.
///
/// @param inside       not 0: the three lie inside the result, distance of the centres + radius i = result radius;
///                     0: they lie outside it, distance of the centres - radius i = result radius
/// @param[out] centre  in the coordinates of the three centres, as the radius is in their unit
/// @return 1; or 0 where there is none, and then the results are as they were
///
/// The radii may be 0; three of 0 give the circle through the centres. Where the three overlap in one place, `inside` 0
/// may give a negative radius: the circle of radius -r then lies inside all three and touches them from within. Where
/// two circles touch the three, the order of the arguments may decide which of them is given.
///
/// There is no result where two centres are nearer than 1e-7; where one circle lies inside another one, or all but
/// does; where no circle has all three on the wanted side, or a straight line has, which a circle of a radius above 5e6
/// counts as; or where numbers are not finite, or their squares are not.
///
/// The smallest circle is shrunk to a point, which an inversion sends to infinity: the result becomes a common tangent
/// of the two other circles.
int CircleTouchingThreeCircles2D(giPoint2 p1, double r1, giPoint2 p2, double r2, giPoint2 p3, double r3, int inside,
                                 giPoint2 & centre, double & radius);

/// The same in space, for circles in the plane of their three centres.
///
/// @param[out] normal  of that plane, of unit length, along (p2 - p1) x (p3 - p2)
///
/// On a return of 0 the radius is as it was. Centres that give no plane, that product being shorter than 1e-7, leave it
/// in `normal` as it is (invalid, where it is beyond all doubles) and the centre as it was; where the plane has no such
/// circle, the normal is right and the centre is invalid. Coordinates are taken from the origin of space: far from it
/// their rounding counts.
int CircleTouchingThreeCircles3D(giPoint3 p1, double r1, giPoint3 p2, double r2, giPoint3 p3, double r3, int inside,
                                 giVector3 & normal, giPoint3 & centre, double & radius);
