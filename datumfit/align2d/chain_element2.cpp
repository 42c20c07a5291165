#include <datumfit/align2d/chain_element2.h>
#include <datumfit/align2d/line_locks.h>
#include <datumfit/foundation/geometry/angle.h>

#include <cmath>

using datumfit::internal::is_set_and_finite;

sqChainElement2 sqChainElement2::segment(giPoint2 const & start, giPoint2 const & end) {
    sqChainElement2 element;
    element.start_ = start;
    element.end_ = end;
    return element;
}

sqChainElement2 sqChainElement2::arc(giPoint2 const & centre, double radius, double from, double sweep) {
    sqChainElement2 element;
    element.is_arc_ = true;
    element.centre_ = centre;
    element.radius_ = radius;
    element.from_ = from;
    element.sweep_ = sweep;
    bool const has_ends = radius > 0.0 && is_set_and_finite(centre) && std::isfinite(from) && std::isfinite(sweep);
    if (!has_ends) return element;
    giAngle const first(giAngleRadians, from), last(giAngleRadians, from + sweep);
    element.start_ = centre + radius * giVector2(first.cos(), first.sin());
    element.end_ = centre + radius * giVector2(last.cos(), last.sin());
    return element;
}

bool sqChainElement2::invalid() const {
    return !is_set_and_finite(start_) || !is_set_and_finite(end_);
}
