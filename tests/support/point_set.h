#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace reference {

/// What a set of points is fitted by. A circle in space is fitted in two ways: in the plane that is fitted first, or as
/// a whole. The primitives of the plane have points with z = 0.
enum class Primitive { line2, line3, plane, circle, circle_in_plane, circle3, sphere, cylinder, cone };

inline char const * name(Primitive primitive) {
    constexpr std::array<char const *, 9> names = {"line2",   "line3",  "plane",    "circle", "circle_in_plane",
                                                   "circle3", "sphere", "cylinder", "cone"};
    return names[static_cast<std::size_t>(primitive)];
}

inline bool is_in_plane(Primitive primitive) {
    return primitive == Primitive::line2 || primitive == Primitive::circle;
}
inline bool is_line(Primitive primitive) {
    return primitive == Primitive::line2 || primitive == Primitive::line3;
}
inline bool is_mantle(Primitive primitive) {
    return primitive == Primitive::cylinder || primitive == Primitive::cone;
}
/// Whether the place may be any point along the direction.
inline bool has_axis(Primitive primitive) {
    return is_line(primitive) || is_mantle(primitive);
}

struct PointSet {
    Primitive primitive = Primitive::plane;
    std::vector<std::array<double, 3>> points;
    std::vector<double> radii;                 // of the probe, one a point; empty without a probe
    bool inside = true;                        // where the probe centres of something round lie
    std::array<double, 3> approximate_normal;  // of a probed line or plane, on the side of the probe centres
    double cone_tolerance = 0.05;              // radians; a cone as near as this to a cylinder or a plane is none

    bool is_probed() const { return !radii.empty(); }
};

/// A vector with eleven bits more than a double.
using Exact3 = std::array<long double, 3>;

inline long double dot(Exact3 const & a, Exact3 const & b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
inline Exact3 cross(Exact3 const & a, Exact3 const & b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
inline long double length(Exact3 const & v) {
    return std::sqrt(dot(v, v));
}
/// a + t b.
inline Exact3 along(Exact3 const & a, long double t, Exact3 const & b) {
    return {a[0] + t * b[0], a[1] + t * b[1], a[2] + t * b[2]};
}
inline Exact3 unit(Exact3 const & v) {
    return along({}, 1.0L / length(v), v);
}

/// A fitted primitive.
struct Solution {
    Exact3 place{};              // the centre, or a point of the axis, line or plane
    Exact3 direction{};          // of the axis, towards the growing radius of a cone, or of the line, or the normal
    long double size = 0;        // the radius; of a cone, how far the place lies from the surface and inside
    long double rms = -1;        // root mean square of the distances; negative when not known
    long double half_angle = 0;  // of a cone
};

/// Standard deviations for unit noise of each coordinate: of the place (for an axis, line or plane, of its foot of the
/// centroid, for a line in one direction across it), of the direction in radians, of the size, of the half angle.
struct Gain {
    long double place = 0, angle = 0, size = 0, half_angle = 0;
};

}  // namespace reference
