#pragma once

#include <vector>

namespace datumfit {
namespace internal {

/// Finds numbers of which each given set has at least one: of all such choices one of fewest numbers, and of those the
/// one whose least number is greatest, then whose next one is greatest, and so on.
///
/// @param sets             none empty, each ascending
/// @param effort           the search may take so many trials, and counts them down from it
/// @param[in,out] numbers  on entry empty or the choice for a part of the sets; the choice, ascending
/// @return false when the trials did not suffice; `numbers` is as it was then
bool find_smallest_hitting_set(std::vector<std::vector<int>> const & sets, int & effort, std::vector<int> & numbers);

}  // namespace internal
}  // namespace datumfit
