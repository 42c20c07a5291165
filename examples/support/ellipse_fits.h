#pragma once

#include "task.h"

#include <datumfit/datumfit.h>

#include <cmath>
#include <vector>

/// An ellipse in the plane. The angle of its major axis from x is in radians.
struct Ellipse {
    giPoint2 centre;
    double major = 0.0, minor = 0.0, angle = 0.0;

    /// The distances of points from it, positive outside.
    std::vector<double> distances(giPoint2coDynArr const & points) const {
        double const values[] = {major, minor, centre.x(), centre.y(), angle};
        mlVector parameters(utConvert, values, 5), found;
        sqLeastSquareEllipse(points).distances(parameters, found);
        std::vector<double> of_points;
        for (int i = 0; i < points.size(); ++i) {
            of_points.push_back(found[i]);
        }
        return of_points;
    }
};

inline void add_semi_axes(double major, double minor, Fit & fit, char const * note = "") {
    fit.quantities.push_back({"major semi-axis", major});
    fit.quantities.push_back({"minor semi-axis", minor, note});
}

inline void add_angle(double radians, Fit & fit) {
    double const degrees = giAngle(giAngleRadians, radians).angle(giAngleDegrees);
    fit.quantities.push_back({"angle", degrees, "degrees, of the major axis from x"});
    fit.quantities.push_back({"angle in radians", radians});
}

inline int fit_ellipse(Task const & task, Fit & fit) {
    giPoint2coDynArr const points = seen_along_z(task.file.points);
    Ellipse e;
    int const found = fit.timed([&] {
        return sqLeastSquareEvaluator::evaluate_ellipse(points, e.centre, e.major, e.minor, e.angle, fit.deviation);
    });
    fit.add2("centre", e.centre);
    add_semi_axes(e.major, e.minor, fit);
    add_angle(e.angle, fit);
    fit.residuals = e.distances(points);
    return found;
}

/// Distances of the points from the ellipse in space have no sign.
inline int fit_ellipse2(Task const & task, Fit & fit) {
    giPoint3coDynArr const & points = task.file.points;
    giUnitVec3 const reference = task.normal.any_normal();
    giPoint3 centre;
    Ellipse e;
    int const found = fit.timed([&] {
        return sqLeastSquareEvaluator::evaluate_ellipse2(task.origin, reference, task.normal, points, centre, e.major,
                                                         e.minor, e.angle, fit.deviation);
    });
    giVector3 const across = task.normal.cross(reference);
    fit.add3("centre", centre);
    fit.add3("direction", std::cos(e.angle) * reference + std::sin(e.angle) * across, "of the major axis");
    add_semi_axes(e.major, e.minor, fit);

    giPoint2coDynArr flat(points.size(), 1);
    for (int i = 0; i < points.size(); ++i) {
        giVector3 const v = points[i] - centre;
        flat.append(giPoint2(reference.dot(v), across.dot(v)));
    }
    e.centre = giPoint2(0.0, 0.0);
    fit.residuals = e.distances(flat);
    for (int i = 0; i < points.size(); ++i) {
        double & residual = fit.residuals[static_cast<std::size_t>(i)];
        residual = std::hypot(residual, task.normal.dot(points[i] - centre));
    }
    return found;
}
