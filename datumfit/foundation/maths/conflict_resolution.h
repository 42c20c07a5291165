#pragma once

#include <datumfit/foundation/maths/dual_active_set.h>
#include <datumfit/foundation/maths/vector.h>

#include <vector>

namespace datumfit {
namespace internal {

/// Finds rows to give up so that the others can be met together, and the point nearest to `from` where they are met.
///
/// Every conflict that the solver tells is a set of rows of which one must go. So the smallest choice that hits all
/// conflicts told so far goes, time and again, until none is told any more: the fewest rows are given up, and of equally
/// few the latest (the first row given up comes as late as can be, then the second, and so on).
///
/// When there are too many conflicts, or they are too entangled to find the smallest choice, each further conflict gives
/// up the row that had part in most of them, of equals the latest; at the end those that can be met after all return,
/// the earliest first. Then none of the rows given up can be met beside the others, but they need not be the fewest.
///
/// @param ignored        rows that count for nothing
/// @param kept           of the others, not 0 for rows to be given up only if all rows of a conflict are kept
/// @param[out] given_up  ascending
/// @param[out] x         the point; untouched on failure
/// @return false when the solver stalls
bool give_up_fewest(dual_active_set & solver, mlVector const & from, std::vector<int> const & ignored,
                    std::vector<int> const & kept, std::vector<int> & given_up, mlVector & x);

} // namespace internal
} // namespace datumfit
