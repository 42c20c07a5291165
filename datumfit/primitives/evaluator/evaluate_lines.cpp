#include <datumfit/primitives/evaluator/least_square_evaluator.h>

#include <datumfit/foundation/maths/lane_model.h>
#include <datumfit/primitives/plane_frame.h>
#include <datumfit/primitives/point_sums.h>
#include <datumfit/primitives/principal_axes.h>

#include <cmath>

using namespace datumfit::internal;

namespace {

// The root of the mean square of direction × (p - point).
double deviation_from_line(giPoint3coDynArr const & points, giPoint3 const & point, giUnitVec3 const & direction) {
    double sum = 0.0;
    for (int i = 0; i < points.size(); ++i) sum += direction.cross(points[i] - point).length().squared();
    return std::sqrt(sum / points.size());
}

}  // namespace

int sqLeastSquareEvaluator::evaluate_line(giPoint2coDynArr const & points, giPoint2 & point, giUnitVec2 & direction,
                                          double & deviation) {
    int const n = points.size();
    if (n < 2) return 0;
    point_axes<2> const axes = find_axes<2>(plain(points), n);
    point = giPoint2(axes.centroid[0], axes.centroid[1]);
    direction = giUnitVec2(axes.axis[0][0], axes.axis[0][1]);
    deviation = std::sqrt(axes.mean_square_from(1, n));
    return axes.extent[0] == 0.0 ? 0 : 1;
}

int sqLeastSquareEvaluator::evaluate_line3(giPoint3coDynArr const & points, giPoint3 & point, giUnitVec3 & direction,
                                           double & deviation) {
    int const n = points.size();
    if (n < 2) return 0;
    point_axes<3> const axes = find_axes<3>(plain(points), n);
    point = giPoint3(axes.centroid[0], axes.centroid[1], axes.centroid[2]);
    direction = giUnitVec3(axes.axis[0][0], axes.axis[0][1], axes.axis[0][2]);
    deviation = std::sqrt(axes.mean_square_from(1, n));
    return axes.extent[0] == 0.0 ? 0 : 1;
}

int sqLeastSquareEvaluator::evaluate_plane(giPoint3coDynArr const & points, giPoint3 & point, giUnitVec3 & normal,
                                           double & deviation) {
    int const n = points.size();
    if (n < 3) return 0;
    point_axes<3> const axes = find_axes<3>(plain(points), n);
    point = giPoint3(axes.centroid[0], axes.centroid[1], axes.centroid[2]);
    normal = giUnitVec3(axes.axis[2][0], axes.axis[2][1], axes.axis[2][2]);
    deviation = std::sqrt(axes.mean_square_from(2, n));
    return 1;
}

int sqLeastSquareEvaluator::evaluate_line2(giPoint3 const & origin, giUnitVec3 const & normal,
                                           giPoint3coDynArr const & points, giPoint3 & point, giUnitVec3 & direction,
                                           double & deviation) {
    if (points.size() < 2) return 0;
    plane_frame const frame = plane_frame::near(points[0], origin, normal);
    giPoint2coDynArr flat;
    frame.project(points, flat);
    giPoint2 p;
    giUnitVec2 d;
    int const found = evaluate_line(flat, p, d, deviation);
    point = frame.point(p);
    direction = giUnitVec3(frame.vector(d));
    deviation = deviation_from_line(points, point, direction);
    return found;
}
