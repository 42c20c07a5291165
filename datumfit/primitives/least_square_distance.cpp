#include <datumfit/primitives/least_square_distance.h>

#include <datumfit/foundation/geometry/box2.h>
#include <datumfit/foundation/geometry/box3.h>
#include <datumfit/primitives/point_sums.h>

#include <algorithm>
#include <cmath>

using datumfit::internal::mean_of_points;
using datumfit::internal::plain;

namespace {

// A point nearer to the axis than this has no radial direction of its own.
constexpr double on_the_axis = 1e-7;

constexpr int guess_directions = 7;

giUnitVec3 const guess_table[guess_directions] = {
    giUnitVec3(1.0, 0.0, 0.0),  giUnitVec3(0.0, 1.0, 0.0),  giUnitVec3(0.0, 0.0, 1.0),   giUnitVec3(1.0, 1.0, 1.0),
    giUnitVec3(-1.0, 1.0, 1.0), giUnitVec3(1.0, -1.0, 1.0), giUnitVec3(-1.0, -1.0, 1.0),
};

template <class Box, class Points>
double diagonal(Points const & points) {
    if (points.size() == 0) return 0.0;
    Box box;
    for (int i = 0; i < points.size(); ++i) box.merge(points[i]);
    return (box.max() - box.min()).length().value();
}

}  // namespace

sqLeastSquareDistance2::sqLeastSquareDistance2(int n_parameters, giPoint2coDynArr const & points)
    : mlDistanceLeastSquares(n_parameters, points.size()), points_(&points) {}

sqLeastSquareDistance2::~sqLeastSquareDistance2() = default;

giPoint2 sqLeastSquareDistance2::centroid() const {
    if (points().size() == 0) return giPoint2();
    double m[2];
    mean_of_points(plain(points()), 2, points().size(), m);
    return giPoint2(m[0], m[1]);
}

double sqLeastSquareDistance2::range() const {
    return diagonal<giBox2>(points());
}

sqLeastSquareDistance3::sqLeastSquareDistance3(int n_parameters, giPoint3coDynArr const & points)
    : mlDistanceLeastSquares(n_parameters, points.size()), points_(&points) {}

sqLeastSquareDistance3::~sqLeastSquareDistance3() = default;

giPoint3 sqLeastSquareDistance3::centroid() const {
    if (points().size() == 0) return giPoint3();
    double m[3];
    mean_of_points(plain(points()), 3, points().size(), m);
    return giPoint3(m[0], m[1], m[2]);
}

double sqLeastSquareDistance3::range() const {
    return diagonal<giBox3>(points());
}

double sqLeastSquareDistance3::F(giPoint3 const & origin, giUnitVec3 const & direction, giPoint3 const & point) {
    return direction.cross(point - origin).length().value();
}

double sqLeastSquareDistance3::G(giPoint3 const & origin, giUnitVec3 const & direction, giPoint3 const & point) {
    return direction.dot(point - origin);
}

void sqLeastSquareDistance3::F_G_and_derivatives(giPoint3 const & origin, giUnitVec3 const & direction,
                                                 giPoint3 const & point, double & g, mlVector & dg, double & f,
                                                 mlVector & df) {
    giVector3 const out = point - origin;
    double const v[3] = {out.x(), out.y(), out.z()};
    double const d[3] = {direction.x(), direction.y(), direction.z()};
    g = direction.dot(out);
    f = direction.cross(out).length().value();
    for (int k = 0; k < 3; ++k) {
        dg[k] = -d[k];
        df[k] = std::abs(f) > on_the_axis ? (d[k] * g - v[k]) / f : std::sqrt(std::max(1.0 - d[k] * d[k], 0.0));
    }
    for (int k = 0; k < 3; ++k) {
        dg[3 + k] = v[k] - d[k] * g;
        df[3 + k] = g * df[k];
    }
}

giUnitVec3 const & sqLeastSquareDistance3::guess_direction(int i) {
    return guess_table[i];
}

int sqLeastSquareDistance3::num_guess_directions() {
    return guess_directions;
}
