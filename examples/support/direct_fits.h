#pragma once

#include "ellipse_fits.h"
#include "task.h"

#include <datumfit/datumfit.h>

#include <cmath>
#include <optional>

/// Why a direct fit came to nothing.
inline char const * reason_of(sqDirectFitStatus status) {
    switch (status) {
        case sqDirectFitTooFewPoints:
            return "too few points for the direct fit";
        case sqDirectFitSingular:
            return "the direct fit is singular: the points lie in a line, or nearly";
        case sqDirectFitDegenerate:
            return "the direct fit is degenerate: the points determine no proper curve";
        default:
            return "there is no direct fit";
    }
}

/// Fits, or tells the failure.
template <typename Direct, typename Points>
std::optional<Direct> fit_directly(Points const & points, Fit & fit) {
    std::optional<Direct> direct;
    sqDirectFitStatus status = sqDirectFitUnfitted;
    fit.timed([&] { return status = direct.emplace(points).status(); });
    if (status != sqDirectFitSuccess) {
        fit.failure = reason_of(status);
        direct.reset();
    }
    return direct;
}

/// Reports a circle or sphere.
template <typename Direct, typename Points>
void add_round(Direct const & direct, Points const & points, Fit & fit) {
    fit.add_radius(direct.radius());
    fit.deviation = direct.chi();
    for (int i = 0; i < points.size(); ++i) {
        fit.residuals.push_back(points[i].distance(direct.centre()).value() - direct.radius());
    }
}

inline int fit_direct_circle(Task const & task, Fit & fit) {
    giPoint2coDynArr const points = seen_along_z(task.file.points);
    auto const circle = fit_directly<sqDirectCircle2>(points, fit);
    if (!circle) {
        return 0;
    }
    fit.add2("centre", circle->centre());
    add_round(*circle, points, fit);
    return 1;
}

inline int fit_direct_sphere(Task const & task, Fit & fit) {
    auto const sphere = fit_directly<sqSphereFit>(task.file.points, fit);
    if (!sphere) {
        return 0;
    }
    fit.add3("centre", sphere->centre());
    add_round(*sphere, task.file.points, fit);
    return 1;
}

/// The conic that a direct fit solves for: A x² + B x y + C y² + D x + E y + F = 0.
inline void add_conic(Ellipse const & e, Fit & fit) {
    double const cosine = std::cos(e.angle), sine = std::sin(e.angle), flatness = e.minor / e.major;
    double const a = 0.5 * (cosine * cosine * flatness + sine * sine / flatness);
    double const b = cosine * sine * (flatness - 1.0 / flatness);
    double const c = 0.5 * (sine * sine * flatness + cosine * cosine / flatness);
    double const x = e.centre.x(), y = e.centre.y();
    fit.quantities.push_back({"conic A", a});
    fit.quantities.push_back({"conic B", b});
    fit.quantities.push_back({"conic C", c});
    fit.quantities.push_back({"conic D", -2.0 * a * x - b * y});
    fit.quantities.push_back({"conic E", -b * x - 2.0 * c * y});
    fit.quantities.push_back({"conic F", a * x * x + b * x * y + c * y * y - 0.5 * e.major * e.minor,
                              "of A x^2 + B x y + C y^2 + D x + E y + F = 0 with 4 A C - B^2 = 1"});
}

/// The deviation is that of the orthogonal distances, for comparison with other ellipses.
inline int fit_direct_ellipse(Task const & task, Fit & fit) {
    giPoint2coDynArr const points = seen_along_z(task.file.points);
    auto const direct = fit_directly<sqDirectEllipse2>(points, fit);
    if (!direct) {
        return 0;
    }
    Ellipse const e{direct->centre(), direct->a_length(), direct->b_length(),
                    utMath::remd(direct->angle().angle(giAngleRadians), utMath::pi())};
    fit.add2("centre", e.centre);
    add_semi_axes(e.major, e.minor, fit, e.major == e.minor ? "a circle: no ellipse fits these points directly" : "");
    add_angle(e.angle, fit);
    add_conic(e, fit);
    fit.residuals = e.distances(points);
    for (double const residual : fit.residuals) {
        fit.deviation += residual * residual;
    }
    fit.deviation = std::sqrt(fit.deviation / points.size());
    return 1;
}
