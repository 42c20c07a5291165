#pragma once

#include <datumfit/foundation/containers/dyn_arr.h>
#include <datumfit/foundation/geometry/point3.h>

/// A point of a surface: its parameters on that surface, whose meaning is the surface's own, and its place.
struct sknSurfPoint {
    double u = 0.0, v = 0.0;
    giPoint3 point;
};

using sknSurfPointcoDynArr = coDynArr<sknSurfPoint>;
using sknSurfPointList = sknSurfPointcoDynArr;
