#include <datumfit/align2d/strip_tree2.h>

#include <algorithm>

namespace datumfit {
namespace internal {

strip2::strip2(giPoint2 const & start, giPoint2 const & end, double width) : start_(start), end_(end), width_(width) {
    giVector2 const chord = end - start;
    length_ = chord.length();
    if (length_ > 0.0) along_ = giVector2(chord).unitize();
}

strip2::strip2(strip2 const & a, strip2 const & b) {
    if (a.empty() || b.empty()) {
        *this = a.empty() ? b : a;
        return;
    }
    *this = strip2(a.start_, b.end_, 0.0);
    width_ = std::max(width_over(a), width_over(b));
}

// The distance from a chord is convex, so that on another chord it is greatest at an end.
double strip2::width_over(strip2 const & part) const {
    return std::max(distance_from_chord(part.start_), distance_from_chord(part.end_)) + part.width_;
}

double strip2::distance_from_chord(giPoint2 const & p) const {
    giVector2 const v = p - start_;
    return (v - std::clamp(v.dot(along_), 0.0, length_) * along_).length();
}

double strip2::distance(giPoint2 const & p) const {
    return std::max(distance_from_chord(p) - width_, 0.0);
}

strip_tree2::strip_tree2(std::vector<strip2> const & leaves) {
    if (leaves.empty()) return;
    while (first_leaf_ < static_cast<int>(leaves.size())) first_leaf_ *= 2;
    std::size_t const first = static_cast<std::size_t>(first_leaf_);
    nodes_.resize(2 * first);
    std::copy(leaves.begin(), leaves.end(), nodes_.begin() + first_leaf_);
    for (std::size_t node = first - 1; node > 0; --node) nodes_[node] = strip2(nodes_[2 * node], nodes_[2 * node + 1]);
}

}  // namespace internal
}  // namespace datumfit
