#include <datumfit/foundation/maths/hitting_set.h>

#include <algorithm>
#include <cstddef>

namespace datumfit {
namespace internal {

namespace {

// A search in depth over the places that the numbers have in their ascending sequence.
class search {
public:
    search(std::vector<std::vector<int>> const & sets, int & effort) : sets_(sets), effort_(effort) {
        for (std::vector<int> const & set : sets) numbers_.insert(numbers_.end(), set.begin(), set.end());
        std::sort(numbers_.begin(), numbers_.end());
        numbers_.erase(std::unique(numbers_.begin(), numbers_.end()), numbers_.end());
        for (std::vector<int> & set : sets_) {
            for (int & number : set) {
                number =
                    static_cast<int>(std::lower_bound(numbers_.begin(), numbers_.end(), number) - numbers_.begin());
            }
        }
        states_.resize(numbers_.size());
        marks_.resize(numbers_.size());
    }

    bool run(std::vector<int> & numbers) {
        for (int count = static_cast<int>(numbers.size()); !complete(count); ++count) {
            if (effort_ < 0) return false;
        }
        std::vector<int> found = latest(chosen_places());
        if (effort_ < 0) return false;
        for (int & number : found) number = numbers_.data()[number];
        numbers = found;
        return true;
    }

private:
    enum state { open, chosen, refused };

    state & of(int place) { return states_.data()[place]; }

    // Chooses up to `count` open places so that every set is hit, or leaves all states as they were.
    bool complete(int count) {
        if (--effort_ < 0) return false;
        std::vector<int> branches;
        int const needed = places_needed(branches);
        if (needed == 0) return true;
        if (needed > count) return false;
        for (int const place : branches) {
            of(place) = chosen;
            if (complete(count - 1)) return true;
            of(place) = refused;  // every choice with it has been tried
        }
        for (int const place : branches) of(place) = open;
        return false;
    }

    // At least so many more places have to be chosen: sets without a common open place need one each. `branches`
    // becomes the open places of the set that has fewest, from the latest to the earliest.
    int places_needed(std::vector<int> & branches) {
        int needed = 0;
        std::ptrdiff_t fewest = 0;
        std::vector<int> const * narrowest = nullptr;
        std::fill(marks_.begin(), marks_.end(), 0);
        for (std::vector<int> const & set : sets_) {
            if (std::any_of(set.begin(), set.end(), [this](int p) { return of(p) == chosen; })) continue;
            auto const is_open = [this](int p) { return of(p) == open; };
            std::ptrdiff_t const count = std::count_if(set.begin(), set.end(), is_open);
            if (!narrowest || count < fewest) {
                narrowest = &set;
                fewest = count;
            }
            if (std::any_of(set.begin(), set.end(), [&](int p) { return is_open(p) && marks_.data()[p]; })) continue;
            for (int const p : set) marks_.data()[p] = 1;
            ++needed;
        }
        for (std::size_t k = narrowest ? narrowest->size() : 0; k-- > 0;) {
            if (of((*narrowest)[k]) == open) branches.push_back((*narrowest)[k]);
        }
        return needed;
    }

    // From one of the smallest choices to the latest of them, place by place.
    std::vector<int> latest(std::vector<int> found) {
        for (std::size_t fixed = 0; fixed < found.size();) {
            std::fill(states_.begin(), states_.end(), open);
            std::fill(states_.begin(), states_.begin() + found[fixed] + 1, refused);
            for (std::size_t k = 0; k < fixed; ++k) of(found[k]) = chosen;
            if (complete(static_cast<int>(found.size() - fixed))) {
                found = chosen_places();
            } else {
                ++fixed;
            }
        }
        return found;
    }

    std::vector<int> chosen_places() {
        std::vector<int> places;
        for (int p = 0; p < static_cast<int>(states_.size()); ++p) {
            if (of(p) == chosen) places.push_back(p);
        }
        return places;
    }

    std::vector<std::vector<int>> sets_;  // of places
    int & effort_;
    std::vector<int> numbers_;
    std::vector<state> states_;
    std::vector<int> marks_;
};

}  // namespace

bool find_smallest_hitting_set(std::vector<std::vector<int>> const & sets, int & effort, std::vector<int> & numbers) {
    return search(sets, effort).run(numbers);
}

}  // namespace internal
}  // namespace datumfit
