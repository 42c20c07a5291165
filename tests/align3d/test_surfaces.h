#pragma once

#include <datumfit/align3d/probed_point3.h>
#include <datumfit/foundation/geometry/workplane3.h>
#include <datumfit/foundation/surfaces/surf.h>

#include <algorithm>
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

protected:
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

/// The six faces of a box about the origin, of these half sizes.
inline rectangles box(double a, double b, double c) {
    rectangles result;
    for (double const s : {1.0, -1.0}) {
        result.add(giPoint3(s * a, 0.0, 0.0), giAxisY, giUnitVec3(s, 0.0, 0.0), c, b);
        result.add(giPoint3(0.0, s * b, 0.0), giAxisZ, giUnitVec3(0.0, s, 0.0), a, c);
        result.add(giPoint3(0.0, 0.0, s * c), giAxisX, giUnitVec3(0.0, 0.0, s), b, a);
    }
    return result;
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

inline sqFitPoint3coPrf probed(giPoint3 const & centre, giUnitVec3 const & normal, double radius) {
    return new sqProbedPoint3(centre, normal, radius);
}

}  // namespace align3d_tests
