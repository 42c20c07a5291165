#pragma once

#include <datumfit/foundation/containers/dyn_arr.h>

#include <cmath>
#include <limits>

namespace datumfit {
namespace internal {

/// Stands for an open upper end of a band, and its opposite for an open lower end.
constexpr double unbounded = std::numeric_limits<double>::max();

/// Infinite ends are open as well, and so is one that is no number.
inline bool is_lower_end(double end) {
    return end > -unbounded && end < HUGE_VAL;
}
inline bool is_upper_end(double end) {
    return end < unbounded && end > -HUGE_VAL;
}

/// Walks through the ends of bands, which are numbered as they come, past those that have been given up.
class band_ends {
public:
    /// The numbers given up are ascending.
    explicit band_ends(intcoDynArr const & given_up) : given_up_(given_up) {}

    /// Whether there is such an end and it is kept.
    bool next_lower(double end) { return is_lower_end(end) && next_is_kept(); }
    bool next_upper(double end) { return is_upper_end(end) && next_is_kept(); }

    /// How many ends have been kept so far.
    int kept() const { return number_ - listed_; }

private:
    bool next_is_kept() {
        bool const is_listed = listed_ < given_up_.size() && given_up_[listed_] == number_;
        listed_ += is_listed;
        ++number_;
        return !is_listed;
    }

    intcoDynArr const & given_up_;
    int number_ = 0;  // of the next end
    int listed_ = 0;  // before it
};

}  // namespace internal
}  // namespace datumfit
