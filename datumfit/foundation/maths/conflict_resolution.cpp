#include <datumfit/foundation/maths/conflict_resolution.h>
#include <datumfit/foundation/maths/convex_quadratic.h>
#include <datumfit/foundation/maths/hitting_set.h>

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace datumfit {
namespace internal {

namespace {

// Where the exact search ends. Within, it takes some ten milliseconds at most.
constexpr int most_conflicts = 100;
constexpr int most_trials = 5000;

void insert(std::vector<int> & ascending, int row) {
    ascending.insert(std::lower_bound(ascending.begin(), ascending.end(), row), row);
}

// The rows of a conflict that may go: those that are not kept, or all when they are.
std::vector<int> candidates(std::vector<int> const & conflict, std::vector<int> const & kept) {
    std::vector<int> found;
    std::copy_if(conflict.begin(), conflict.end(), std::back_inserter(found),
                 [&](int row) { return kept.data()[row] == 0; });
    return found.empty() ? conflict : found;
}

// The row of the last conflict that is in most conflicts, of equals the latest.
int most_involved(std::vector<std::vector<int>> const & conflicts) {
    int found = -1;
    std::ptrdiff_t most = 0;
    for (int const row : conflicts.back()) {
        std::ptrdiff_t const count =
            std::count_if(conflicts.begin(), conflicts.end(), [row](std::vector<int> const & conflict) {
                return std::binary_search(conflict.begin(), conflict.end(), row);
            });
        if (count >= most) {
            most = count;
            found = row;
        }
    }
    return found;
}

std::vector<int> both(std::vector<int> const & a, std::vector<int> const & b) {
    std::vector<int> all = a;
    all.insert(all.end(), b.begin(), b.end());
    return all;
}

} // namespace

bool give_up_fewest(dual_active_set & solver, mlVector const & from, std::vector<int> const & ignored,
                    std::vector<int> const & kept, std::vector<int> & given_up, mlVector & x) {
    convex_quadratic const distance(from);
    std::vector<std::vector<int>> conflicts;
    int effort = most_trials;
    bool fewest = true;
    given_up.clear();
    for (;;) {
        dual_active_set::outcome const outcome = solver.minimise(distance, both(ignored, given_up), x);
        if (outcome == dual_active_set::stalled) return false;
        if (outcome == dual_active_set::solved) break;
        conflicts.push_back(candidates(solver.conflict(), kept));
        fewest = fewest && conflicts.size() <= most_conflicts && find_smallest_hitting_set(conflicts, effort, given_up);
        if (!fewest) insert(given_up, most_involved(conflicts));
    }
    for (std::size_t k = 0; k < given_up.size() && !fewest;) {
        std::vector<int> fewer = given_up;
        fewer.erase(fewer.begin() + static_cast<std::ptrdiff_t>(k));
        if (solver.minimise(distance, both(ignored, fewer), x) == dual_active_set::solved) {
            given_up = fewer;
        } else {
            ++k;
        }
    }
    return true;
}

} // namespace internal
} // namespace datumfit
