#pragma once

#include <datumfit/foundation/containers/dyn_arr.h>

namespace datumfit {
namespace internal {

/// A model's own copy of the probe radii, with the sign that says on which side of the surface the probe centres lie:
/// as given for centres inside it, negated for `inside` 0.
inline doublecoDynArr signed_radii(doublecoDynArr const & radii, int inside) {
    doublecoDynArr copy(utCopy, radii);
    if (inside == 0) {
        for (int i = 0; i < copy.size(); ++i) copy[i] = -copy[i];
    }
    return copy;
}

}  // namespace internal
}  // namespace datumfit
