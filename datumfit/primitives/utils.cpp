#include <datumfit/primitives/utils.h>

#include <datumfit/primitives/plane_frame.h>

#include <cmath>

namespace {

// Directions nearer to each other than this, 2^-23, count as one.
constexpr double parallel = 1.1920928955078125e-7;

}  // namespace

void sqUtils::ProjectPointsToPlane(giPoint3coDynArr const & points, giPoint3 const & origin, giVector3 const & normal,
                                   giPoint2coDynArr & result, giXform3 * xform) {
    datumfit::internal::plane_frame const frame(origin, giUnitVec3(normal));
    frame.project(points, result);
    if (xform != nullptr) xform->become(utCopy, frame.xform());
}

giUnitVec2 sqUtils::bisector(giUnitVec2 const & a, giUnitVec2 const & b) {
    if (coincident(a.anchor(), b.anchor(), parallel)) return a;
    double const s = a.cross(b);
    double const c = a.dot(b);
    // Of two nearly opposite directions the sum has few digits; the normal of their difference has all.
    bool const opposite = std::abs(s) < 0.5 && c < 0.0;
    giUnitVec2 const candidate = opposite ? giUnitVec2(b.y() - a.y(), a.x() - b.x()) : giUnitVec2(a + b);
    return quick_angle(a, candidate) > quick_angle(a, b) ? -candidate : candidate;
}

double sqUtils::quick_angle(giUnitVec2 const & a, giUnitVec2 const & b) {
    double const q = -(1.0 + a.dot(b));
    return a.cross(b) < 0.0 ? -q : q;
}

void sqUtils::get_orthogonal(giVector3 const & v, giVector3 & result) {
    result = v.cross(std::abs(v.x()) > std::abs(v.y()) ? giVector3(giAxisY) : giVector3(giAxisX));
    result.unitize();
}

bool sqUtils::intersect_lines(giPoint2 const & p1, giVector2 const & d1, giPoint2 const & p2, giVector2 const & d2,
                              double & t) {
    double const det = d1.cross(d2);
    if (std::abs(det) < parallel) return false;
    t = (p2 - p1).cross(d2) / det;
    return true;
}
