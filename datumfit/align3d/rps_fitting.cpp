#include <datumfit/align3d/rps_fitting.h>
#include <datumfit/foundation/maths/band_ends.h>
#include <datumfit/primitives/utils.h>

#include <algorithm>
#include <cstddef>
#include <limits>

using datumfit::internal::surface_alignment;
using datumfit::internal::unbounded;

namespace {

// How much distances of points count beside deviations: at first just enough to settle what the normals leave open.
// Where that gives no better result the feet are held, which only takes smaller steps.
constexpr double attractions[] = {0.01, 1.0};
constexpr int free_iterations = 4;    // that need not give a better result
constexpr int quick_iterations = 30;  // before all steps are smaller ones
constexpr int most_stale = 10;
constexpr int enough_points = 3;
constexpr double search_tolerance = 0.01;

}  // namespace

sqRPSFitting::sqRPSFitting(int max_iterations, double tolerance)
    : max_iterations_(max_iterations), tolerance_squared_(tolerance * tolerance),
      alignment_(nullptr, surface_alignment::one_by_one) {}

void sqRPSFitting::reserve_points(int n) {
    alignment_.reserve(n);
    lower_.reserve(n);
    upper_.reserve(n);
}

void sqRPSFitting::add_point(sqFitPoint3coPrf const & point, double lower, double upper) {
    if (!point.pointer()) return;
    int const n = nb_points() + 1;
    if (!alignment_.reserve(n) || !lower_.reserve(n) || !upper_.reserve(n)) return;
    alignment_.add(point);
    lower_.append(lower);
    upper_.append(upper);
}

void sqRPSFitting::add_point(sqFitPoint3coPrf const & point) {
    add_point(point, -unbounded, unbounded);
}

void sqRPSFitting::add_balance(sqFitPoint3coPrf const & point1, double factor1, sqFitPoint3coPrf const & point2,
                               double factor2) {
    if (!point1.pointer() || !point2.pointer()) return;
    int const n = nb_points();
    balance_.resize(static_cast<std::size_t>(n), {-1, 0.0});
    add_point(point1);
    add_point(point2);
    balance_.emplace_back(n + 1, factor1);
    balance_.emplace_back(n, factor2);
}

void sqRPSFitting::add_positioning(giPoint3 const & point, giWorkplane3 const & workplane, giPoint3 const & plane_point,
                                   sqPointsToPlanes::PLANE_STATE s1, sqPointsToPlanes::PLANE_STATE s2,
                                   sqPointsToPlanes::PLANE_STATE s3) {
    engine_.add_positioning(point, workplane, plane_point, s1, s2, s3, 1);
}

void sqRPSFitting::lock_direction(giVector3 const & from, giVector3 const & to) {
    engine_.lock_direction(from, to, 0);
}

void sqRPSFitting::lock_axis(giInfLine3 const & from, giInfLine3 const & to, int directed) {
    engine_.lock_direction(from.direction(), to.direction(), directed == 0);
    giVector3 across;
    sqUtils::get_orthogonal(to.direction(), across);
    engine_.add_positioning(from.centre(), to.centre(), across, 0);
    engine_.add_positioning(from.centre(), to.centre(), giUnitVec3(to.direction().cross(across)), 0);
}

void sqRPSFitting::lock_plane(giPlane const & from, giPlane const & to, int directed) {
    engine_.lock_direction(from.normal(), to.normal(), directed == 0);
    engine_.add_positioning(from.point(), to.point(), to.normal(), 0);
}

void sqRPSFitting::slow_first_iteration() {
    alignment_.project_initially();
    iterations_ = 0;
    xform_.become(giXformIdentity);
    engine_.increase_num_guesses();
}

int sqRPSFitting::rps_determined(int keep_located, giXform3 & transform) {
    engine_.clear_bestfit_data();
    if (!engine_.have_enough_data()) return 0;
    return engine_.test_positioning(keep_located, transform) != sqPointsToPlanes::POSITIONING_UNDETERMINED;
}

sqRPS_FITTING_STATUS sqRPSFitting::fit() {
    double best = std::numeric_limits<double>::max();
    giXform3 saved = xform_;
    int stale = 0, first_valid = 0;
    for (int more = do_iteration(); more; more = do_iteration()) {
        if (first_valid == 0) {
            first_valid = valid_projections_;
        } else if (valid_projections_ < first_valid / 2) {
            return set_status(sqRPS_FITTING_POINTS_LOST);
        }
        if (best > square_dev_) {
            best = square_dev_;
            saved = xform_;
            stale = 0;
        } else if (++stale > most_stale) {
            break;
        }
    }
    if (iterations_ > 0) {
        xform_ = saved;
        square_dev_ = best;
    }
    return status_;
}

