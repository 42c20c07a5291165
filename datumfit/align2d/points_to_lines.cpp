#include <datumfit/align2d/points_to_lines.h>
#include <datumfit/foundation/maths/band_ends.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

using namespace datumfit::internal;

constexpr int most_passes = 10;
constexpr int first_room = 16;

bool is_usable(sqLineAndPoint const & record) {
    giVector2 const & n = record.line_normal();
    return is_set_and_finite(record.measured_point().anchor()) && is_set_and_finite(record.line_point().anchor()) &&
           !n.invalid() && std::isfinite(n.x()) && std::isfinite(n.y());
}

sqLineAndPoint empty_record() {
    return sqLineAndPoint(giPoint2(giOrigin), giPoint2(giOrigin), giVector2(0.0, 0.0));
}

double signed_deviation(giPoint2 const & measured, sqLineAndPoint const & record) {
    return record.line_normal().dot(measured.release() - record.line_point());
}

}  // namespace

sqPointsToLines::sqPointsToLines() = default;
sqPointsToLines::~sqPointsToLines() = default;

void sqPointsToLines::reserve_bestfit(int n) {
    records_.reserve(n);
    weights_.reserve(n);
    lower_.reserve(n);
    upper_.reserve(n);
}

void sqPointsToLines::add_bestfit(sqLineAndPoint const & record, double lower, double upper, double weight) {
    int const n = records_.size();
    if (n == records_.capacity()) reserve_bestfit(std::max(first_room, 2 * n));
    bool const has_room =
        records_.reserve(n + 1) && weights_.reserve(n + 1) && lower_.reserve(n + 1) && upper_.reserve(n + 1);
    if (!has_room) return;
    bool const counts = is_usable(record) && std::isfinite(weight);
    records_.append(counts ? record : empty_record());
    weights_.append(counts ? weight : 0.0);
    lower_.append(counts && is_lower_end(lower) ? lower : -unbounded);
    upper_.append(counts && is_upper_end(upper) ? upper : unbounded);
    if (lower_.read(n) != -unbounded || upper_.read(n) != unbounded) has_bands_ = 1;
}

void sqPointsToLines::lock_axis(giVector2 const & from, giVector2 const & to) {
    locks_.lock_axis(from, to);
}

void sqPointsToLines::lock_origin(giPoint2 const & measured, giPoint2 const & nominal) {
    locks_.lock_origin(measured, nominal);
}

void sqPointsToLines::single_linear_step(giXform2 & step) {
    if (locks_.has_axis()) {
        single_linear_shift_direction_axis(step);
    } else if (locks_.has_origin()) {
        single_linear_step_locked_point(step);
    } else {
        single_linear_step_free(step);
    }
}

double sqPointsToLines::fit(giXform2 & transform, double tolerance) {
    sqLineAndPointcoDynArr given(std::move(records_));
    line_locks const given_locks = locks_;
    records_ = given;
    transform = giXformIdentity;
    carried last{};
    for (int pass = 0; pass < most_passes; ++pass) {
        giXform2 step;
        single_linear_step(step);
        last = carry(step);
        locks_.rebase();
        transform.become(giXformProduct, step, transform);
        if (tolerance > last.movement) break;
    }
    records_ = std::move(given);
    locks_ = given_locks;
    return last.deviation;
}

// Applies a step to the measured points, and tells how far any of them moved and how far any is off its line then.
sqPointsToLines::carried sqPointsToLines::carry(giXform2 const & step) {
    carried largest{};
    for (int i = 0; i < records_.size(); ++i) {
        sqLineAndPoint & record = records_[i];
        giPoint2 const from = record.measured_point().anchor(), to = step * from;
        largest.movement = std::max(largest.movement, from.distance(to).value());
        largest.deviation = std::max(largest.deviation, std::abs(signed_deviation(to, record)));
        record.set_measured_point(to);
    }
    return largest;
}

double sqPointsToLines::best_fit_deviation_with_transform(giXform2 const & transform) const {
    double sum = 0.0;
    for (int i = 0; i < records_.size(); ++i) {
        sqLineAndPoint const & record = records_.read(i);
        double const deviation = signed_deviation(transform * record.measured_point().anchor(), record);
        sum += deviation * deviation;
    }
    return sum;
}

void sqPointsToLines::signed_deviations(giXform2 const & transform, doublecoDynArr & deviations) const {
    deviations.clear(0);
    deviations.reserve(records_.size());
    for (int i = 0; i < records_.size(); ++i) {
        sqLineAndPoint const & record = records_.read(i);
        deviations.append(signed_deviation(transform * record.measured_point().anchor(), record));
    }
}
