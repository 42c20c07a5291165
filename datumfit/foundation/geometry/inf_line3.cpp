#include <datumfit/foundation/geometry/inf_line3.h>

#include <cmath>

void closest_points(giInfLine3 const & a, giInfLine3 const & b, giAngle const & tol, double & s, double & t,
                    giLineIntersectStatus & status) {
    giVector3 const n = a.direction().cross(b.direction());
    giAngle const between(giAngleTangent2, n.length(), std::abs(a.direction().dot(b.direction())));
    bool const parallel = n.is_zero(0.0) || between < tol;
    status = parallel ? giLineIntersectParallel : giLineIntersectFound;
    if (parallel) return;

    // With w from a to b, w + t db - s da is along n. Its products with n x db and n x da leave s and t alone.
    giVector3 const w = b.centre() - a.centre();
    s = w.cross(b.direction()).dot(n) / n.length().squared();
    t = w.cross(a.direction()).dot(n) / n.length().squared();
}
