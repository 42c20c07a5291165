#include <datumfit/extremal/circle_fit_utils.h>

#include <datumfit/primitives/utils.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

namespace {

using records = std::vector<std::pair<double, std::size_t>>;

// 2^-23, in the caller's unit: distances nearer than this are equal, and shorter steps none.
constexpr double tolerance = 1.1920928955078125e-7;

constexpr double greatest = std::numeric_limits<double>::max();

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

}  // namespace

void sqCircleFitUtils::calculate_distances(std::vector<giPoint2> const & points, giPoint2 const & centre, records & far,
                                           records & near, utOptionalArg<std::vector<double> const &> radii) {
    double maximum = -1.0, minimum = greatest;
    for (std::size_t i = 0; i < points.size(); ++i) {
        double e = distance(centre, points[i]);
        if (radii) e -= radii.value()[i];
        take(far, e - maximum, e, i);
        maximum = std::max(e, maximum);
        take(near, minimum - e, e, i);
        minimum = std::min(e, minimum);
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
            if (j == record.second) continue;
            giVector2 const b = points[j] - p;
            double t = 0.0;
            bool const meets =
                sqUtils::intersect_lines(centre, direction, points[j].interpolate(p, 0.5), b.orthogonal(), t);
            if (meets && t > tolerance && step > t) step = t;
        }
    }
    return step != greatest;
}
