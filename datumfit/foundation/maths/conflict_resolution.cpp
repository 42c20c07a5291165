#include <datumfit/foundation/maths/conflict_resolution.h>

#include <datumfit/foundation/maths/hitting_set.h>

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace datumfit {
namespace internal {

namespace {

// Where the search for the fewest rows ends. Within, it takes some ten milliseconds at most.
constexpr std::size_t most_conflicts = 100;
constexpr int most_trials = 20000;

// The rows of a conflict that may go: those that are not kept, or all when they are.
std::vector<int> candidates(std::vector<int> const & conflict, std::vector<int> const & kept) {
    std::vector<int> found;
    std::copy_if(conflict.begin(), conflict.end(), std::back_inserter(found),
                 [&](int row) { return kept.data()[row] == 0; });
    return found.empty() ? conflict : found;
}

// Leaves out the rows of `chosen` in the place of those of `given_up`.
void exchange(dual_active_set & solver, std::vector<int> & given_up, std::vector<int> const & chosen) {
    for (int const row : given_up) {
        if (!std::binary_search(chosen.begin(), chosen.end(), row)) solver.take_back(row);
    }
    for (int const row : chosen) {
        if (!std::binary_search(given_up.begin(), given_up.end(), row)) solver.leave_out(row);
    }
    given_up = chosen;
}

// Takes back, one after the other, rows that can be met after all. False when the solver stalls.
bool take_back(dual_active_set & solver, std::vector<int> & given_up) {
    std::vector<int> lost;
    for (int const row : given_up) {
        solver.take_back(row);
        if (solver.run() == dual_active_set::solved) continue;
        solver.leave_out(row);
        lost.push_back(row);
        if (solver.run() != dual_active_set::solved) return false;
    }
    given_up = lost;
    return true;
}

}  // namespace

bool give_up_fewest(dual_active_set & solver, std::vector<int> const & kept, std::vector<int> & given_up) {
    std::vector<std::vector<int>> conflicts;
    std::vector<int> involved(kept.size());  // in how many conflicts each row is
    int effort = most_trials;
    bool fewest = true;
    given_up.clear();
    for (;;) {
        dual_active_set::outcome const outcome = solver.run();
        if (outcome == dual_active_set::stalled) return false;
        if (outcome == dual_active_set::solved) return fewest || take_back(solver, given_up);
        std::vector<int> const conflict = candidates(solver.conflict(), kept);
        for (int const row : conflict) ++involved.data()[row];
        std::vector<int> chosen = given_up;
        if (fewest) {
            conflicts.push_back(conflict);
            fewest = conflicts.size() <= most_conflicts && find_smallest_hitting_set(conflicts, effort, chosen);
        }
        if (!fewest) {
            int const most = *std::max_element(conflict.rbegin(), conflict.rend(),
                                               [&](int a, int b) { return involved.data()[a] < involved.data()[b]; });
            chosen.insert(std::lower_bound(chosen.begin(), chosen.end(), most), most);
        }
        exchange(solver, given_up, chosen);
    }
}

}  // namespace internal
}  // namespace datumfit
