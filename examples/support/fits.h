#pragma once

#include "direct_fits.h"
#include "ellipse_fits.h"
#include "points_file.h"
#include "task.h"

#include <datumfit/datumfit.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

/// Residuals of probe centres from their heights above a plane or line. The centres stand off on the side of the
/// normal, unless no approximate normal told the side: then on the side where the residuals are smaller.
inline void subtract_radii(std::vector<double> & heights, Task const & task) {
    double with = 0.0, against = 0.0;
    for (int i = 0; i < task.file.radii.size(); ++i) {
        double const height = heights[static_cast<std::size_t>(i)], radius = task.file.radii.read(i);
        with += (height - radius) * (height - radius);
        against += (height + radius) * (height + radius);
    }
    double const sign = task.file.normals.size() == 0 && against < with ? -1.0 : 1.0;
    for (int i = 0; i < task.file.radii.size(); ++i) {
        heights[static_cast<std::size_t>(i)] -= sign * task.file.radii.read(i);
    }
}

inline int fit_line(Task const & task, Fit & fit) {
    giPoint2coDynArr const points = seen_along_z(task.file.points);
    giUnitVec2coDynArr normals(task.file.normals.size(), 1);
    for (int i = 0; i < task.file.normals.size(); ++i) {
        giUnitVec3 const & n = task.file.normals[i];
        normals.append(giUnitVec2(n.x(), n.y()));
    }
    giPoint2 point;
    giUnitVec2 direction, normal;
    int found = 0;
    if (task.is_probed()) {
        found = fit.timed([&] {
            return sqLeastSquareEvaluator::evaluate_probed_line2(points, task.file.radii, normals, point, normal,
                                                                 fit.deviation);
        });
        direction = giUnitVec2(normal.y(), -normal.x());
    } else {
        found =
            fit.timed([&] { return sqLeastSquareEvaluator::evaluate_line(points, point, direction, fit.deviation); });
        normal = giUnitVec2(-direction.y(), direction.x());
    }
    fit.add2("point", point);
    fit.add2("direction", direction);
    fit.add2("normal", normal);
    if (direction.x() != 0.0) {
        double const slope = direction.y() / direction.x();
        fit.quantities.push_back({"slope", slope});
        fit.quantities.push_back({"intercept", point.y() - slope * point.x()});
    }
    for (int i = 0; i < points.size(); ++i) {
        fit.residuals.push_back(dot(normal, points[i] - point));
    }
    subtract_radii(fit.residuals, task);
    return found;
}

/// Distances of the points from a line in space, which have no sign.
inline void add_line_in_space(Task const & task, giPoint3 const & point, giUnitVec3 const & direction, Fit & fit) {
    fit.add3("point", point);
    fit.add3("direction", direction);
    for (int i = 0; i < task.file.points.size(); ++i) {
        fit.residuals.push_back(direction.cross(task.file.points[i] - point).length().value());
    }
}

inline int fit_line2(Task const & task, Fit & fit) {
    giPoint3 point;
    giUnitVec3 direction;
    int const found = fit.timed([&] {
        return sqLeastSquareEvaluator::evaluate_line2(task.origin, task.normal, task.file.points, point, direction,
                                                      fit.deviation);
    });
    add_line_in_space(task, point, direction, fit);
    return found;
}

inline int fit_line3(Task const & task, Fit & fit) {
    giPoint3 point;
    giUnitVec3 direction;
    int const found = fit.timed(
        [&] { return sqLeastSquareEvaluator::evaluate_line3(task.file.points, point, direction, fit.deviation); });
    add_line_in_space(task, point, direction, fit);
    return found;
}

