#pragma once

#include <datumfit/foundation/geometry/point2.h>

/// Finds the least-squares ellipse of at least 4 points in the plane, without a start value: 1, or 0 with the results
/// as they were.
///
/// Orthogonal distances have many local minima. The solver runs from the circle through the points, and 19 times from
/// the best of a hundred random ellipses about the centroid, of axes up to twice the diagonal of the points' box; the
/// best of the twenty stands. The same points give the same bits on every call.
///
/// `angle` is that of the major axis from the x axis, in radians from 0 to below pi; of a circle it says nothing.
/// `deviation` is the root mean square of the distances. Points of a line, or of an arc that bends less than their
/// noise, give one of many ellipses near them.
int sqCalculateLeastSquareEllipse(giPoint2coDynArr const & points, giPoint2 & centre, double & major, double & minor,
                                  double & angle, double & deviation);
