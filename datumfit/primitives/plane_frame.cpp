#include <datumfit/primitives/plane_frame.h>

#include <cmath>

namespace datumfit {
namespace internal {

plane_frame::plane_frame(giPoint3 const & origin, giUnitVec3 const & normal) : origin_(origin) {
    giUnitVec3 const hint = std::abs(normal.x()) > std::abs(normal.y()) ? giUnitVec3(giAxisY) : giUnitVec3(giAxisX);
    xform_.become(giXformLocal, origin, normal, hint);
    giMatrix4 const & m = xform_.matrix();
    x_axis_ = giVector3(m(0, 0), m(0, 1), m(0, 2));
    y_axis_ = giVector3(m(1, 0), m(1, 1), m(1, 2));
}

void plane_frame::project(giPoint3coDynArr const & points, giPoint2coDynArr & result) const {
    int const n = points.size();
    result.clear(0);
    result.expand(n);
    for (int i = 0; i < n; ++i) {
        giVector3 const v = points[i] - origin_;
        result[i] = giPoint2(x_axis_.dot(v), y_axis_.dot(v));
    }
}

}  // namespace internal
}  // namespace datumfit
