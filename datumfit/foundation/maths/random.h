#pragma once

#include <cstdint>

/// A linear congruential generator of 32 bits, state * 214013 + 2531011: the same numbers for the same seed everywhere.
///
/// Each draw advances the state first and uses its bits 16 to 30, so that there are 32768 values. A search makes its
/// own generator of a fixed seed; none is shared.
class mlRandom {
public:
    /// The low 32 bits of the seed are the first state.
    explicit mlRandom(long seed) : state_(static_cast<std::uint32_t>(seed)) {}

    /// From 0 to 32767.
    int rand() {
        state_ = state_ * 214013u + 2531011u;
        return static_cast<int>((state_ >> 16) & 32767u);
    }

    /// From 0 to 1, both included.
    double zero_one() { return rand() / 32767.0; }

    /// From -1 to 1, both included.
    double minus_one_one() { return 2.0 * zero_one() - 1.0; }

    /// From lo to hi, both included.
    double rnd(double lo, double hi) { return zero_one() * (hi - lo) + lo; }

private:
    std::uint32_t state_;
};
