#pragma once

#include <datumfit/foundation/geometry/point2.h>

#include <cstddef>
#include <vector>

namespace datumfit {
namespace internal {

/// A chord with a width: it holds all places that are no farther from the chord than that.
class strip2 {
public:
    /// A strip of nothing.
    strip2() = default;

    strip2(giPoint2 const & start, giPoint2 const & end, double width);

    /// The strip from the start of one to the end of the next that holds both; if one is of nothing, the other.
    strip2(strip2 const & a, strip2 const & b);

    bool empty() const { return width_ < 0.0; }

    /// The distance of p, 0 within.
    double distance(giPoint2 const & p) const;

private:
    double distance_from_chord(giPoint2 const & p) const;
    double width_over(strip2 const & part) const;

    giPoint2 start_, end_;
    giVector2 along_ = giVector2(0.0, 0.0);  // of unit length, unless the chord has none
    double length_ = 0.0, width_ = -1.0;
};

/// Strips over runs of a curve, pair by pair up to one over all (Ballard 1981, Commun. ACM 24(5), 310). Their widths go
/// down with the square of their lengths where the curve is smooth, so that few are as near to a point as the curve.
///
/// Node 1 holds all, node k has the children 2 k and 2 k + 1, and the leaves are the given strips in their order.
class strip_tree2 {
public:
    /// A tree of nothing.
    strip_tree2() = default;

    explicit strip_tree2(std::vector<strip2> const & leaves);

    bool empty() const { return nodes_.empty(); }
    bool is_leaf(int node) const { return node >= first_leaf_; }
    int leaf(int node) const { return node - first_leaf_; }
    strip2 const & strip(int node) const { return nodes_[static_cast<std::size_t>(node)]; }

private:
    int first_leaf_ = 1;
    std::vector<strip2> nodes_;
};

}  // namespace internal
}  // namespace datumfit
