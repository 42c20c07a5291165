#pragma once

#include <datumfit/foundation/geometry/point2.h>

/// A circle for constructions: a centre and a plain signed radius, which may be 0.
class tncCircle2 {
public:
    /// No circle: the centre is not set, the radius is 0.
    tncCircle2() = default;
    tncCircle2(giPoint2 const & centre, double radius) : centre_(centre), radius_(radius) {}

    giPoint2 const & centre() const { return centre_; }
    double radius() const { return radius_; }

private:
    giPoint2 centre_;
    double radius_ = 0.0;
};
