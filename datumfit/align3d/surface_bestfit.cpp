#include <datumfit/align3d/cloud_extremes.h>
#include <datumfit/align3d/points_to_planes/points_to_planes.h>
#include <datumfit/align3d/surface_bestfit.h>
#include <datumfit/foundation/maths/band_ends.h>
#include <datumfit/foundation/maths/constrained_quadratic_minimiser.h>

#include <algorithm>
#include <cmath>

namespace {

using datumfit::internal::band_ends;
using datumfit::internal::cloud_extremes;
using datumfit::internal::surface_alignment;
using datumfit::internal::unbounded;

constexpr int most_iterations = 50;

}  // namespace

sqSurfaceBestfit::sqSurfaceBestfit() : alignment_(nullptr, surface_alignment::in_batch) {}

void sqSurfaceBestfit::reserve_points(int n) {
    alignment_.reserve(n);
    lower_.reserve(n);
    upper_.reserve(n);
    weights_.reserve(n);
}

void sqSurfaceBestfit::add_point(sqFitPoint3coPrf const & point, double lower, double upper, double weight) {
    if (weight == 0.0 || !point.pointer()) return;
    int const n = nb_points() + 1;
    bool const has_room = alignment_.reserve(n) && lower_.reserve(n) && upper_.reserve(n) && weights_.reserve(n);
    if (!has_room) return;
    alignment_.add(point);
    lower_.append(lower);
    upper_.append(upper);
    weights_.append(weight);
}

void sqSurfaceBestfit::add_point(sqFitPoint3coPrf const & point) {
    add_point(point, -unbounded, unbounded, 1.0);
}

void sqSurfaceBestfit::fit(double tolerance, giXform3 & transform, double & largest_distance, double & largest_positive,
                           double & largest_negative, int & invalid_points) {
    alignment_.restart();
    if (nb_points() == 0) return;
    normalize_weights();
    for (int i = 0; i < most_iterations; ++i) {
        giXform3 step;
        int const ok = do_iteration(step);
        int valid_points = 0;
        get_pointcloud_parameters(get_pointcloud(), largest_distance, largest_positive, largest_negative,
                                  invalid_points, valid_points);
        if (!ok || get_maximum_movement(get_pointcloud(), step) < tolerance) break;
    }
    transform = get_transformation();
}

int sqSurfaceBestfit::do_iteration(giXform3 & step) {
    alignment_.prepare();
    sqPointsToPlanes engine;
    intcoDynArr ranks;
    add_records(engine, ranks);
    alignment_.locks().put_into(engine, alignment_.base());
    if (!engine.single_linear_step(step)) return 0;
    step = alignment_.from_base(step);

    give_up(engine.overdetermined_constraints(), ranks);
    bool const all_kept = overdetermined_.size() == 0;
    if (!all_kept && !last_good_.invalid()) {
        alignment_.return_to(last_good_);
        return 0;
    }
    if (all_kept) last_good_ = get_transformation();
    alignment_.apply(step);
    return 1;
}

void sqSurfaceBestfit::reproject_all_points(giXform3 & x, sqProjectedPoint3coDynArr & cloud) const {
    alignment_.reproject(x, cloud);
}

void sqSurfaceBestfit::get_pointcloud_parameters(sqProjectedPoint3coDynArr const & cloud, double & largest_distance,
                                                 double & largest_positive, double & largest_negative,
                                                 int & invalid_points, int & valid_points) {
    cloud_extremes const extremes(cloud);
    largest_distance = extremes.largest_distance;
    largest_positive = std::max(0.0, extremes.largest_signed);
    largest_negative = std::min(0.0, extremes.smallest_signed);
    invalid_points = extremes.invalid_points;
    valid_points = extremes.valid_points;
}

// Scales the weights to a mean size of 1, so that bands and squares keep their balance in the solver.
void sqSurfaceBestfit::normalize_weights() {
    int const n = weights_.size();
    double sum = 0.0;
    for (int i = 0; i < n; ++i) sum += std::abs(weights_[i]);
    double const factor = n / sum;
    if (!std::isnormal(factor)) return;  // sizes at the ends of the range of doubles
    for (int i = 0; i < n; ++i) weights_[i] *= factor;
}

// Gives the engine a record for each point that has a projection and a weight. A new engine each time numbers only the
// ends that it is given: none of other points, and none that have been given up. For each of these, `ranks` tells its
// place among all ends that have not been given up.
void sqSurfaceBestfit::add_records(sqPointsToPlanes & engine, intcoDynArr & ranks) const {
    sqProjectedPoint3coDynArr const & cloud = get_pointcloud();
    giVector3 const & base = alignment_.base();
    engine.reserve_bestfit(cloud.size());
    ranks.reserve(2 * cloud.size());
    band_ends ends(overdetermined_);
    for (int i = 0; i < cloud.size(); ++i) {
        sqProjectedPoint3 const & p = cloud.read(i);
        double const weight = weights_[i];  // 0 when it was so small that its normalised value has no digit left
        bool const seen = !p.invalid() && weight != 0.0;
        bool const keeps_lower = ends.next_lower(lower_[i]);
        if (keeps_lower && seen) ranks.append(ends.kept() - 1);
        bool const keeps_upper = ends.next_upper(upper_[i]);
        if (keeps_upper && seen) ranks.append(ends.kept() - 1);
        if (!seen) continue;
        engine.add_bestfit(p.measured_point() - base, p.nominal_point() - base, p.nominal_normal(),
                           keeps_lower ? lower_[i] : -unbounded, keeps_upper ? upper_[i] : unbounded, weight);
    }
}

// Takes over the ends that the engine has given up, by its own numbers.
void sqSurfaceBestfit::give_up(intcoDynArr const & numbers, intcoDynArr const & ranks) {
    intcoDynArr indices;
    indices.reserve(numbers.size());
    for (int k = 0; k < numbers.size(); ++k) indices.append(ranks.read(numbers.read(k)));
    mlConstrainedQuadraticMinimiser::append_constraint_indices(overdetermined_, indices);
}
