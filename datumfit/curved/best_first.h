#pragma once

#include <algorithm>
#include <vector>

namespace datumfit {
namespace internal {

/// Finds the candidate of the least score below `best`, the first one of equals, and makes its score the best; -1 when
/// there is none. A score costs much; a bound that no score falls below is known of each candidate, and in the order of
/// the bounds few are left to be scored. `order` holds the candidates' numbers, and is sorted anew.
template <class Bound, class Score>
int least_scored(std::vector<int> & order, Bound const & bound, Score const & score, double & best) {
    std::sort(order.begin(), order.end(), [&](int i, int j) { return bound(i) < bound(j); });
    int winner = -1;
    for (int const i : order) {
        if (bound(i) > best) break;
        double const s = score(i);
        if (s < best || (s == best && i < winner)) {
            best = s;
            winner = i;
        }
    }
    return winner;
}

}  // namespace internal
}  // namespace datumfit
