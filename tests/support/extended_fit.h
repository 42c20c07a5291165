#pragma once

#include "support/point_set.h"

namespace reference {

/// A least-squares fit in long double, an oracle for points without a known result.
struct ExtendedFit {
    Solution solution;
    Gain gain;
    bool converged = false;
};

/// Carries a start near the minimum to the minimum. With coordinates taken from the start's place and a mantissa of 64
/// bits, the errors are 2^-11 of those that doubles about the origin of the part would have.
ExtendedFit fit_extended(PointSet const & data, Solution const & start);

}  // namespace reference
