#pragma once

#include "support/shapes.h"
#include "support/vectors.h"

#include <cmath>

/// A cone in general position whose sections across its axis are circles of n points; with the outward normals.
struct cone_shape {
    giPoint3 apex;
    giUnitVec3 axis;  // towards the apex
    double half_angle;
    giPoint3coDynArr points;
    giUnitVec3coDynArr normals;

    cone_shape(giPoint3 const & at, giUnitVec3 const & towards, double angle)
        : apex(at), axis(towards), half_angle(angle) {}

    /// A section with its centre so far from the apex.
    cone_shape & section(double depth, int n, double turned = 0.3) {
        giUnitVec3 const u = axis.any_normal(), v(axis.cross(u));
        double const s = std::sin(half_angle), c = std::cos(half_angle);
        for (int i = 0; i < n; ++i) {
            double const t = turned + 6.28318530717958648 * i / n;
            giVector3 const out = std::cos(t) * u + std::sin(t) * v;
            points.append(apex - depth * axis + depth * s / c * out);
            normals.append(c * out + s * axis);
        }
        return *this;
    }
};

/// The unit direction and the apex that parameters of a cone tell.
inline giUnitVec3 axis_of(mlVector const & p) {
    return giUnitVec3(p[3], p[4], p[5]);
}
inline giPoint3 apex_of(mlVector const & p) {
    return giPoint3(p[0], p[1], p[2]) + p[6] / std::sin(p[7]) * axis_of(p);
}

inline double root_mean_square(double sum, giPoint3coDynArr const & points) {
    return std::sqrt(sum / points.size());
}
