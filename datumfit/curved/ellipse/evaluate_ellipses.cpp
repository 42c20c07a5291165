#include <datumfit/primitives/evaluator/least_square_evaluator.h>

#include <datumfit/curved/ellipse/ellipse_solver.h>
#include <datumfit/foundation/utilities/math.h>
#include <datumfit/primitives/plane_frame.h>

#include <cmath>

using datumfit::internal::plane_frame;

int sqLeastSquareEvaluator::evaluate_ellipse(giPoint2coDynArr const & points, giPoint2 & centre, double & major,
                                             double & minor, double & angle, double & deviation) {
    return sqCalculateLeastSquareEllipse(points, centre, major, minor, angle, deviation);
}

int sqLeastSquareEvaluator::evaluate_ellipse2(giPoint3 const & origin, giUnitVec3 const & reference,
                                              giUnitVec3 const & normal, giPoint3coDynArr const & points,
                                              giPoint3 & centre, double & major, double & minor, double & angle,
                                              double & deviation) {
    if (points.size() < 3) return 0;
    plane_frame const frame = plane_frame::near(points[0], origin, normal);
    giPoint2coDynArr flat;
    frame.project(points, flat);
    giPoint2 c;
    double within_plane;
    if (evaluate_ellipse(flat, c, major, minor, angle, within_plane) == 0) return 0;
    centre = frame.point(c);
    giVector3 const r = frame.xform() * reference;
    angle = utMath::remd(angle - std::atan2(r.y(), r.x()), utMath::pi());
    int const n = points.size();
    double heights = 0.0;
    for (int i = 0; i < n; ++i) heights += utMath::square(normal.dot(points[i] - centre));
    deviation = std::sqrt((within_plane * within_plane * n + heights) / n);
    return 1;
}