inline int fit_plane(Task const & task, Fit & fit) {
    giPoint3coDynArr const & points = task.file.points;
    giPoint3 point;
    giUnitVec3 normal;
    int const found = fit.timed([&] {
        return task.is_probed() ? sqLeastSquareEvaluator::evaluate_probed_plane(
                                      points, task.file.radii, task.file.normals, point, normal, fit.deviation)
                                : sqLeastSquareEvaluator::evaluate_plane(points, point, normal, fit.deviation);
    });
    fit.add3("point", point);
    fit.add3("normal", normal);
    for (int i = 0; i < points.size(); ++i) {
        fit.residuals.push_back(normal.dot(points[i] - point));
    }
    subtract_radii(fit.residuals, task);
    return found;
}

inline int fit_circle(Task const & task, Fit & fit) {
    giPoint2coDynArr const points = seen_along_z(task.file.points);
    giPoint2 centre;
    double radius = 0.0;
    int const found = fit.timed([&] {
        return task.is_probed() ? sqLeastSquareEvaluator::evaluate_probed_circle(
                                      points, task.file.radii, task.side == Side::inside, centre, radius, fit.deviation)
                                : sqLeastSquareEvaluator::evaluate_circle(points, centre, radius, fit.deviation);
    });
    fit.add2("centre", centre);
    fit.add_radius(radius);
    for (int i = 0; i < points.size(); ++i) {
        fit.residuals.push_back(points[i].distance(centre).value() + task.signed_radius(i) - radius);
    }
    return found;
}

/// Distances of the points from a circle in space, which have no sign.
inline void add_circle_in_space(Task const & task, giPoint3 const & centre, giUnitVec3 const & normal, double radius,
                                Fit & fit) {
    fit.add3("centre", centre);
    fit.add3("normal", normal);
    fit.add_radius(radius);
    for (int i = 0; i < task.file.points.size(); ++i) {
        giVector3 const v = task.file.points[i] - centre;
        fit.residuals.push_back(std::hypot(normal.cross(v).length().value() - radius, normal.dot(v)));
    }
}

inline int fit_circle2(Task const & task, Fit & fit) {
    giPoint3 centre;
    double radius = 0.0;
    int const found = fit.timed([&] {
        return sqLeastSquareEvaluator::evaluate_circle2(task.origin, task.normal, task.file.points, centre, radius,
                                                        fit.deviation);
    });
    add_circle_in_space(task, centre, task.normal, radius, fit);
    return found;
}

inline int fit_circle3(Task const & task, Fit & fit) {
    giPoint3 centre;
    giUnitVec3 normal;
    double radius = 0.0;
    int const found = fit.timed([&] {
        return sqLeastSquareEvaluator::evaluate_circle3(task.file.points, centre, normal, radius, fit.deviation);
    });
    add_circle_in_space(task, centre, normal, radius, fit);
    return found;
}

inline int fit_sphere(Task const & task, Fit & fit) {
    giPoint3coDynArr const & points = task.file.points;
    giPoint3 centre;
    double radius = 0.0;
    int const found = fit.timed([&] {
        return task.is_probed() ? sqLeastSquareEvaluator::evaluate_probed_sphere(
                                      points, task.file.radii, task.side == Side::inside, centre, radius, fit.deviation)
                                : sqLeastSquareEvaluator::evaluate_sphere(points, centre, radius, fit.deviation);
    });
    fit.add3("centre", centre);
    fit.add_radius(radius);
    for (int i = 0; i < points.size(); ++i) {
        fit.residuals.push_back(points[i].distance(centre).value() + task.signed_radius(i) - radius);
    }
    return found;
}

/// The point of an axis at the foot of the centroid of the points.
inline giPoint3 foot_of_centroid(giPoint3coDynArr const & points, giPoint3 const & on_axis, giUnitVec3 const & axis) {
    giVector3 sum(0.0, 0.0, 0.0);
    for (int i = 0; i < points.size(); ++i) {
        sum += points[i] - points[0];
    }
    giPoint3 const centroid = points[0] + (1.0 / points.size()) * sum;
    return on_axis + axis.dot(centroid - on_axis) * axis;
}

