#pragma once

#include <datumfit/foundation/surfaces/range3.h>

namespace datumfit {
namespace internal {

typedef float vector_of_4_floats __attribute__((vector_size(16)));

/// A box in single precision, good enough to divide by. Its last coordinate says nothing.
struct rough_box {
    static constexpr float infinity = std::numeric_limits<float>::infinity();

    vector_of_4_floats low = {infinity, infinity, infinity, infinity};
    vector_of_4_floats high = {-infinity, -infinity, -infinity, -infinity};

    void merge(vector_of_4_floats const & at) {
        low = low < at ? low : at;
        high = high > at ? high : at;
    }
    void merge(rough_box const & other) {
        low = low < other.low ? low : other.low;
        high = high > other.high ? high : other.high;
    }
};

struct boxed_triangle {
    rough_box box;
    int number;

    float place(int axis) const { return box.low[axis] + box.high[axis]; }
};

struct triangle_span {
    boxed_triangle *begin, *end;

    int size() const { return static_cast<int>(end - begin); }
};

/// As many triangles as lie side by side in the hierarchy.
constexpr int group_size = 4;

/// Divides a span of more than a group into up to four, none empty, the largest part first as long as one is more than
/// a group. Those at a greater depth than some are halved by number, so that none is deeper than greatest_depth.
int divide_in_four(triangle_span const & triangles, int depth, triangle_span (&parts)[4]);

}  // namespace internal
}  // namespace datumfit
