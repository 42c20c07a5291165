#pragma once

#include "support/shapes.h"

#include <datumfit/foundation/surfaces/mesh_surf.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace mesh_tests {

constexpr double pi = 3.14159265358979323846;

struct mesh {
    giPoint3coDynArr vertices;
    sknTrianglecoDynArr triangles;

    sknMeshSurf surface() const { return sknMeshSurf(vertices, triangles); }
    void add_quad(int a, int b, int c, int d) {
        triangles.append({a, b, c});
        triangles.append({a, c, d});
    }
};

/// Quads over a grid of m by n, of the place at (i / m, j / n); round meshes close at i = m.
template <class Place>
mesh grid(int m, int n, Place const & place) {
    mesh result;
    for (int j = 0; j <= n; ++j) {
        for (int i = 0; i <= m; ++i) result.vertices.append(place(1.0 * i / m, 1.0 * j / n));
    }
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i < m; ++i) {
            int const a = (m + 1) * j + i;
            result.add_quad(a, a + 1, a + m + 2, a + m + 1);
        }
    }
    return result;
}

/// Closed only by equal vertices, with triangles without area at its poles. Outside is where normals point to.
inline mesh sphere(int m, int n) {
    return grid(m, n, [&](double s, double t) {
        double const phi = s < 1.0 ? 2.0 * pi * s : 0.0, ring = t < 1.0 ? std::sin(pi * t) : 0.0;
        return giPoint3(ring * std::cos(phi), ring * std::sin(phi), -std::cos(pi * t));
    });
}

/// The mantle of a prism of m sides about z, of radius and height 1, open at both ends.
inline mesh mantle(int m) {
    return grid(m, 1, [](double s, double t) {
        double const phi = s < 1.0 ? 2.0 * pi * s : 0.0;
        return giPoint3(std::cos(phi), std::sin(phi), t);
    });
}

inline mesh box(double x, double y, double z) {
    mesh result;
    for (int i = 0; i < 8; ++i) result.vertices.append(giPoint3(i & 1 ? x : 0.0, i & 2 ? y : 0.0, i & 4 ? z : 0.0));
    result.add_quad(0, 2, 3, 1);
    result.add_quad(4, 5, 7, 6);
    result.add_quad(0, 1, 5, 4);
    result.add_quad(2, 6, 7, 3);
    result.add_quad(0, 4, 6, 2);
    result.add_quad(1, 3, 7, 5);
    return result;
}

/// Triangles among few vertices, so that many share an edge and some all corners or one twice.
inline mesh tangle(int vertices, int triangles) {
    mesh result;
    noise error;
    mlRandom draw(7);
    for (int i = 0; i < vertices; ++i) result.vertices.append(giPoint3(giOrigin) + error.vector(1.0));
    auto const vertex = [&] { return std::min(vertices - 1, static_cast<int>(vertices * draw.zero_one())); };
    for (int i = 0; i < triangles; ++i) {
        int const a = vertex(), b = vertex();
        result.triangles.append({a, b, vertex()});
    }
    return result;
}

/// Each triangle with vertices of its own.
inline mesh soup(mesh const & m) {
    mesh result;
    for (int t = 0; t < m.triangles.size(); ++t) {
        sknTriangle const & corners = m.triangles.read(t);
        int const n = 3 * t;
        for (int const v : {corners.a, corners.b, corners.c}) result.vertices.append(m.vertices.read(v));
        result.triangles.append({n, n + 1, n + 2});
    }
    return result;
}

inline mesh moved(mesh m, giXform3 const & x) {
    for (int i = 0; i < m.vertices.size(); ++i) m.vertices[i] = x * m.vertices.read(i);
    return m;
}

