#pragma once

#include <datumfit/foundation/maths/dual_active_set.h>

#include <vector>

namespace datumfit {
namespace internal {

/// Brings the solver to the minimum over rows that can be met together, and tells which others it leaves out for that.
///
/// Every conflict that the solver tells is a set of rows of which one must go. So the smallest choice that hits all
/// conflicts told so far goes, time and again, until none is told any more: the fewest rows are given up, and of
/// equally few the latest (the first row given up comes as late as can be, then the second, and so on).
///
/// When there are too many conflicts, or they are too entangled to find the smallest choice, each further conflict
/// gives up the row that had part in most of them, of equals the latest; at the end those that can be met after all
/// return, the earliest first. Then none of the rows given up can be met beside the others, but they need not be the
/// fewest.
///
/// @param kept           for each row, not 0 when it goes only if all rows of a conflict are kept
/// @param[out] given_up  ascending
/// @return false when the solver stalls
bool give_up_fewest(dual_active_set & solver, std::vector<int> const & kept, std::vector<int> & given_up);

}  // namespace internal
}  // namespace datumfit
