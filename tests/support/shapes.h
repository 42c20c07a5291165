#pragma once

#include <datumfit/datumfit.h>

#include <cmath>
#include <limits>

/// Where a part lies and how large it is.
struct placement {
    char const * name;
    double offset, size;
};

inline placement const placements[] = {{"unit", 0.0, 1.0}, {"far", 1e6, 1.0}, {"tiny", 1.0, 1e-3}, {"large", 1e5, 1e5}};

inline char const * name_of(placement const & at) {
    return at.name;
}

/// A point as far from the origin as told in each coordinate, none of them special.
inline giPoint3 general_point(double offset) {
    return giPoint3(offset + 0.37, -offset / 3.0 + 1.21, offset / 7.0 - 0.83);
}
inline giPoint2 general_point2(double offset) {
    return general_point(offset).xy();
}

inline giUnitVec3 general_direction() {
    return giUnitVec3(0.31, -0.52, 0.79);
}

/// Numbers of the unit normal distribution, the same on every machine.
class noise {
public:
    double operator()() {
        double sum = -6.0;
        for (int i = 0; i < 12; ++i) sum += random_.zero_one();
        return sum;
    }
    giVector3 vector(double scale) {
        double const x = (*this)(), y = (*this)();
        return giVector3(scale * x, scale * y, scale * (*this)());
    }

private:
    mlRandom random_{4711};
};

/// n points of an arc that begins at a general angle.
inline giPoint2coDynArr arc(giPoint2 const & centre, double radius, double angle, int n, double form_error = 0.0) {
    giPoint2coDynArr points(n, 1);
    noise error;
    for (int i = 0; i < n; ++i) {
        double const t = 0.7 + angle * i / n;
        double const r = radius * (1.0 + form_error * error());
        points.append(giPoint2(centre.x() + r * std::cos(t), centre.y() + r * std::sin(t)));
    }
    return points;
}

/// The same in space, about an axis.
inline giPoint3coDynArr arc(giPoint3 const & centre, giUnitVec3 const & axis, double radius, double angle, int n) {
    giUnitVec3 const u = axis.any_normal(), v(axis.cross(u));
    giPoint2coDynArr const flat = arc(giPoint2(0.0, 0.0), radius, angle, n);
    giPoint3coDynArr points(n, 1);
    for (int i = 0; i < n; ++i) points.append(centre + (flat[i].x() * u + flat[i].y() * v));
    return points;
}

/// n points of a spiral over the cap of a sphere about a general axis.
inline giPoint3coDynArr sphere_cap(giPoint3 const & centre, double radius, double half_angle, int n,
                                   double form_error = 0.0) {
    giUnitVec3 const w = general_direction(), u = w.any_normal(), v(w.cross(u));
    giPoint3coDynArr points(n, 1);
    noise error;
    for (int i = 0; i < n; ++i) {
        double const polar = half_angle * std::sqrt((i + 0.5) / n), t = 2.4 * i;
        double const r = radius * (1.0 + form_error * error());
        points.append(centre + r * (std::cos(polar) * w + std::sin(polar) * (std::cos(t) * u + std::sin(t) * v)));
    }
    return points;
}

/// n points of a rectangle with normal general_direction(), about its centre.
inline giPoint3coDynArr rectangle(giPoint3 const & centre, double length, double width, int n,
                                  double form_error = 0.0) {
    giUnitVec3 const w = general_direction(), u = w.any_normal(), v(w.cross(u));
    giPoint3coDynArr points(n, 1);
    noise error;
    for (int i = 0; i < n; ++i) {
        double const a = (i + 0.5) / n - 0.5, b = 0.618 * i - std::floor(0.618 * i) - 0.5;
        points.append(centre + (length * a * u + width * b * v + length * form_error * error() * w));
    }
    return points;
}

/// The rounding that coordinates bring into a part that lies there.
inline double rounding_at(placement const & at) {
    return std::numeric_limits<double>::epsilon() * (at.offset + at.size);
}

/// The sine of the angle between two axes, whatever their sense.
inline double angle_between(giUnitVec3 const & a, giUnitVec3 const & b) {
    return a.cross(b).length().value();
}

/// Copies of one number.
inline doublecoDynArr filled(int n, double x) {
    doublecoDynArr numbers(n, 1);
    for (int i = 0; i < n; ++i) numbers.append(x);
    return numbers;
}
