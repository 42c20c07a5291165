#include <datumfit/foundation/surfaces/mesh_foot_list.h>

#include <algorithm>
#include <cmath>
#include <tuple>

namespace datumfit {
namespace internal {

namespace {

bool precedes(giPoint3 const & point, sknSurfPoint const & a, sknSurfPoint const & b) {
    giVector3 const to_a = a.point - point, to_b = b.point - point;
    return std::make_tuple(to_a.dot(to_a), a.u, a.v) < std::make_tuple(to_b.dot(to_b), b.u, b.v);
}

bool equal_feet(sknSurfPoint const & a, sknSurfPoint const & b) {
    return a.u == b.u && a.v == b.v && a.point.x() == b.point.x() && a.point.y() == b.point.y() &&
           a.point.z() == b.point.z();
}

}  // namespace

void mesh_foot_list::visit(triangle_hit const & hit) {
    mesh_feature const feature = nearest_feature(mesh_, hit.number, point_);
    if (is_known_vertex(feature) || !is_nearest_around(mesh_, feature, point_)) return;
    append(feature);
    holds_nearest_ = holds_nearest_ || is_least(hit);
}

void mesh_foot_list::finish() {
    if (!holds_nearest_ && nearest_.number >= 0) append(nearest_feature(mesh_, nearest_.number, point_));
    sknSurfPoint *const begin = feet_.data() + first_, *const end = feet_.data() + feet_.size();
    std::sort(begin, end, [this](sknSurfPoint const & a, sknSurfPoint const & b) { return precedes(point_, a, b); });
    feet_.shrink(static_cast<int>(std::unique(begin, end, equal_feet) - feet_.data()), 0);
}

// Room that doubles spares a host's list that grows step by step.
void mesh_foot_list::append(mesh_feature const & feature) {
    if (feet_.size() == feet_.capacity()) feet_.reserve(2 * feet_.size());
    feet_.append(foot_on(mesh_, feature, point_, crease_cosine_));
}

// Triangles that follow one another share vertices, and a vertex of a great fan takes as long as the fan is large.
bool mesh_foot_list::is_known_vertex(mesh_feature const & feature) {
    if (feature.kind != mesh_feature::vertex) return false;
    if (std::find(known_.begin(), known_.end(), feature.number) != known_.end()) return true;
    known_[oldest_] = feature.number;
    oldest_ = (oldest_ + 1) % known_.size();
    return false;
}

// Up to the rounding of distances, to which the nearest feature may have been passed over.
bool mesh_foot_list::is_least(triangle_hit const & hit) const {
    constexpr double rounding = 0x1p-40;
    giVector3 const d = point_ - mesh_.start(3 * hit.number);
    return std::sqrt(hit.square) <= std::sqrt(nearest_.square) + rounding * d.length();
}

}  // namespace internal
}  // namespace datumfit