inline constexpr char const * at_foot = "of the axis, nearest to the centroid of the points";

/// How far an axis may lie from the preferred one.
inline giAngle axis_limit() {
    return giAngle(giAngleDegrees, 10.0);
}

inline int fit_cylinder(Task const & task, Fit & fit) {
    giPoint3coDynArr const & points = task.file.points;
    giPoint3 on_axis;
    giUnitVec3 axis;
    double radius = 0.0;
    int const found = fit.timed([&] {
        return task.is_probed() ? sqLeastSquareEvaluator::evaluate_probed_cylinder(
                                      points, task.file.radii, task.side == Side::inside, on_axis, axis, radius,
                                      fit.deviation, task.axis, axis_limit(), 0)
                                : sqLeastSquareEvaluator::evaluate_cylinder(points, on_axis, axis, radius,
                                                                            fit.deviation, task.axis, axis_limit(), 0);
    });
    fit.add3("point", foot_of_centroid(points, on_axis, axis), at_foot);
    fit.add3("direction", axis);
    fit.add_radius(radius);
    for (int i = 0; i < points.size(); ++i) {
        fit.residuals.push_back(axis.cross(points[i] - on_axis).length().value() + task.signed_radius(i) - radius);
    }
    return found;
}

inline int fit_cone(Task const & task, Fit & fit) {
    giPoint3coDynArr const & points = task.file.points;
    giPoint3 apex;
    giUnitVec3 axis;
    double half_angle = 0.0;
    int const found = fit.timed([&] {
        return task.is_probed() ? sqLeastSquareEvaluator::evaluate_probed_cone(
                                      points, task.file.radii, task.side == Side::inside, points, apex, axis,
                                      half_angle, fit.deviation, task.axis, axis_limit(), 0)
                                : sqLeastSquareEvaluator::evaluate_cone(points, apex, axis, half_angle, fit.deviation,
                                                                        task.axis, axis_limit(), 0);
    });
    double const sine = std::sin(half_angle), cosine = std::cos(half_angle);
    giPoint3 const point = foot_of_centroid(points, apex, axis);
    double const degrees = giAngle(giAngleRadians, half_angle).angle(giAngleDegrees);
    fit.add3("apex", apex);
    fit.add3("direction", axis, "towards the apex");
    fit.quantities.push_back({"half angle", degrees, "degrees"});
    fit.quantities.push_back({"apex angle", 2.0 * degrees, "degrees"});
    fit.add3("point", point, at_foot);
    fit.quantities.push_back({"distance", sine * axis.dot(apex - point), "of that point from the surface"});
    for (int i = 0; i < points.size(); ++i) {
        giVector3 const v = points[i] - apex;
        fit.residuals.push_back(cosine * axis.cross(v).length().value() + sine * axis.dot(v) + task.signed_radius(i));
    }
    bool const is_cylinder = sine <= 8.0 * std::numeric_limits<double>::epsilon();  // its apex lies at infinity
    return is_cylinder ? 0 : found;
}

inline int fit_torus(Task const & task, Fit & fit) {
    giPoint3coDynArr const & points = task.file.points;
    giPoint3 centre;
    giUnitVec3 axis;
    double major = 0.0, minor = 0.0;
    int const found = fit.timed([&] {
        return task.is_probed()
                   ? sqLeastSquareEvaluator::evaluate_probed_torus(points, task.file.radii, task.side == Side::inside,
                                                                   centre, axis, major, minor, fit.deviation)
                   : sqLeastSquareEvaluator::evaluate_torus(points, centre, axis, major, minor, fit.deviation);
    });
    fit.add3("centre", centre);
    fit.add3("direction", axis);
    fit.quantities.push_back({"major radius", major, "of the circle that the tube follows"});
    fit.quantities.push_back({"minor radius", minor, "of the tube"});
    for (int i = 0; i < points.size(); ++i) {
        giVector3 const v = points[i] - centre;
        double const from_circle = std::hypot(axis.cross(v).length().value() - major, axis.dot(v));
        fit.residuals.push_back(from_circle + task.signed_radius(i) - minor);
    }
    return found;
}

