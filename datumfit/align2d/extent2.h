#pragma once

#include <datumfit/foundation/geometry/box2.h>

namespace datumfit {
namespace internal {

/// Where a set of points lies, and how far it reaches: half the diagonal of its box. Of no points, the origin and 0.
struct extent2 {
    explicit extent2(giBox2 const & box) {
        if (box.min().invalid()) return;
        middle = interpolate(box.min(), box.max(), 0.5);
        reach = 0.5 * box.min().distance(box.max()).value();
    }

    giPoint2 middle = giPoint2(giOrigin);
    double reach = 0.0;
};

}  // namespace internal
}  // namespace datumfit
