#include <datumfit/align2d/curve_piece2.h>
#include <datumfit/foundation/geometry/angle.h>
#include <datumfit/foundation/utilities/math.h>

#include <algorithm>
#include <cmath>

namespace datumfit {
namespace internal {

namespace {

// An arc that lacks no more than this of a whole turn, in radians, is the full circle.
constexpr double negligible_gap_angle = 1e-9;

giUnitVec2 left_of(giUnitVec2 const & tangent) {
    giVector2 const & t = tangent;
    return t.orthogonal();
}

giUnitVec2 direction_at(double angle) {
    giAngle const a(giAngleRadians, angle);
    return giUnitVec2(a.cos(), a.sin());
}

}  // namespace

curve_piece2::curve_piece2(sqChainElement2 const & element)
    : own_start_(element.start()), start_(element.start()), end_(element.end()) {
    if (!element.is_arc()) {
        start_tangent_ = end_tangent_ = giUnitVec2(end_ - start_);
        length_ = start_.distance(end_);
        return;
    }
    double const turn = 2.0 * utMath::pi();
    centre_ = element.centre();
    radius_ = element.radius();
    sweep_ = std::clamp(element.sweep(), -turn, turn);
    middle_ = direction_at(element.from() + sweep_ / 2.0);
    length_ = radius_ * std::abs(sweep_);
    double const sense = sweep_ < 0.0 ? -1.0 : 1.0;
    start_tangent_ = sense * left_of(direction_at(element.from()));
    end_tangent_ = sense * left_of(direction_at(element.from() + sweep_));
}

void curve_piece2::join(curve_piece2 & next) {
    gap_ = end_.distance(next.start_);
    end_ = next.start_;
    next.joined_ = true;
}

// The start of a joined piece belongs to the piece before it.
bool curve_piece2::holds(double beyond_start, double beyond_end) const {
    bool const after_start = joined_ ? beyond_start > 0.0 : beyond_start >= 0.0;
    bool const before_end = beyond_end <= 0.0;
    double const size = std::abs(sweep_);
    if (size < utMath::pi()) return after_start && before_end;
    return after_start || before_end || size >= 2.0 * utMath::pi() - negligible_gap_angle;
}

void curve_piece2::add_feet(giPoint2 const & p, few_feet2 & feet) const {
    double const s = beyond_start(p), e = beyond_end(p);
    if (radius_ == 0.0) {
        giVector2 const & along = start_tangent_;
        if (holds(s, e)) feet.add(own_start_ + along.dot(p - own_start_) * along, left_of(start_tangent_));
        return;
    }
    // Away from the centre is left on a clockwise arc.
    giUnitVec2 const out(p - centre_);
    auto const add = [&](giUnitVec2 const & w) { feet.add(centre_ + radius_ * w, sweep_ < 0.0 ? w : -w); };
    if (out.invalid()) {
        add(middle_);
        return;
    }
    // Seen from the other side of the centre, the ends lie on the other sides of p.
    if (holds(s, e)) add(out);
    if (holds(-s, -e)) add(-out);
}

strip2 curve_piece2::strip() const {
    // The middle of an arc is its farthest place from the chord, for all arcs up to the circle.
    double const half_cosine = std::cos(sweep_ / 2.0);
    return strip2(start_, end_, gap_ + (radius_ > 0.0 ? radius_ * (1.0 - half_cosine) : 0.0));
}

}  // namespace internal
}  // namespace datumfit