/// How probe radii find their side.
enum class Probe { none, inside_or_outside, by_normals };

struct Primitive {
    char const * name;
    char const * description;
    int fewest_points;
    int spread;         // the directions in which points must spread to determine it
    bool is_seen_flat;  // only x and y count
    bool in_given_plane;
    bool has_axis;
    Probe probe;
    int (*fit)(Task const &, Fit &);
};

inline constexpr std::array<Primitive, 16> primitives{{
    {"line", "line in x and y", 2, 1, true, false, false, Probe::by_normals, fit_line},
    {"line2", "line in the plane of --origin and --normal", 2, 1, false, true, false, Probe::none, fit_line2},
    {"line3", "line in space", 2, 1, false, false, false, Probe::none, fit_line3},
    {"plane", "plane", 3, 2, false, false, false, Probe::by_normals, fit_plane},
    {"circle", "circle in x and y", 3, 2, true, false, false, Probe::inside_or_outside, fit_circle},
    {"circle2", "circle in the plane of --origin and --normal", 3, 2, false, true, false, Probe::none, fit_circle2},
    {"circle3", "circle in space", 3, 2, false, false, false, Probe::none, fit_circle3},
    {"sphere", "sphere", 4, 3, false, false, false, Probe::inside_or_outside, fit_sphere},
    {"cylinder", "cylinder", 5, 3, false, false, true, Probe::inside_or_outside, fit_cylinder},
    {"cone", "cone", 6, 3, false, false, true, Probe::inside_or_outside, fit_cone},
    {"ellipse", "ellipse in x and y", 5, 2, true, false, false, Probe::none, fit_ellipse},
    {"ellipse2", "ellipse in the plane of --origin and --normal", 5, 2, false, true, false, Probe::none, fit_ellipse2},
    {"torus", "torus", 7, 3, false, false, false, Probe::inside_or_outside, fit_torus},
    {"direct_circle", "circle in x and y, in one pass", 3, 2, true, false, false, Probe::none, fit_direct_circle},
    {"direct_ellipse", "ellipse in x and y, in one pass", 4, 2, true, false, false, Probe::none, fit_direct_ellipse},
    {"direct_sphere", "sphere, in one pass", 4, 3, false, false, false, Probe::none, fit_direct_sphere},
}};

/// The name for points that spread in fewer directions than the primitive asks for, or nothing. The entries of the
/// library fit such points as they come, with a result that their rounding decides.
inline std::string degeneracy(Primitive const & primitive, giPoint3coDynArr const & points) {
    double size = 0.0;
    giBox3 box;
    giPoint3coDynArr seen(points.size(), 1);
    for (int i = 0; i < points.size(); ++i) {
        giPoint3 const & p = points[i];
        seen.append(giPoint3(p.x(), p.y(), primitive.is_seen_flat ? 0.0 : p.z()));
        box.merge(seen[i]);
        size = std::max({size, std::fabs(p.x()), std::fabs(p.y()), std::fabs(p.z())});
    }
    double const rounding = 8.0 * std::numeric_limits<double>::epsilon() * size;
    giPoint3 point;
    giUnitVec3 axis;
    double deviation = (box.max() - box.min()).length().value();
    if (deviation <= rounding) {
        return "all points coincide";
    }
    if (primitive.spread >= 2 && sqLeastSquareEvaluator::evaluate_line3(seen, point, axis, deviation) == 1 &&
        deviation <= rounding) {
        return "all points lie on one line";
    }
    if (primitive.spread >= 3 && sqLeastSquareEvaluator::evaluate_plane(seen, point, axis, deviation) == 1 &&
        deviation <= rounding) {
        return "all points lie in one plane";
    }
    return "";
}
