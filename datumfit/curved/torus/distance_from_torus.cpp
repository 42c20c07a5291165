#include <datumfit/curved/torus/distance_from_torus.h>

#include <datumfit/extremal/convex_hull.h>

#include <cmath>

using datumfit::internal::orthogonal_pair;

namespace {
constexpr int variables_of_an_axis = 4;
constexpr double no_torus = 100.0;  // what the objective gives where there is none
}  // namespace

sqDistanceFromTorus::sqDistanceFromTorus(giPoint3coDynArr const & points, doublecoDynArr const & radii, int inside,
                                         giPoint3 const & start_point, giVector3 const & start_axis)
    : mlFunctionN1(variables_of_an_axis), points_(points), start_point_(start_point), start_axis_(start_axis),
      circle_(points.size(), radii.size() != 0 ? &radii : nullptr, inside) {
    orthogonal_pair(u_dir_, v_dir_, start_axis_);
}

sqDistanceFromTorus::~sqDistanceFromTorus() = default;

double sqDistanceFromTorus::function(mlSlice const & x) const {
    giPoint3 centre;
    giVector3 axis;
    double major, minor, deviation;
    return torus_data(x, centre, axis, major, minor, deviation) != 0 ? deviation : no_torus;
}

int sqDistanceFromTorus::torus_data(mlSlice const & x, giPoint3 & centre, giVector3 & axis, double & major,
                                    double & minor, double & deviation) const {
    fold(x);
    if (!circle_.fit()) return 0;
    giPoint2 const section = circle_.centre();
    axis = torus_axis(x[2], x[3]);
    minor = circle_.radius();
    major = section.x();
    deviation = major < 0.0 ? no_torus : circle_.deviation();
    centre = axis_point(x) + section.y() * axis;
    return 1;
}

giVector3 sqDistanceFromTorus::torus_axis(double x2, double x3) const {
    return std::sin(x3) * v_dir_ + std::cos(x3) * (std::sin(x2) * u_dir_ + std::cos(x2) * start_axis_);
}

double sqDistanceFromTorus::projection_hull_area(mlSlice const & x) {
    giPoint2coDynArr hull;
    fold(x);
    sq_calculate_convex_hull(circle_.points(), hull);
    double twice = 0.0;
    for (int i = 0; i < hull.size(); ++i) {
        giPoint2 const & p = hull.read(i);
        giPoint2 const & next = hull.read(i + 1 < hull.size() ? i + 1 : 0);
        twice += (next.y() + p.y()) * (next.x() - p.x());
    }
    return std::abs(0.5 * twice);
}

void sqDistanceFromTorus::get_variables(giPoint3 const & point, giVector3 const & vector, mlVector & x) const {
    x[2] = std::atan2(vector.dot(u_dir_), vector.dot(start_axis_));
    x[3] = std::asin(vector.dot(v_dir_));
    giVector3 const b = torus_axis(x[2], x[3]);
    giVector3 const d = point - start_point_;
    giVector3 const in_plane = d - (d.dot(start_axis_) / b.dot(start_axis_)) * b;
    x[0] = in_plane.dot(u_dir_);
    x[1] = in_plane.dot(v_dir_);
}

giPoint3 sqDistanceFromTorus::axis_point(mlSlice const & x) const {
    return start_point_ + (x[0] * u_dir_ + x[1] * v_dir_);
}

// Distance from the axis, coordinate along it.
void sqDistanceFromTorus::fold(mlSlice const & x) const {
    giVector3 const axis = torus_axis(x[2], x[3]);
    giPoint3 const point = axis_point(x);
    double const a[3] = {axis.x(), axis.y(), axis.z()};
    double const c[3] = {point.x(), point.y(), point.z()};
    giPoint2coDynArr & folded = circle_.points();
    for (int i = 0; i < points_.size(); ++i) {
        giPoint3 const & p = points_[i];
        double const v[3] = {p.x() - c[0], p.y() - c[1], p.z() - c[2]};
        double const across[3] = {a[1] * v[2] - a[2] * v[1], a[2] * v[0] - a[0] * v[2], a[0] * v[1] - a[1] * v[0]};
        double const square = across[0] * across[0] + across[1] * across[1] + across[2] * across[2];
        folded[i] = giPoint2(std::sqrt(square), a[0] * v[0] + a[1] * v[1] + a[2] * v[2]);
    }
}

sqRotationalProjectionHullArea::sqRotationalProjectionHullArea(sqDistanceFromTorus & distance)
    : mlFunctionN1(variables_of_an_axis), distance_(distance) {}

sqRotationalProjectionHullArea::~sqRotationalProjectionHullArea() = default;

double sqRotationalProjectionHullArea::function(mlSlice const & x) const {
    return distance_.projection_hull_area(x);
}

void datumfit::internal::orthogonal_pair(giVector3 & u, giVector3 & v, giVector3 const & a) {
    giVector3 const by_x = a.cross(giVector3(giAxisX)), by_y = a.cross(giVector3(giAxisY));
    u = by_x.length() > by_y.length() ? by_x : by_y;
    u.unitize();
    v = a.cross(u);
    v.unitize();
}
