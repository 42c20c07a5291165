#pragma once

#include <datumfit/foundation/geometry/point3.h>

#include <vector>

namespace datumfit {
namespace internal {

/// For each point the number of the first one with the same coordinates, which may be its own. 0.0 equals -0.0.
std::vector<int> first_equal_points(std::vector<giPoint3> const & points);

}  // namespace internal
}  // namespace datumfit