int sqRPSFitting::do_iteration() {
    extract_fitting_data();
    status_ = sqRPS_FITTING_OK;
    if (valid_projections_ < enough_points && !engine_.have_constraints()) {
        set_status(sqRPS_FITTING_NO_DATA);
        return 0;
    }
    giXform3 step(giXformIdentity);
    if (valid_projections_ == 0) {
        if (overconstrained_) {
            engine_.fix_overdetermined_positioning(step);
        } else {
            do_intermediate_bestfit(step, 0.0, 1);
        }
        xform_.premultiply(step);
        square_dev_ = get_square_distance(pointcloud_, xform_);
        return 0;
    }
    if (iterations_ == 0) {
        giXform3 ignored;
        if (overconstrained_) engine_.fix_overdetermined_positioning(ignored);
        square_dev_ = std::numeric_limits<double>::max();
        do_intermediate_bestfit(step, attractions[0], 1);
        ++iterations_;
    } else {
        take_improving_step(step);
    }
    double const movement = square_movement(step);
    xform_.premultiply(step);
    square_dev_ = get_square_distance(pointcloud_, step);
    if (iterations_ <= max_iterations_ && movement >= tolerance_squared_) return 1;
    extract_fitting_data();
    square_dev_ = get_square_distance(pointcloud_, giXformIdentity);
    return 0;
}

void sqRPSFitting::take_improving_step(giXform3 & step) {
    for (int i = iterations_ > quick_iterations ? 1 : 0; i < 2; ++i) {
        step.become(giXformIdentity);
        do_intermediate_bestfit(step, attractions[i], 0);
        ++iterations_;
        if (square_dev_ > get_square_distance(pointcloud_, step) || iterations_ <= free_iterations) break;
    }
}

int sqRPSFitting::do_intermediate_bestfit(giXform3 & step, double attraction, int multiple) {
    engine_.set_fitting_points_attraction(attraction);
    engine_.multiple_guesses(multiple != 0);
    if (!engine_.have_enough_data()) return 0;
    giXform3 found;
    double positioning_deviation = 0.0;
    engine_.fit(found, search_tolerance, &positioning_deviation);
    step.premultiply(found);
    return 1;
}

double sqRPSFitting::square_movement(giXform3 const & step) const {
    double largest = 0.0;
    for (int i = 0; i < pointcloud_.size(); ++i) {
        if (pointcloud_[i].invalid()) continue;
        giPoint3 const & p = pointcloud_[i].measured_point();
        giVector3 const moved = step * p - p;
        largest = std::max(largest, moved.dot(moved));
    }
    return largest;
}

void sqRPSFitting::extract_fitting_data() {
    reproject_all_points(xform_);
    engine_.clear_bestfit_data();
    engine_.reserve_bestfit(valid_projections_);
    for (int i = 0; i < pointcloud_.size(); ++i) {
        if (!pointcloud_[i].invalid()) add_record(i);
    }
    engine_.transform_rps_data(xform_);
}

bool sqRPSFitting::is_partner(int i) const {
    return i < static_cast<int>(balance_.size()) && balance_[static_cast<std::size_t>(i)].first != -1;
}

// Makes a record of a point that has a projection, and of the first of two partners one of both.
void sqRPSFitting::add_record(int i) {
    sqProjectedPoint3 const & p = pointcloud_.read(i);
    if (!is_partner(i)) {
        engine_.add_bestfit(p.measured_point(), p.nominal_point(), p.nominal_normal(), lower_[i], upper_[i], 1.0);
        return;
    }
    auto const & [other, factor] = balance_[static_cast<std::size_t>(i)];
    sqProjectedPoint3 const & q = pointcloud_.read(other);
    if (other < i || q.invalid()) return;
    engine_.add_balance(p.measured_point(), p.nominal_point(), p.nominal_normal(), factor, q.measured_point(),
                        q.nominal_point(), q.nominal_normal(), balance_[static_cast<std::size_t>(other)].second, 1.0);
}

void sqRPSFitting::reproject_all_points(giXform3 & x) {
    alignment_.reproject(x, pointcloud_);
    valid_projections_ = 0;
    for (int i = 0; i < pointcloud_.size(); ++i) valid_projections_ += !pointcloud_[i].invalid();
}

double sqRPSFitting::get_square_distance(sqProjectedPoint3coDynArr const & cloud, giXform3 const & x) const {
    double sum = 0.0;
    int terms = 0;
    for (int i = 0; i < cloud.size(); ++i) {
        if (cloud[i].invalid()) continue;
        if (!is_partner(i)) {
            sum += square_dev(cloud[i], x);
            ++terms;
            continue;
        }
        auto const & [other, factor] = balance_[static_cast<std::size_t>(i)];
        if (other < i || other >= cloud.size() || cloud[other].invalid()) continue;
        double const r = signed_norm_dev(cloud[i], x) * factor +
                         signed_norm_dev(cloud[other], x) * balance_[static_cast<std::size_t>(other)].second;
        sum += r * r;
        ++terms;
    }
    return terms > 0 ? sum / terms : 0.0;
}
