#include <datumfit/align2d/curve_bestfit2.h>
#include <datumfit/align2d/extent2.h>
#include <datumfit/align2d/points_to_lines.h>
#include <datumfit/foundation/maths/band_ends.h>
#include <datumfit/foundation/maths/constrained_quadratic_minimiser.h>

#include <algorithm>

namespace {

using namespace datumfit::internal;

constexpr int most_passes = 50;
constexpr int points_step = 256;

// A part is far from the origin when that is this many times as far away as the part is large. A turn by t about the
// origin, linearised, throws it off its curve by t²/2 of the distance: at t = 0.1 that would be 0.15 of its size.
constexpr double far_away = 30.0;

bool is_complete(sqProjectedPoint2 const & p) {
    return is_set_and_finite(p.measured_point()) && is_set_and_finite(p.nominal_point()) &&
           !p.nominal_normal().invalid();
}

// From where coordinates are taken: the middle of a part that is far away, else the origin.
giVector2 base_of(sqProjectedPoint2coDynArr const & cloud) {
    giBox2 box;
    for (int i = 0; i < cloud.size(); ++i) box.merge(cloud.read(i).measured_point());
    extent2 const extent(box);
    giVector2 const middle = extent.middle.release();
    bool const is_far = extent.reach > 0.0 && middle.length() > far_away * extent.reach;
    return is_far ? middle : giVector2(0.0, 0.0);
}

// A transform of coordinates from `base`, as one of coordinates from the origin.
giXform2 about(giVector2 const & base, giXform2 const & x) {
    giXform2 const there(giXformTranslate, base), back(giXformTranslate, -base);
    return giXform2(giXformProduct, there, giXform2(giXformProduct, x, back));
}

}  // namespace

sqCurveBestfit2::sqCurveBestfit2() : lower_(0, points_step), upper_(0, points_step) {}

void sqCurveBestfit2::reserve_points(int n) {
    points_.reserve(n);
    lower_.reserve(n);
    upper_.reserve(n);
}

void sqCurveBestfit2::add_point(sqFitPoint2coPrf const & point, double lower, double upper) {
    int const n = nb_points();
    if (n == lower_.capacity()) reserve_points(2 * n);
    bool const has_room = points_.reserve(n + 1) && lower_.reserve(n + 1) && upper_.reserve(n + 1);
    if (!has_room) return;
    points_.append(point);
    lower_.append(lower);
    upper_.append(upper);
}

void sqCurveBestfit2::add_point(sqFitPoint2coPrf const & point) {
    add_point(point, -unbounded, unbounded);
}

void sqCurveBestfit2::fit(double tolerance, giXform2 & transform, double & largest_distance, double & largest_positive,
                          double & largest_negative, int & invalid_points) {
    giXform2 total = giXformIdentity;
    line_locks locks = locks_;
    sqProjectedPoint2coDynArr cloud;
    for (int pass = 0; pass < most_passes; ++pass) {
        reproject_all_points(total, cloud);
        int valid_points = 0;
        get_pointcloud_parameters(cloud, largest_distance, largest_positive, largest_negative, invalid_points,
                                  valid_points);
        giXform2 const step = single_step(cloud, locks);
        locks.rebase();
        total.become(giXformProduct, step, total);
        if (tolerance > get_maximum_movement(cloud, step)) break;
    }
    transform = total;
}

void sqCurveBestfit2::reproject_all_points(giXform2 & x, sqProjectedPoint2coDynArr & cloud) const {
    cloud.clear(0);
    cloud.expand(nb_points());
    for (int i = 0; i < cloud.size(); ++i) {
        cloud[i] = sqProjectedPoint2();  // no record of an earlier pass shows where a point writes none
        sqFitPoint2 const * const p = point(i);
        if (p == nullptr) continue;
        if (initial_) {
            p->initial_projection(cloud[i], projector_);
        } else {
            p->project_from_position(x, cloud[i], projector_);
        }
        if (!is_complete(cloud[i])) cloud[i].set_invalid();
    }
    initial_ = false;
}

void sqCurveBestfit2::get_pointcloud_parameters(sqProjectedPoint2coDynArr const & cloud, double & largest_distance,
                                                double & largest_positive, double & largest_negative,
                                                int & invalid_points, int & valid_points) {
    largest_distance = largest_positive = largest_negative = 0.0;
    invalid_points = valid_points = 0;
    for (int i = 0; i < cloud.size(); ++i) {
        sqProjectedPoint2 const & p = cloud.read(i);
        if (p.invalid()) {
            ++invalid_points;
            continue;
        }
        ++valid_points;
        largest_distance = std::max(largest_distance, p.distance().value());
        largest_positive = std::max(largest_positive, p.signed_distance());
        largest_negative = std::min(largest_negative, p.signed_distance());
    }
}

giXform2 sqCurveBestfit2::single_step(sqProjectedPoint2coDynArr const & cloud, line_locks const & locks) {
    giVector2 const base = base_of(cloud);
    sqPointsToLines engine;
    intcoDynArr ranks;
    add_records(engine, cloud, base, ranks);
    locks.seen_from(base).put_into(engine);
    giXform2 step;
    engine.single_linear_step(step);
    give_up(engine.overdetermined_constraints(), ranks);
    return base.is_zero(0.0) ? step : about(base, step);
}

// Gives the engine a record for each point that has a projection. A new engine each time numbers only the ends that it
// is given: none of other points, and none that have been given up. For each of these, `ranks` tells its place among
// all ends that have not been given up.
void sqCurveBestfit2::add_records(sqPointsToLines & engine, sqProjectedPoint2coDynArr const & cloud,
                                  giVector2 const & base, intcoDynArr & ranks) const {
    engine.reserve_bestfit(cloud.size());
    ranks.reserve(2 * cloud.size());
    band_ends ends(overdetermined_);
    for (int i = 0; i < cloud.size(); ++i) {
        sqProjectedPoint2 const & p = cloud.read(i);
        bool const keeps_lower = ends.next_lower(lower_[i]);
        if (keeps_lower && !p.invalid()) ranks.append(ends.kept() - 1);
        bool const keeps_upper = ends.next_upper(upper_[i]);
        if (keeps_upper && !p.invalid()) ranks.append(ends.kept() - 1);
        if (p.invalid()) continue;
        sqLineAndPoint const record(p.measured_point() - base, p.nominal_point() - base, p.nominal_normal());
        engine.add_bestfit(record, keeps_lower ? lower_[i] : -unbounded, keeps_upper ? upper_[i] : unbounded, 1.0);
    }
}

// Takes over the ends that the engine has given up, by its own numbers.
void sqCurveBestfit2::give_up(intcoDynArr const & numbers, intcoDynArr const & ranks) {
    intcoDynArr indices;
    indices.reserve(numbers.size());
    for (int k = 0; k < numbers.size(); ++k) indices.append(ranks.read(numbers.read(k)));
    mlConstrainedQuadraticMinimiser::append_constraint_indices(overdetermined_, indices);
}