/// Turned into general directions and scaled, so that no coordinate is special.
inline giXform3 to(placement const & at) {
    giXform3 const turn(giXformRotate, giPoint3(0.1, 0.2, 0.3), general_direction(), giAngle(giAngleRadians, 0.7));
    giXform3 const turned(giXformProduct, giXform3(giXformScale, at.size, at.size, at.size), turn);
    return giXform3(giXformProduct, giXform3(giXformTranslate, general_point(at.offset).release()), turned);
}

inline sknSurfPointList feet_of(sknSurf const & surface, giPoint3 const & p) {
    sknSurfPointList feet(8, 64);
    int status = -1;
    surface.project_point(p, feet, status);
    return status == (feet.size() > 0 ? 0 : 1) ? feet : sknSurfPointList();
}

inline giUnitVec3 normal_of(sknSurf const & surface, sknSurfPoint const & foot) {
    return surface.normal_at(foot, 1e-5, giAngle(giAngleRadians, 1e-5));
}

// What follows finds feet without regard to what is joined, in more digits.

struct exact3 {
    long double x, y, z;

    exact3(long double x_, long double y_, long double z_) : x(x_), y(y_), z(z_) {}
    exact3(giPoint3 const & p) : exact3(p.x(), p.y(), p.z()) {}
    exact3 operator-(exact3 const & b) const { return {x - b.x, y - b.y, z - b.z}; }
    exact3 plus(long double t, exact3 const & b) const { return {x + t * b.x, y + t * b.y, z + t * b.z}; }
    long double dot(exact3 const & b) const { return x * b.x + y * b.y + z * b.z; }
    exact3 cross(exact3 const & b) const { return {y * b.z - z * b.y, z * b.x - x * b.z, x * b.y - y * b.x}; }
    long double length() const { return std::sqrt(dot(*this)); }
};

struct exact_triangle {
    exact3 corners[3];

    exact3 normal() const { return (corners[1] - corners[0]).cross(corners[2] - corners[0]); }
    exact3 nearest(exact3 const & p) const {
        exact3 const n = normal();
        bool inside = true;
        exact3 best = corners[0];
        for (int k = 0; k < 3; ++k) {
            exact3 const &a = corners[k], e = corners[(k + 1) % 3] - a, d = p - a;
            inside = inside && n.dot(e.cross(d)) > 0;
            exact3 const q = a.plus(std::clamp(d.dot(e) / e.dot(e), 0.0L, 1.0L), e);
            if ((p - q).length() < (p - best).length()) best = q;
        }
        return inside ? p.plus(-(p - corners[0]).dot(n) / n.dot(n), n) : best;
    }
};

/// The distances at which a point has feet, ascending: on each triangle the nearest place, if no triangle that touches
/// this place comes nearer. Places closer together than the tolerance are one.
inline std::vector<double> foot_distances(mesh const & m, giPoint3 const & p, double tolerance) {
    std::vector<exact_triangle> triangles;
    for (int t = 0; t < m.triangles.size(); ++t) {
        sknTriangle const & corners = m.triangles.read(t);
        exact_triangle const e{{m.vertices.read(corners.a), m.vertices.read(corners.b), m.vertices.read(corners.c)}};
        if (e.normal().length() > 0) triangles.push_back(e);
    }
    std::vector<exact3> feet;
    for (exact_triangle const & t : triangles) {
        exact3 const foot = t.nearest(p);
        long double const distance = (foot - p).length();
        bool const known = std::any_of(feet.begin(), feet.end(),
                                       [&](exact3 const & other) { return (foot - other).length() < tolerance; });
        bool const lowest = std::all_of(triangles.begin(), triangles.end(), [&](exact_triangle const & other) {
            return (other.nearest(foot) - foot).length() > tolerance * 1e-2L ||
                   (other.nearest(p) - p).length() > distance - tolerance * 1e-2L;
        });
        if (lowest && !known) feet.push_back(foot);
    }
    std::vector<double> distances;
    for (exact3 const & foot : feet) distances.push_back(static_cast<double>((foot - p).length()));
    std::sort(distances.begin(), distances.end());
    return distances;
}

}  // namespace mesh_tests
