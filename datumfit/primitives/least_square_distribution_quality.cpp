#include <datumfit/primitives/least_square_distribution_quality.h>

#include <datumfit/primitives/least_square_probed_circle2.h>
#include <datumfit/primitives/least_square_sphere.h>
#include <datumfit/primitives/plane_frame.h>
#include <datumfit/primitives/principal_axes.h>
#include <datumfit/primitives/quality_of_model.h>

#include <algorithm>
#include <cmath>
#include <utility>

using namespace datumfit::internal;

namespace {

// What a whole circle and a whole sphere give, about.
constexpr double whole_circle = 0.708;
constexpr double whole_sphere = 0.578;

// Points are never less scattered than this.
constexpr double least_scatter = 0.0001;

// By how much scatter counts more than extent.
constexpr double scatter_of_line = 9.0;
constexpr double scatter_in_space = 999.0;

// The smallest and the greatest of some numbers.
struct span {
    double lower = 0.0, upper = 0.0;
    bool empty = true;

    void add(double x) {
        lower = empty ? x : std::min(lower, x);
        upper = empty ? x : std::max(upper, x);
        empty = false;
    }
    double extent() const { return upper - lower; }
};

double quality_of_line(double extent, double scatter, double weight) {
    return extent / (weight * std::max(scatter, least_scatter) + extent);
}

}  // namespace

double sqLeastSquareDistributionQuality::distribution_quality_line(giPoint2coDynArr const & points,
                                                                   giPoint2 const & point,
                                                                   giUnitVec2 const & direction) {
    span along;
    double across = 0.0;
    for (int i = 0; i < points.size(); ++i) {
        giVector2 const v = points[i] - point;
        along.add(direction.dot(v));
        across = std::max(across, std::abs(direction.cross(v)));
    }
    return quality_of_line(along.extent(), across, scatter_of_line);
}

double sqLeastSquareDistributionQuality::distribution_quality_line2(giPoint3 const & origin, giUnitVec3 const & normal,
                                                                    giPoint3coDynArr const & points,
                                                                    giPoint3 const & point,
                                                                    giUnitVec3 const & direction) {
    giPoint3coDynArr flat(points.size() + 1, 1);
    for (int i = 0; i < points.size(); ++i) flat.append(points[i] - normal.dot(points[i] - origin) * normal);
    return distribution_quality_line3(flat, point, direction);
}

double sqLeastSquareDistributionQuality::distribution_quality_line3(giPoint3coDynArr const & points,
                                                                    giPoint3 const & point,
                                                                    giUnitVec3 const & direction) {
    span along;
    double across = 0.0;
    for (int i = 0; i < points.size(); ++i) {
        giVector3 const v = points[i] - point;
        along.add(direction.dot(v));
        across = std::max(across, direction.cross(v).length().value());
    }
    return quality_of_line(along.extent(), across, scatter_in_space);
}

double sqLeastSquareDistributionQuality::distribution_quality_plane(giPoint3coDynArr const & points, giPoint3 const &,
                                                                    giUnitVec3 const &) {
    giPoint3 centroid;
    mlVector s;
    mlMatrix v;
    if (principal_axes(points, centroid, s, v) == 0) return 0.0;
    int order[3] = {0, 1, 2};
    for (auto const & [i, j] : {std::pair<int, int>(0, 1), {0, 2}, {1, 2}}) {
        if (std::abs(s[order[j]]) > std::abs(s[order[i]])) std::swap(order[i], order[j]);
    }
    double extent[3];
    for (int k = 0; k < 3; ++k) {
        giVector3 const axis(v(0, order[k]), v(1, order[k]), v(2, order[k]));
        span along;
        for (int i = 0; i < points.size(); ++i) along.add(axis.dot(points[i] - centroid));
        extent[k] = along.extent();
    }
    double const area = extent[0] * extent[1];
    double const shape = std::min(extent[0], extent[1]) / (std::max(extent[0], extent[1]) + least_scatter);
    double const height = std::max(extent[2], least_scatter);
    return std::sqrt(shape) * area / (scatter_in_space * height * height + area);
}

double sqLeastSquareDistributionQuality::distribution_quality_circle(giPoint2coDynArr const & points,
                                                                     giPoint2 const & centre, double radius) {
    if (points.size() < fewest_graded_points) return 0.0;
    return quality_of(sqLeastSquareCircle2(points), {centre.x(), centre.y(), radius}, whole_circle);
}

double sqLeastSquareDistributionQuality::distribution_quality_circle2(giPoint3 const & origin,
                                                                      giUnitVec3 const & normal,
                                                                      giPoint3coDynArr const & points,
                                                                      giPoint3 const & centre, double radius) {
    plane_frame const frame(origin, normal);
    giPoint2coDynArr flat;
    frame.project(points, flat);
    giPoint3 const c = frame.xform() * centre;
    return distribution_quality_circle(flat, giPoint2(c.x(), c.y()), radius);
}

double sqLeastSquareDistributionQuality::distribution_quality_circle3(giPoint3coDynArr const & points,
                                                                      giPoint3 const & centre,
                                                                      giUnitVec3 const & normal, double radius) {
    if (points.size() < fewest_graded_points) return 0.0;
    return distribution_quality_circle2(centre, normal, points, centre, radius);
}

double sqLeastSquareDistributionQuality::distribution_quality_probed_circle(giPoint2coDynArr const & points,
                                                                            doublecoDynArr const & radii, int inside,
                                                                            giPoint2 const & centre, double radius) {
    if (points.size() < fewest_graded_points) return 0.0;
    return quality_of(sqLeastSquareProbedCircle2(points, radii, inside), {centre.x(), centre.y(), radius}, 1.0);
}

double sqLeastSquareDistributionQuality::distribution_quality_sphere(giPoint3coDynArr const & points,
                                                                     giPoint3 const & centre, double radius) {
    if (points.size() < fewest_graded_points) return 0.0;
    return quality_of(sqLeastSquareSphere(points), {centre.x(), centre.y(), centre.z(), radius}, whole_sphere);
}
