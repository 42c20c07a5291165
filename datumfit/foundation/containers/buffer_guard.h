#pragma once

#include <datumfit/foundation/utilities/numeric_cast.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>

/// The bounds of a buffer. Element-wise copies into the buffer go through it, and one that would leave it is refused.
///
/// The number in the name tells kinds of guards apart; 0, the kind that checks, is the only one.
template <class T, int>
class coBufferGuard {
public:
    /// Guards `count` elements from `buffer` on; a negative count guards none.
    coBufferGuard(T * buffer, int count) : buffer_(buffer), count_(convert(count)) {}

    /// A count as an unsigned number, a negative one as 0.
    static std::uint64_t convert(int n) {
        bool negative = false;
        std::uint64_t const count = ut_numeric_cast<std::uint64_t>(n, negative);
        return negative ? 0 : count;
    }

    /// Assigns n elements in ascending order. With a null pointer, or a target that is not all within the buffer,
    /// copies nothing.
    void copy(T * to, T const * from, std::size_t n) const {
        if (from == nullptr || !holds(to, n)) {
            return;
        }
        // std::copy moves plain bytes in one block, but must not start within what it reads.
        if (std::less<>()(from, to) && std::less<>()(to, from + n)) {
            for (std::size_t i = 0; i < n; ++i) {
                to[i] = from[i];
            }
        } else {
            std::copy(from, from + n, to);
        }
    }

    void copy(T * to, T const * from, int n) const { copy(to, from, static_cast<std::size_t>(convert(n))); }

private:
    bool holds(T const * to, std::size_t n) const {
        if (to == nullptr) {
            return false;
        }
        // Before the buffer the difference is negative, which as an unsigned number is beyond any count.
        std::uint64_t const offset = static_cast<std::uint64_t>(to - buffer_);
        return offset <= count_ && n <= count_ - offset;
    }

    T * buffer_;
    std::uint64_t count_;
};
