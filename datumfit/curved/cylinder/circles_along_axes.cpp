#include <datumfit/curved/cylinder/circles_along_axes.h>

#include <datumfit/primitives/plane_frame.h>
#include <datumfit/primitives/point_sums.h>

#include <algorithm>
#include <cmath>

namespace datumfit {
namespace internal {

namespace {

giPoint3 mean_of(giPoint3coDynArr const & points) {
    if (points.size() == 0) return giPoint3();
    double m[3];
    mean_of_points(plain(points), 3, points.size(), m);
    return giPoint3(m[0], m[1], m[2]);
}

double sense_of(probe_set const & set) {
    return set.inside != 0 ? 1.0 : -1.0;
}

}  // namespace

circles_along_axes::circles_along_axes(probe_set const & set)
    : set_(set), bound_(set.points, set.radii, sense_of(set)), mean_(mean_of(set.points)),
      circle_(set.points.size(), set.radii, set.inside) {}

double circles_along_axes::bound(giUnitVec3 const & axis) const {
    if (!set_.bounded) return 0.0;
    if (set_.counts != nullptr) ++set_.counts->bounds;
    double const a[3] = {axis.x(), axis.y(), axis.z()};
    return bound_.along(a);
}

bool circles_along_axes::fit(giUnitVec3 const & axis) {
    if (set_.counts != nullptr) ++set_.counts->circle_fits;
    plane_frame const frame(mean_, axis);
    frame.project(set_.points, circle_.points());
    if (!circle_.fit()) return false;
    sum_ = circle_.deviation() * circle_.deviation() * set_.points.size();
    centre_ = frame.point(circle_.centre());
    return std::isfinite(sum_);
}

double circles_along_axes::greatest_distance() const {
    giPoint2coDynArr const & flat = circle_.points();
    giPoint2 const c = circle_.centre();
    double greatest = 0.0;
    for (int i = 0; i < flat.size(); ++i) {
        double const x = flat[i].x() - c.x();
        double const y = flat[i].y() - c.y();
        double const offset = set_.probed() ? sense_of(set_) * set_.radii->read(i) : 0.0;
        greatest = std::max(greatest, std::abs(std::sqrt(x * x + y * y) - circle_.radius() + offset));
    }
    return greatest;
}

}  // namespace internal
}  // namespace datumfit
