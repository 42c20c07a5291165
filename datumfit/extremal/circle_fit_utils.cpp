#include <datumfit/extremal/circle_fit_utils.h>

#include <datumfit/foundation/geometry/vector2.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

namespace {

using records = std::vector<std::pair<double, std::size_t>>;

// 2^-23, in the caller's unit: distances nearer than this are equal, and shorter steps none.
constexpr double tolerance = 1.1920928955078125e-7;

constexpr double greatest = std::numeric_limits<double>::max();

// Bounds of what is told apart without a root or a division: far above the rounding of that, and far below what it
// leaves to be seen.
constexpr double margin = 0x1p-40;

// Takes the record of a distance that lies `beyond` the extreme so far.
void take(records & list, double beyond, double distance, std::size_t index) {
    if (!(beyond > -tolerance)) return;
    if (beyond >= tolerance) list.clear();
    list.emplace_back(distance, index);
}

// Ties may have crept past the tolerance, each within it of the one before.
void trim(records & list) {
    while (list.size() > 1 && std::abs(list.front().first - list.back().first) >= tolerance) list.pop_back();
}

// The squares of distances that surely are no extremes, beside the extremes so far: most points are told by that, with
// neither root nor record.
struct middle_squares {
    double low = greatest, high = 0.0;

    void set(double minimum, double maximum) {
        double const least = (minimum + tolerance) * (1.0 + margin);
        double const most = std::max(0.0, (maximum - tolerance) * (1.0 - margin));
        low = least * least;
        high = most * most;
    }
    int hold(giPoint2 const & p, giPoint2 const & centre) const {
        double const dx = p.x() - centre.x(), dy = p.y() - centre.y(), square = dx * dx + dy * dy;
        return int(square > low) & int(square < high);  // not &&: no jump, and four points side by side
    }
};

// The first of the points from i on that may be an extreme, or `end`.
std::size_t skip_middle(std::vector<giPoint2> const & points, giPoint2 const & centre, std::size_t i,
                        middle_squares const & middle) {
    auto const held = [&](std::size_t k) { return middle.hold(points[k], centre); };
    std::size_t const end = points.size();
    while (i + 4 <= end && (held(i) & held(i + 1) & held(i + 2) & held(i + 3)) != 0) i += 4;
    while (i < end && held(i) != 0) ++i;
    return i;
}

}  // namespace

void sqCircleFitUtils::calculate_distances(std::vector<giPoint2> const & points, giPoint2 const & centre, records & far,
                                           records & near, utOptionalArg<std::vector<double> const &> radii) {
    bool const skips = !radii && !centre.invalid();
    double maximum = -1.0, minimum = greatest;
    middle_squares middle;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (skips && (i = skip_middle(points, centre, i, middle)) == points.size()) break;
        double e = distance(centre, points[i]);
        if (radii) e -= radii.value()[i];
        take(far, e - maximum, e, i);
        take(near, minimum - e, e, i);
        if (!(e > maximum || e < minimum)) continue;
        maximum = std::max(e, maximum);
        minimum = std::min(e, minimum);
        middle.set(minimum, maximum);
    }
    std::sort(far.begin(), far.end(), std::greater<>());
    std::sort(near.begin(), near.end());
    trim(far);
    trim(near);
}

bool sqCircleFitUtils::step_distance(giPoint2 const & centre, giVector2 const & direction,
                                     std::vector<giPoint2> const & points, records const & list, double & step) {
    step = greatest;
    for (auto const & record : list) {
        giPoint2 const & p = points[record.second];
        for (std::size_t j = 0; j < points.size(); ++j) {
            // The line of the places as far from p as from point j: (middle - centre - t direction) . b = 0.
            double const bx = points[j].x() - p.x(), by = points[j].y() - p.y();
            double const slope = direction.x() * bx + direction.y() * by;
            if (std::abs(slope) < tolerance) continue;  // never as far; so is p itself
            double const mx = p.x() + 0.5 * bx - centre.x(), my = p.y() + 0.5 * by - centre.y();
            double const ahead = mx * bx + my * by;
            if (std::abs(ahead) > step * std::abs(slope) * (1.0 + margin)) continue;  // farther, without a division
            double const t = ahead / slope;
            if (t > tolerance && step > t) step = t;
        }
    }
    return step != greatest;
}
