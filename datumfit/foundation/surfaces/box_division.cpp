#include <datumfit/foundation/surfaces/box_division.h>

#include <algorithm>

namespace datumfit {
namespace internal {

namespace {

constexpr int bin_count = 16;

// From this depth on, halves of equal number keep the depth within its limit, whatever the triangles.
constexpr int depth_of_halving = 24;

int longest_axis(rough_box const & range) {
    vector_of_4_floats const size = range.high - range.low;
    return size[0] >= size[1] && size[0] >= size[2] ? 0 : size[1] >= size[2] ? 1 : 2;
}

// Half the surface of a box, times the number of groups that n triangles fill.
float cost(rough_box const & box, int n) {
    vector_of_4_floats const size = box.high - box.low;
    float const half_surface = size[0] * size[1] + size[1] * size[2] + size[2] * size[0];
    return half_surface * static_cast<float>((n + group_size - 1) / group_size);
}

// Triangles sorted by their places along an axis.
class bins {
public:
    bins(triangle_span const & triangles, int axis, float low, float high)
        : axis_(axis), count_(std::min(bin_count, triangles.size())), low_(low),
          scale_(static_cast<float>(count_) / (high - low)) {
        for (boxed_triangle const * t = triangles.begin; t != triangles.end; ++t) {
            int const b = of(*t);
            box_[b].merge(t->box);
            ++size_[b];
        }
    }

    int of(boxed_triangle const & t) const {
        return std::min(count_ - 1, static_cast<int>((t.place(axis_) - low_) * scale_));
    }

    // The bin that begins the second part of the division that costs least.
    int best_boundary() const {
        float last_cost[bin_count];
        rough_box last;
        for (int b = count_ - 1, n = 0; b > 0; --b) {
            last.merge(box_[b]);
            last_cost[b] = cost(last, n += size_[b]);
        }
        rough_box first;
        int best = 1;
        float least = rough_box::infinity;
        for (int b = 1, n = 0; b < count_; ++b) {
            first.merge(box_[b - 1]);
            float const sum = cost(first, n += size_[b - 1]) + last_cost[b];
            if (sum < least) {
                least = sum;
                best = b;
            }
        }
        return best;
    }

private:
    int axis_, count_;
    float low_, scale_;
    rough_box box_[bin_count];
    int size_[bin_count] = {};
};

boxed_triangle * halve(triangle_span const & triangles, int axis) {
    boxed_triangle * const middle = triangles.begin + triangles.size() / 2;
    std::nth_element(triangles.begin, middle, triangles.end, [&](boxed_triangle const & a, boxed_triangle const & b) {
        return a.place(axis) != b.place(axis) ? a.place(axis) < b.place(axis) : a.number < b.number;
    });
    return middle;
}

// Where the second part begins.
boxed_triangle * divide(triangle_span const & triangles, int depth) {
    rough_box range;
    for (boxed_triangle const * t = triangles.begin; t != triangles.end; ++t) range.merge(t->box.low + t->box.high);
    int const axis = longest_axis(range);
    float const low = range.low[axis], high = range.high[axis];
    bool const divisible = static_cast<float>(bin_count) / (high - low) < rough_box::infinity;
    if (depth >= depth_of_halving || !divisible) return halve(triangles, axis);

    bins const sorted(triangles, axis, low, high);
    int const boundary = sorted.best_boundary();
    boxed_triangle * const middle = std::partition(triangles.begin, triangles.end,
                                                   [&](boxed_triangle const & t) { return sorted.of(t) < boundary; });
    return middle == triangles.begin || middle == triangles.end ? halve(triangles, axis) : middle;
}

}  // namespace

int divide_in_four(triangle_span const & triangles, int depth, triangle_span (&parts)[4]) {
    parts[0] = triangles;
    int n = 1;
    for (; n < 4; ++n) {
        triangle_span * const largest = std::max_element(
            parts, parts + n, [](triangle_span const & a, triangle_span const & b) { return a.size() < b.size(); });
        if (largest->size() <= group_size) break;
        boxed_triangle * const middle = divide(*largest, depth);
        parts[n] = {middle, largest->end};
        largest->end = middle;
    }
    return n;
}

}  // namespace internal
}  // namespace datumfit
