#pragma once

#include <datumfit/foundation/geometry/point3.h>

namespace datumfit {
namespace internal {

/// What a search did, for those who measure it.
struct search_counts {
    long bounds = 0;
    long circle_fits = 0;
    long solver_runs = 0;
};

/// What a cylinder search looks at: points on the surface, or probe centres with their radii.
struct probe_set {
    giPoint3coDynArr const & points;
    doublecoDynArr const * radii = nullptr;  // as given by the host; null for points on the surface
    int inside = 0;

    // Whether candidates that cannot win by what is known of them beforehand are left out. The answer is the same
    // without, which a test and a benchmark show.
    bool bounded = true;

    search_counts * counts = nullptr;  // added to where it is given

    bool probed() const { return radii != nullptr; }
};

}  // namespace internal
}  // namespace datumfit
