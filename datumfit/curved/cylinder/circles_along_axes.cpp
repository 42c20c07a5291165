#include <datumfit/curved/cylinder/circles_along_axes.h>

#include <datumfit/foundation/utilities/math.h>
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

// Where the projections will stand, for now all at the place from which they are seen: the circle's model counts from
// there.
giPoint2coDynArr room_for(int n) {
    giPoint2coDynArr flat(std::max(n, 1), 1);
    for (int i = 0; i < n; ++i) flat.append(giPoint2(0.0, 0.0));
    return flat;
}

double sense_of(probe_set const & set) {
    return set.inside != 0 ? 1.0 : -1.0;
}

}  // namespace

circles_along_axes::circles_along_axes(probe_set const & set)
    : set_(set), bound_(set.points, set.radii, sense_of(set)), mean_(mean_of(set.points)),
      flat_(room_for(set.points.size())), free_(flat_),
      probed_(flat_, set.probed() ? *set.radii : no_radii_, set.inside), free_solver_(free_), probed_solver_(probed_),
      circle_(mlVectorZero, 3), scratch_(circle_) {}

double circles_along_axes::bound(giUnitVec3 const & axis) const {
    if (!set_.bounded) return 0.0;
    if (set_.counts != nullptr) ++set_.counts->bounds;
    double const a[3] = {axis.x(), axis.y(), axis.z()};
    return bound_.along(a);
}

bool circles_along_axes::fit(giUnitVec3 const & axis) {
    int const n = set_.points.size();
    if (n < 3) return false;
    if (set_.counts != nullptr) ++set_.counts->circle_fits;
    plane_frame const frame(mean_, axis);
    frame.project(set_.points, flat_);
    double mean_square;
    if (set_.probed()) {
        double const deviation = fit_probed_circle(probed_, probed_solver_, flat_, *set_.radii, scratch_, circle_);
        mean_square = deviation * deviation;
    } else {
        mean_square = fit_circle(free_, free_solver_, flat_, circle_);
    }
    sum_ = mean_square * n;
    centre_ = frame.point(giPoint2(circle_[0], circle_[1]));
    return std::isfinite(sum_);
}

double circles_along_axes::greatest_distance() const {
    double greatest = 0.0;
    for (int i = 0; i < flat_.size(); ++i) {
        double const x = flat_[i].x() - circle_[0];
        double const y = flat_[i].y() - circle_[1];
        double const offset = set_.probed() ? sense_of(set_) * set_.radii->read(i) : 0.0;
        greatest = std::max(greatest, std::abs(std::sqrt(x * x + y * y) - circle_[2] + offset));
    }
    return greatest;
}

}  // namespace internal
}  // namespace datumfit
