#pragma once

#include <datumfit/align2d/chain_element2.h>
#include <datumfit/align2d/chain_foot2.h>
#include <datumfit/align2d/strip_tree2.h>

namespace datumfit {
namespace internal {

/// Few of them, as one piece has for one point.
struct few_feet2 {
    void add(giPoint2 const & place, giUnitVec2 const & normal) { foot[count++] = {place, normal}; }

    sqChainFoot2 foot[3];
    int count = 0;
};

/// A segment or an arc of a chain, as feet are looked for on it.
///
/// Feet are told to belong to a piece by the sides of its ends on which the point lies, (p - end) . tangent. Where two
/// pieces meet, both read it from the one corner point that they share, so that no foot is lost between them.
class curve_piece2 {
public:
    explicit curve_piece2(sqChainElement2 const & element);

    /// Lets the end of this piece be the start of the next one.
    void join(curve_piece2 & next);

    double length() const { return length_; }
    giPoint2 const & start() const { return start_; }
    giPoint2 const & end() const { return end_; }
    giUnitVec2 const & start_tangent() const { return start_tangent_; }
    giUnitVec2 const & end_tangent() const { return end_tangent_; }
    bool is_joined_to_previous() const { return joined_; }

    /// Where p lies on the side of the start, or of the end, to which travel goes: positive beyond it.
    double beyond_start(giPoint2 const & p) const { return start_tangent_.dot(p - start_); }
    double beyond_end(giPoint2 const & p) const { return end_tangent_.dot(p - end_); }

    /// Whether p lies on the other side of an arc's centre than `place` does, so that `place` is no near foot of p.
    bool is_past_centre(giPoint2 const & p, giPoint2 const & place) const {
        return radius_ > 0.0 && (p - centre_).dot(place - centre_) < 0.0;
    }

    /// Adds the feet of p: on a segment one, on an arc up to two, on either side of its centre. For the centre itself,
    /// from which every point of the arc is perpendicular, it is the middle of the arc.
    void add_feet(giPoint2 const & p, few_feet2 & feet) const;

    /// The strip from start to end that holds all feet.
    strip2 strip() const;

    /// The middle of an arc, or a point of a segment.
    giPoint2 middle() const { return radius_ > 0.0 ? centre_ + radius_ * giVector2(middle_) : own_start_; }

private:
    bool holds(double beyond_start, double beyond_end) const;

    giPoint2 own_start_, start_, end_;  // the latter two at the corners, where there are
    giUnitVec2 start_tangent_, end_tangent_;
    double length_;
    double gap_ = 0.0;  // from the own end to the corner
    bool joined_ = false;

    giPoint2 centre_;      // of an arc
    double radius_ = 0.0;  // 0 for a segment
    double sweep_ = 0.0;
    giUnitVec2 middle_;  // direction of the middle of the arc
};

}  // namespace internal
}  // namespace datumfit
