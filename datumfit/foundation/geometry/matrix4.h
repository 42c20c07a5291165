#pragma once

#include <datumfit/foundation/geometry/length.h>

/// A matrix of 4 by 4 numbers, row by row; zero by default.
class giMatrix4 {
public:
    double operator()(int r, int c) const { return elements_[4 * r + c]; }
    double & operator()(int r, int c) { return elements_[4 * r + c]; }

    /// Marks the first element; the others stay.
    void set_invalid() { elements_[0] = -datumfit::internal::not_set; }

private:
    double elements_[16] = {};
};
