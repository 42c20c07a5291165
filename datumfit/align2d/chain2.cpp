#include <datumfit/align2d/chain2.h>
#include <datumfit/align2d/extent2.h>

#include <algorithm>
#include <cmath>

namespace datumfit {
namespace internal {

namespace {

// Shares of the size of a chain. Ends that are nearer to each other meet, whatever decimals they were rounded to.
constexpr double meeting = 1e-4;
// Feet nearer to each other are one.
constexpr double same = 1e-9;
// Pieces shorter than this tell nothing: both their ends are the same place.
constexpr double least_length = 1e-8;

// Room for the candidates of most searches.
constexpr std::size_t usual_queue = 64, usual_feet = 8;

double size_of(std::vector<curve_piece2> const & pieces) {
    giBox2 box;
    for (curve_piece2 const & piece : pieces) {
        for (giPoint2 const & p : {piece.start(), piece.middle(), piece.end()}) box.merge(p);
    }
    return 2.0 * extent2(box).reach;
}

strip_tree2 tree_of(std::vector<curve_piece2> const & pieces) {
    std::vector<strip2> strips;
    strips.reserve(pieces.size());
    for (curve_piece2 const & piece : pieces) strips.push_back(piece.strip());
    return strip_tree2(strips);
}

}  // namespace

chain2::chain2(std::vector<sqChainElement2> const & elements, double smooth_turn)
    : least_cosine_(std::cos(smooth_turn)) {
    for (sqChainElement2 const & element : elements) {
        if (element.invalid()) return;
    }
    for (sqChainElement2 const & element : elements) pieces_.emplace_back(element);
    double const size = size_of(pieces_);
    if (!std::isfinite(size)) return;
    same_place_ = same * size;
    auto const is_short = [&](curve_piece2 const & piece) { return !(piece.length() > least_length * size); };
    pieces_.erase(std::remove_if(pieces_.begin(), pieces_.end(), is_short), pieces_.end());
    if (pieces_.empty()) return;
    join_pieces(meeting * size);
    tree_ = tree_of(pieces_);
}

void chain2::join_pieces(double reach) {
    if (pieces_.size() == 1) return;  // the end of a circle is no corner
    for (std::size_t i = 0; i < pieces_.size(); ++i) {
        curve_piece2 & next = pieces_[i + 1 < pieces_.size() ? i + 1 : 0];
        if (pieces_[i].end().distance(next.start()) <= reach) pieces_[i].join(next);
    }
}

bool chain2::has_near(few_feet2 const & feet, giPoint2 const & place) const {
    return std::any_of(feet.foot, feet.foot + feet.count,
                       [&](sqChainFoot2 const & f) { return f.place.coincident(place, same_place_); });
}

void chain2::add_feet(int i, giPoint2 const & p, few_feet2 & feet) const {
    few_feet2 on_piece;
    piece(i).add_feet(p, on_piece);
    corner_side const side = side_of_corner(i, p);
    giPoint2 const & corner = piece(i).start();
    bool const meets_corner = piece(i).is_joined_to_previous() && has_near(on_piece, corner);
    if (side == beside && !meets_corner) {
        feet = on_piece;
        return;
    }
    few_feet2 before;
    previous(i).add_feet(p, before);
    bool const is_taken = has_near(before, corner);
    for (int k = 0; k < on_piece.count; ++k) {
        sqChainFoot2 const & foot = on_piece.foot[k];
        if (!is_taken || !foot.place.coincident(corner, same_place_)) feet.add(foot.place, foot.normal);
    }
    if (is_taken || meets_corner || side == beside) return;
    auto const is_monotone = [&](curve_piece2 const & at, few_feet2 const & found) {
        return found.count == 0 || at.is_past_centre(p, corner);
    };
    bool const counts = side == in_front || (is_monotone(previous(i), before) && is_monotone(piece(i), on_piece));
    if (counts) feet.add(corner, corner_normal(i, p));
}

// A corner of a small turn is taken for a bend of vanishing radius, which has a foot where p lies between the normals
// of both pieces: in front of the corner, where it is the nearest place around; or behind it, where it is the farthest
// one, beyond the centres to which the pieces bend. Nearer than these centres a piece has a foot of its own instead.
chain2::corner_side chain2::side_of_corner(int i, giPoint2 const & p) const {
    curve_piece2 const & b = piece(i);
    if (!b.is_joined_to_previous()) return beside;
    curve_piece2 const & a = previous(i);
    double const after = a.beyond_end(p), before = b.beyond_start(p);
    bool const is_in_front = after > 0.0 && before <= 0.0, is_behind = after < 0.0 && before >= 0.0;
    if (!is_in_front && !is_behind) return beside;
    if (a.end_tangent().dot(b.start_tangent()) < least_cosine_) return beside;
    return is_in_front ? in_front : behind;
}

// The direction of p from the corner at the start of piece i, or its opposite, on the left.
giUnitVec2 chain2::corner_normal(int i, giPoint2 const & p) const {
    giVector2 const & along = piece(i).start_tangent();
    giVector2 const left = (previous(i).end_tangent() + along).orthogonal(), v = p - piece(i).start();
    giUnitVec2 const normal(v.dot(left) < 0.0 ? -v : v);
    return normal.invalid() ? giUnitVec2(left) : normal;
}

nearest_feet2::nearest_feet2(chain2 const & chain, giPoint2 const & p) : chain_(chain), p_(p) {
    if (chain.empty()) return;
    queue_.reserve(usual_queue);
    feet_.reserve(usual_feet);
    push({0.0, 1, -1});
}

// Of equally near candidates what is still to be looked at comes first, as it may hold an earlier foot.
bool nearest_feet2::comes_later(candidate const & a, candidate const & b) {
    if (a.square != b.square) return a.square > b.square;
    bool const a_is_foot = a.foot >= 0, b_is_foot = b.foot >= 0;
    if (a_is_foot != b_is_foot) return a_is_foot;
    return a.node != b.node ? a.node > b.node : a.foot > b.foot;
}

void nearest_feet2::push(candidate const & c) {
    queue_.push_back(c);
    std::push_heap(queue_.begin(), queue_.end(), comes_later);
}

bool nearest_feet2::next(sqChainFoot2 & foot, double limit) {
    while (!queue_.empty() && queue_.front().square <= limit * limit) {
        std::pop_heap(queue_.begin(), queue_.end(), comes_later);
        candidate const nearest = queue_.back();
        queue_.pop_back();
        if (nearest.foot >= 0) {
            foot = feet_[static_cast<std::size_t>(nearest.foot)];
            return true;
        }
        open(nearest.node);
    }
    return false;
}

void nearest_feet2::open(int node) {
    strip_tree2 const & tree = chain_.tree();
    if (tree.is_leaf(node)) {
        few_feet2 found;
        chain_.add_feet(tree.leaf(node), p_, found);
        for (int k = 0; k < found.count; ++k) {
            giVector2 const v = p_ - found.foot[k].place;
            push({v.dot(v), node, static_cast<int>(feet_.size())});
            feet_.push_back(found.foot[k]);
        }
        return;
    }
    for (int const child : {2 * node, 2 * node + 1}) {
        strip2 const & strip = tree.strip(child);
        if (strip.empty()) continue;
        if (tree.is_leaf(child)) {
            open(child);
        } else {
            double const distance = strip.distance(p_);
            push({distance * distance, child, -1});
        }
    }
}

}  // namespace internal
}  // namespace datumfit
