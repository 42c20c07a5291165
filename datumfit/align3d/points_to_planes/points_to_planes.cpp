#include <datumfit/align3d/points_to_planes/points_to_planes.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace {

constexpr double unbounded = std::numeric_limits<double>::max();
constexpr double weak_weight = 0.001;

// The signed deviation under a transform, without the weight that the normal carries.
double plain_deviation(sqPlaneAndPoint const & record, giPoint3 const & point, giXform3 const & x) {
    return (x * point - record.plane_point).dot(record.normal) / record.weight;
}

// Doubles the room when it is used up: records come in great numbers, and not always after a reservation.
void append(sqPlaneAndPointcoDynArr & records, sqPlaneAndPoint const & record) {
    if (records.size() == records.capacity()) records.reserve(std::max(8, 2 * records.size()));
    records.append(record);
}

sqPlaneAndPoint without_band(giPoint3 const & point, giPoint3 const & plane_point, giVector3 const & normal,
                             int located, double weight) {
    return sqPlaneAndPoint(point, plane_point, normal, located, -unbounded, unbounded, weight);
}

}  // namespace

void sqPointsToPlanes::add_bestfit(giPoint3 const & point, giPoint3 const & plane_point, giVector3 const & normal,
                                   double lower, double upper, double weight) {
    if (weight == 0.0) return;
    append(bestfit_, sqPlaneAndPoint(point, plane_point, normal, 1, lower, upper, weight));
    if (lower != -unbounded || upper != unbounded) has_bands_ = 1;
}

void sqPointsToPlanes::add_balance(giPoint3 const & point1, giPoint3 const & plane_point1, giVector3 const & normal1,
                                   double factor1, giPoint3 const & point2, giPoint3 const & plane_point2,
                                   giVector3 const & normal2, double factor2, double weight) {
    if (weight == 0.0) return;
    int const first = bestfit_.size();
    balance_.resize(static_cast<std::size_t>(first), {-1, 0.0});
    append(bestfit_, without_band(point1, plane_point1, normal1, 1, weight));
    append(bestfit_, without_band(point2, plane_point2, normal2, 1, weight));
    balance_.emplace_back(first + 1, factor1);
    balance_.emplace_back(first, factor2);
}

void sqPointsToPlanes::add_positioning(giPoint3 const & point, giPoint3 const & plane_point, giVector3 const & normal,
                                       int located) {
    append(positioning_, without_band(point, plane_point, normal, located, 1.0));
}

void sqPointsToPlanes::add_positioning(giPoint3 const & point, giWorkplane3 const & workplane,
                                       giPoint3 const & plane_point, PLANE_STATE state1, PLANE_STATE state2,
                                       PLANE_STATE state3, int located) {
    giUnitVec3 const axes[] = {workplane.u_vector(), workplane.v_vector(), workplane.w_vector()};
    PLANE_STATE const states[] = {state1, state2, state3};
    for (int k = 0; k < 3; ++k) {
        if (states[k] == PLANE_IGNORED) continue;
        double const weight = states[k] == PLANE_WEAK ? weak_weight : 1.0;
        append(states[k] == PLANE_RESERVE ? reserve_ : positioning_,
               without_band(point, plane_point, axes[k], located, weight));
    }
}

void sqPointsToPlanes::reserve_bestfit(int n) {
    bestfit_.reserve(n);
}

void sqPointsToPlanes::clear_bestfit_data() {
    bestfit_.clear(0);
    balance_.clear();
    overdetermined_.clear(0);
}

void sqPointsToPlanes::lock_direction(giVector3 const & from, giVector3 const & to, int flip_allowed) {
    locked_from_.append(from);
    locked_to_.append(to);
    flip_allowed_ = flip_allowed;
}

void sqPointsToPlanes::lock_rotations(giVector3 const & d1, giVector3 const & d2, giVector3 const & d3) {
    giVector3 const directions[] = {d1, d2, d3};
    for (int k = 0; k < 3; ++k) {
        if (k > 0 && directions[k].invalid()) continue;
        giVector3 const unit = directions[k].unit();
        shift_directions_.append(unit.invalid() ? giVector3(0.0, 0.0, 0.0) : unit);
    }
}

int sqPointsToPlanes::have_constraints() const {
    return positioning_.size() > 0 || locked_from_.size() > 0;
}

int sqPointsToPlanes::have_enough_data() const {
    return have_constraints() || bestfit_.size() > 0;
}

double sqPointsToPlanes::best_fit_deviation_with_transform(giXform3 const & x) const {
    double sum = 0.0;
    auto const deviation = [&](int i) { return plain_deviation(bestfit_[i], bestfit_[i].point, x); };
    int const paired = static_cast<int>(balance_.size());
    for (int i = 0; i < bestfit_.size(); ++i) {
        double r = deviation(i);
        if (i < paired && balance_.data()[i].first != -1) {
            r *= balance_.data()[i].second;
            ++i;
            r += deviation(i) * balance_.data()[i].second;
        }
        sum += r * r;
    }
    return sum;
}

double sqPointsToPlanes::standard_deviation_of_nominals(giXform3 const & x) {
    int const n = positioning_.size();
    if (n == 0) return 0.0;
    if (source_points_.size() != n) append_source_data();
    double sum = 0.0;
    for (int i = 0; i < n; ++i) {
        double const r = plain_deviation(positioning_[i], source_points_[i], x);
        sum += r * r;
    }
    return std::sqrt(sum / n);
}

void sqPointsToPlanes::append_source_data() {
    for (int i = 0; i < positioning_.size(); ++i) source_points_.append(positioning_[i].point);
    for (int i = 0; i < reserve_.size(); ++i) source_reserve_points_.append(reserve_[i].point);
    for (int i = 0; i < locked_from_.size(); ++i) source_directions_.append(locked_from_[i]);
}

void sqPointsToPlanes::transform_rps_data(giXform3 const & x) {
    bool const have_sources = source_points_.size() == positioning_.size() &&
                              source_reserve_points_.size() == reserve_.size() &&
                              source_directions_.size() == locked_from_.size();
    if (!have_sources) append_source_data();
    for (int i = 0; i < positioning_.size(); ++i) positioning_[i].point = x * source_points_[i];
    for (int i = 0; i < reserve_.size(); ++i) reserve_[i].point = x * source_reserve_points_[i];
    for (int i = 0; i < locked_from_.size(); ++i) locked_from_[i] = x * source_directions_[i];
}
