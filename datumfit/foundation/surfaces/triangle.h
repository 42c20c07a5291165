#pragma once

#include <datumfit/foundation/containers/dyn_arr.h>

/// A triangle of a mesh, as the numbers of its corners among the vertices, from 0. Seen from the side that its normal
/// points to, the corners go round counterclockwise.
struct sknTriangle {
    int a = -1, b = -1, c = -1;
};

using sknTrianglecoDynArr = coDynArr<sknTriangle>;
