#pragma once

#include <datumfit/foundation/containers/dyn_arr.h>
#include <datumfit/foundation/geometry/point2.h>
#include <datumfit/foundation/geometry/unit_vec2.h>

/// A place on a chain from which a point lies along the normal.
struct sqChainFoot2 {
    giPoint2 place;
    giUnitVec2 normal;  ///< on the left of the direction of travel
};

using sqChainFoot2coDynArr = coDynArr<sqChainFoot2>;
