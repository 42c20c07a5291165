#pragma once

#include <datumfit/foundation/geometry/unit_vec3.h>

namespace datumfit {
namespace internal {

/// The places of the canonical unit vectors of a shape that its user describes; invalid vectors where that is bad.
struct shape_edges {
    giVector3 edges[3];

    /// The third one along an axis, the others across it, with these lengths, which are to be positive.
    shape_edges(giUnitVec3 const & axis, double across, double along) {
        if (axis.invalid() || !(across > 0.0 && along > 0.0)) return;
        giUnitVec3 const first = axis.any_normal();
        edges[0] = across * first;
        edges[1] = across * axis.cross(first);
        edges[2] = along * axis;
    }

    /// The first two, and their unit normal.
    shape_edges(giVector3 const & first, giVector3 const & second) {
        giUnitVec3 const across = giUnitVec3(first).cross(giUnitVec3(second));
        if (first.invalid() || second.invalid() || across.invalid()) return;
        edges[0] = first;
        edges[1] = second;
        edges[2] = across;
    }
};

}  // namespace internal
}  // namespace datumfit
