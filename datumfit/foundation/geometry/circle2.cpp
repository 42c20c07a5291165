#include <datumfit/foundation/geometry/circle2.h>

#include <cmath>

namespace {

// The circle through p, p + a and p + b: its centre c relative to p has c.a = a.a / 2 and c.b = b.b / 2.
giCircle2 circle_through(giPoint2 const & p, giVector2 const & a, giVector2 const & b) {
    double const det = 2.0 * a.cross(b), aa = a.dot(a), bb = b.dot(b);
    giVector2 const c((aa * b.y() - bb * a.y()) / det, (bb * a.x() - aa * b.x()) / det);
    return std::isfinite(c.dot(c)) ? giCircle2(p + c, c.length()) : giCircle2();
}

}  // namespace

void giCircle2::become(giPoint2 const & p1, giPoint2 const & p2, giPoint2 const & p3) {
    // Counted from the point opposite the longest side, whose two sides make the least of rounding.
    giVector2 const a = p2 - p1, b = p3 - p2, c = p1 - p3;
    double const aa = a.dot(a), bb = b.dot(b), cc = c.dot(c);
    if (bb >= aa && bb >= cc) {
        *this = circle_through(p1, a, -c);
    } else if (cc >= aa) {
        *this = circle_through(p2, b, -a);
    } else {
        *this = circle_through(p3, c, -b);
    }
}
