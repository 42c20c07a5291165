#include <datumfit/curved/cylinder/cylinder_search.h>

#include <datumfit/curved/axis_limits.h>
#include <datumfit/curved/cylinder/cylinder_initial_solution.h>
#include <datumfit/primitives/evaluator/least_square_evaluator.h>

#include <cmath>

namespace datumfit {
namespace internal {

namespace {

constexpr double direct_limit = 10.0;  // degrees within which a direct start counts as keeping the limits
constexpr double cone_of_pass = 25.0;  // degrees about the direction that a pass of random axes favours

// As shares of the range of the points: a mean square, number against number, that ends the search, and a deviation for
// which the limits are given up.
constexpr double good_enough = 0.001;
constexpr double worth_the_limits = 0.001;

// The farthest point from a given one among points[first] and those behind it; the given one if none lies off it.
giPoint3 farthest_from(giPoint3 const & from, giPoint3coDynArr const & points, int first, giPoint3 farthest) {
    giLength greatest(0.0);
    for (int i = first; i < points.size(); ++i) {
        giLength const d = from.distance(points[i]);
        if (d > greatest) {
            greatest = d;
            farthest = points[i];
        }
    }
    return farthest;
}

// The direction between two points that lie far apart; without direction when all coincide.
giUnitVec3 long_direction(giPoint3coDynArr const & points) {
    giPoint3 const b = farthest_from(points[0], points, 0, points[0]);
    giPoint3 const a = farthest_from(b, points, 1, points[0]);
    return giUnitVec3(b - a);
}

// The normals of a cylinder, taken as points, lie in a plane across its axis.
giUnitVec3 direction_across(giUnitVec3coDynArr const & normals) {
    giPoint3coDynArr tips(normals.size() + 1, 1);
    for (int i = 0; i < normals.size(); ++i) tips.append(normals[i].anchor());
    giPoint3 point;
    giUnitVec3 axis;
    double deviation;
    return sqLeastSquareEvaluator::evaluate_plane(tips, point, axis, deviation) != 0 ? axis : giUnitVec3();
}

double mean_of(doublecoDynArr const & radii) {
    double sum = 0.0;
    for (int i = 0; i < radii.size(); ++i) sum += radii[i];
    return radii.size() > 0 ? sum / radii.size() : 0.0;
}

}  // namespace

mlVector cylinder_parameters(giPoint3 const & point, giVector3 const & dir, double radius) {
    double const p[] = {point.x(), point.y(), point.z(), dir.x(), dir.y(), dir.z(), radius};
    return mlVector(utConvert, p, 7);
}

cylinder_search::cylinder_search(sqLeastSquareCylinder & problem, probe_set const & set,
                                 giUnitVec3 const & preferred_dir, giAngle const & dir_limit,
                                 giUnitVec3coDynArr const & normals)
    : set_(set), preferred_dir_(preferred_dir), dir_limit_(dir_limit), normals_(normals), solver_(problem),
      range_(problem.range()) {}

cylinder_solution const & cylinder_search::run() {
    try_direct_starts();
    try_random_axes();
    if (any_.square == utMath::max_double()) return any_;
    double const loss = std::sqrt(limited_.square) - std::sqrt(any_.square);
    return loss > worth_the_limits * range_ ? any_ : limited_;
}

void cylinder_search::try_direct_starts() {
    fit_from_axis(giUnitVec3(initial_axis(set_)));
    fit_from_axis(long_direction(set_.points));
    if (normals_.size() >= 3) fit_from_axis(direction_across(normals_));
}

void cylinder_search::fit_from_axis(giUnitVec3 const & axis) {
    if (axis.invalid()) return;
    giPoint3 centre;
    double radius, deviation;
    giPoint3 const origin(0.0, 0.0, 0.0);
    if (sqLeastSquareEvaluator::evaluate_circle2(origin, axis, set_.points, centre, radius, deviation) == 0) return;
    double const probe = set_.probed() ? mean_of(*set_.radii) : 0.0;
    solve(cylinder_parameters(centre, axis, radius - probe), giAngle(giAngleDegrees, direct_limit));
}

void cylinder_search::try_random_axes() {
    random_cylinders cylinders(set_);
    int const directed_passes = sqLeastSquareDistance3::num_guess_directions();
    try_batches(cylinders, [](giUnitVec3 const &) { return true; });
    for (int i = 1; i <= directed_passes; ++i) {
        if (good_enough * range_ > limited_.square) break;
        if (normals_.size() == 0 && (preferred_dir_.invalid() || i > 1)) break;
        giUnitVec3 const centre =
            normals_.size() != 0 ? sqLeastSquareDistance3::guess_direction(i - 1) : preferred_dir_;
        giAngle const angle = normals_.size() != 0 ? giAngle(giAngleDegrees, cone_of_pass) : dir_limit_;
        try_batches(cylinders, [&](giUnitVec3 const & axis) { return axis_in_limit(axis, angle, centre); });
    }
}

// A batch without a cylinder has none but the start of the batch before, from where the solver has run already.
template <class Admitted>
void cylinder_search::try_batches(random_cylinders & cylinders, Admitted const & admitted) {
    for (int batch = 0; batch < random_cylinders::batches; ++batch) {
        if (cylinders.best_of_batch(batch, admitted, start_)) solve(start_, dir_limit_);
    }
}

void cylinder_search::solve(mlVector const & start, giAngle const & limit) {
    if (set_.counts != nullptr) ++set_.counts->solver_runs;
    double const s = solver_.fit(start, found_);
    if (s < limited_.square &&
        sqLeastSquareCylinder::are_normals_in_limit(set_.points, limit, preferred_dir_, normals_, found_) != 0) {
        limited_.take(found_, s);
    }
    if (s < any_.square) any_.take(found_, s);
}

}  // namespace internal
}  // namespace datumfit
