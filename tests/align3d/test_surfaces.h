#pragma once

#include <datumfit/align3d/probed_point3.h>
#include <datumfit/foundation/geometry/workplane3.h>
#include <datumfit/foundation/maths/random.h>
#include <datumfit/foundation/surfaces/surf.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace align3d_tests {

/// Rectangles in space; the feet are the nearest points of each, the nearest first. The sizes of a host's own.
class rectangles : public sknSurf {
public:
    void add(giPoint3 const & centre, giUnitVec3 const & v, giUnitVec3 const & normal, double half_u, double half_v) {
        faces_.push_back({giWorkplane3(centre, v, normal), half_u, half_v});
    }

    void project_point(giPoint3 const & point, sknSurfPointList & feet, int & status) const override {
        std::vector<sknSurfPoint> found;
        for (face const & f : faces_) {
            giPoint3 const p = f.frame.to_work(point);
            giPoint3 const foot(std::clamp(p.x(), -f.half_u, f.half_u), std::clamp(p.y(), -f.half_v, f.half_v), 0.0);
            found.push_back({static_cast<double>(found.size()), 0.0, f.frame.to_world(foot)});
        }
        std::stable_sort(found.begin(), found.end(), [&](sknSurfPoint const & a, sknSurfPoint const & b) {
            return a.point.distance(point) < b.point.distance(point);
        });
        for (sknSurfPoint const & foot : found) feet.append(foot);
        status = found.empty() ? 1 : 0;
    }
    giUnitVec3 normal_at(sknSurfPoint const & at, double, giAngle const &) const override {
        return faces_.at(static_cast<std::size_t>(at.u)).frame.w_vector();
    }
    void clone(sknSurfPtr & copy) const override { copy = new rectangles(*this); }
    void apply(giXform3 const & x) override {
        for (face & f : faces_) {
            giVector3 const v = f.frame.v_vector(), w = f.frame.w_vector();
            f.frame = giWorkplane3(x * f.frame.origin(), x * v, x * w);
        }
    }

private:
    struct face {
        giWorkplane3 frame;
        double half_u, half_v;
    };
    std::vector<face> faces_;
};

inline std::array<double, 3> const box_half_sizes = {30.0, 20.0, 12.0};

/// The six faces of a box about the origin.
inline rectangles box() {
    auto const & [a, b, c] = box_half_sizes;
    rectangles result;
    for (double const s : {1.0, -1.0}) {
        result.add(giPoint3(s * a, 0.0, 0.0), giAxisY, giUnitVec3(s, 0.0, 0.0), c, b);
        result.add(giPoint3(0.0, s * b, 0.0), giAxisZ, giUnitVec3(0.0, s, 0.0), a, c);
        result.add(giPoint3(0.0, 0.0, s * c), giAxisX, giUnitVec3(0.0, 0.0, s), b, a);
    }
    return result;
}

/// Probe centres around the box, its faces in turn, off the surface by the radius and form errors of up to `error`.
inline std::vector<sqProbedPoint3> box_probes(int n, double radius, double error) {
    mlRandom random(7);
    std::vector<sqProbedPoint3> points;
    for (int i = 0; i < n; ++i) {
        std::size_t const axis = static_cast<std::size_t>(i % 3);
        std::array<double, 3> p = {}, normal = {};
        normal.at(axis) = i % 2 ? 1.0 : -1.0;
        for (std::size_t c = 0; c < 3; ++c) p.at(c) = 0.9 * box_half_sizes.at(c) * random.minus_one_one();
        p.at(axis) = normal.at(axis) * (box_half_sizes.at(axis) + radius + error * random.minus_one_one());
        points.emplace_back(giPoint3(p[0], p[1], p[2]), giUnitVec3(normal[0], normal[1], normal[2]), radius);
    }
    return points;
}

inline giXform3 operator*(giXform3 const & a, giXform3 const & b) {
    return giXform3(giXformProduct, a, b);
}

inline giXform3 inverse(giXform3 const & x) {
    return giXform3(giXformInverse, x);
}

/// A turn about a point in no special place, then a shift.
inline giXform3 motion(giUnitVec3 const & axis, double radians, giVector3 const & shift) {
    return giXform3(giXformTranslate, shift) *
           giXform3(giXformRotate, giPoint3(1.0, -2.0, 0.5), axis, giAngle(giAngleRadians, radians));
}

using numbers = std::vector<int>;

inline numbers numbers_in(intcoDynArr const & list) {
    return numbers(list.data(), list.data() + list.size());
}

inline sqFitPoint3coPrf probed(giPoint3 const & centre, giUnitVec3 const & normal, double radius) {
    return new sqProbedPoint3(centre, normal, radius);
}

}  // namespace align3d_tests
