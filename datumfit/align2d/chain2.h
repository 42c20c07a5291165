#pragma once

#include <datumfit/align2d/curve_piece2.h>
#include <datumfit/align2d/strip_tree2.h>

#include <vector>

namespace datumfit {
namespace internal {

/// A chain of segments and arcs, with the feet of points on its pieces and on its corners.
class chain2 {
public:
    /// A chain of nothing.
    chain2() = default;

    /// Pieces that meet, one with the next and the last with the first, are joined there, and those without a length
    /// worth naming are left out. A corner has feet of its own when its turn is at most `smooth_turn`. With an element
    /// that is invalid, or none that has a length, it is a chain of nothing.
    chain2(std::vector<sqChainElement2> const & elements, double smooth_turn);

    bool empty() const { return tree_.empty(); }
    strip_tree2 const & tree() const { return tree_; }

    /// Adds the feet of p on piece i and the corner at its start, but none at a place where the piece before has one.
    void add_feet(int i, giPoint2 const & p, few_feet2 & feet) const;

private:
    // Where a point lies at a corner of a small turn: beside it, or where it may have a foot there.
    enum corner_side { beside, in_front, behind };

    curve_piece2 const & piece(int i) const { return pieces_[static_cast<std::size_t>(i)]; }
    curve_piece2 const & previous(int i) const { return i > 0 ? piece(i - 1) : pieces_.back(); }
    void join_pieces(double reach);
    bool has_near(few_feet2 const & feet, giPoint2 const & place) const;
    corner_side side_of_corner(int i, giPoint2 const & p) const;
    giUnitVec2 corner_normal(int i, giPoint2 const & p) const;

    std::vector<curve_piece2> pieces_;
    double least_cosine_ = 1.0;  // of the turn at a corner that has feet
    double same_place_ = 0.0;    // feet nearer to each other are one
    strip_tree2 tree_;
};

/// The feet of a point on a chain, one after the other, nearest first, and of equally near ones the first along the
/// chain. Only as much of the chain is looked at as it takes.
class nearest_feet2 {
public:
    nearest_feet2(chain2 const & chain, giPoint2 const & p);

    /// The next foot; false when there are no more up to this distance.
    bool next(sqChainFoot2 & foot, double limit);

private:
    // Part of the chain still to be looked at, or a foot found (with its number, else -1).
    struct candidate {
        double square;
        int node, foot;
    };
    static bool comes_later(candidate const & a, candidate const & b);
    void push(candidate const & c);
    void open(int node);

    chain2 const & chain_;
    giPoint2 p_;
    std::vector<candidate> queue_;  // a heap, the nearest on top
    std::vector<sqChainFoot2> feet_;
};

}  // namespace internal
}  // namespace datumfit
