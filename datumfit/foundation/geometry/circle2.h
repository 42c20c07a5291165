#pragma once

#include <datumfit/foundation/geometry/length.h>
#include <datumfit/foundation/geometry/point2.h>

/// A circle in the plane: its centre and its radius, which as a length may hold its square only.
class giCircle2 {
public:
    /// An empty circle: neither its centre nor its radius is set.
    giCircle2() = default;
    giCircle2(giPoint2 const & centre, giLength const & radius) : centre_(centre), radius_(radius) {}

    void become(giPoint2 const & centre, giLength const & radius) { *this = giCircle2(centre, radius); }

    /// Becomes the circle through three points, in any order. Points on one line, or two of them equal, leave it empty.
    void become(giPoint2 const & p1, giPoint2 const & p2, giPoint2 const & p3);

    giPoint2 const & centre() const { return centre_; }
    giLength const & radius() const { return radius_; }

private:
    giPoint2 centre_;
    giLength radius_;
};
