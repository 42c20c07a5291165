#include <datumfit/extremal/simplest_closed_path.h>

#include <cmath>
#include <utility>

namespace datumfit {
namespace internal {

double pseudo_angle(giPoint2 const & from, giPoint2 const & to) {
    double const dx = to.x() - from.x(), dy = to.y() - from.y();
    double const s = std::abs(dx) + std::abs(dy);
    double const t = s == 0.0 ? 0.0 : dy / s;
    if (dx < 0.0) return (2.0 - t) * 90.0;
    return (dy < 0.0 ? 4.0 + t : t) * 90.0;
}

int lowest_point_index(giPoint2 const * points, int count) {
    int lowest = 0;
    for (int i = 1; i < count; ++i) {
        double const dy = points[i].y() - points[lowest].y();
        if (dy < 0.0 || (dy == 0.0 && points[i].x() > points[lowest].x())) lowest = i;
    }
    return lowest;
}

}  // namespace internal
}  // namespace datumfit

sqCompareForSimplestClosedPath::~sqCompareForSimplestClosedPath() = default;

int sqCompareForSimplestClosedPath::compare(giPoint2 const * a, giPoint2 const * b) const {
    using datumfit::internal::pseudo_angle;
    double const turn = pseudo_angle(pivot_, *a) - pseudo_angle(pivot_, *b);
    if (turn != 0.0) return turn > 0.0 ? 1 : turn < 0.0 ? -1 : 0;
    giVector2 const u = *a - pivot_, v = *b - pivot_;
    double const further = u.dot(u) - v.dot(v);
    return further < 0.0 ? -1 : further > 0.0 ? 1 : 0;
}

int sqCompareForSimplestClosedPath::obj_compare(void * a, void * b) const {
    return compare(static_cast<giPoint2 const *>(a), static_cast<giPoint2 const *>(b));
}

void * sqCompareForSimplestClosedPath::arr_get(void * array, int index) const {
    return static_cast<giPoint2 *>(array) + index;
}

void sqCompareForSimplestClosedPath::arr_swap(void * array, int i, int j) const {
    giPoint2 * const points = static_cast<giPoint2 *>(array);
    std::swap(points[i], points[j]);
}
