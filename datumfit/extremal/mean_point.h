#pragma once

#include <datumfit/foundation/geometry/point_average2.h>

#include <vector>

namespace datumfit {
namespace internal {

inline giPoint2 mean_point(std::vector<giPoint2> const & points) {
    giPointAverage2 mean;
    for (giPoint2 const & p : points) mean.accumulate(p);
    return mean.average();
}

}  // namespace internal
}  // namespace datumfit
