#include <datumfit/foundation/maths/descent.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace datumfit {
namespace internal {

namespace {

constexpr double unlimited = std::numeric_limits<double>::infinity();
constexpr double rounding = std::numeric_limits<double>::epsilon();

// Sums of squares that differ by less than this, times the root of the number of points, are equal but for rounding. To
// reject a step for such a difference would cost many short steps and gain nothing.
constexpr double rounding_of_sums = 1e-15;

// Changes of the sum below this share of it are left to the gradient to judge.
constexpr double gradient_decides = 1e-12;

// The gradient's floor in units of the rounding that explains it: of the distances, and of adding up the products.
constexpr double distances_floor = 1.0;
constexpr double products_floor = 4.0;

// Where the sum of squares no longer tells steps apart, so many in a row may fail to lower the gradient by this factor.
constexpr double lower_gradient = 0.9;
constexpr int stale_limit = 4;

// Where a step promises less than this share of the sum, steps shrink by the same factor each, if slowly: a law that
// can be learnt.
constexpr double near_the_minimum = 1e-5;

// A step is the last when the one behind it, by the contraction seen and a margin, would be this share of what
// distances can tell.
constexpr double contraction_margin = 10.0;
constexpr double last_move = 0.5;

// The share of the promised decrease below which steps get shorter, and above which they may grow again.
constexpr double poor_ratio = 0.25;
constexpr double good_ratio = 0.75;

// The bounds of what such a step is cut to, and how much longer than one that kept its promise the next may be.
constexpr double least_cut = 0.1;
constexpr double most_cut = 0.5;
constexpr double growth = 3.0;

// A geometry that grows without end ceases to tell points apart. It may grow until its distances are known to this
// share of their root mean square; where they never were known so well, by this factor from the start, and by this in a
// step.
constexpr double least_known = 1e-3;
constexpr double growth_from_start = 2.0;
constexpr double growth_in_a_step = 1.001;

// The least pivot of a Gram matrix whose steps are as good as those of reflections but for a digit or two; below it the
// last steps are left to these.
constexpr double sound_pivot = 1e-3;

// How often a fit may be pushed off a stationary point that is no minimum.
constexpr int push_limit = 2;

// A push that the unique form of the parameters takes back but for this share, as that of a direction's length, is
// none.
constexpr double undone = 1e-3;

}  // namespace

descent::descent(mlDistanceLeastSquares & problem, all_points_model & model, int points)
    : problem_(problem), model_(model), points_(points), x_(mlVectorZero, problem.n_parameters()), trial_x_(x_),
      best_x_(x_), step_(mlVectorZero, model.unknowns()), last_move_(step_), direction_(step_), push_(step_),
      scales_(step_), factor_(model.unknowns()), trial_factor_(model.unknowns()),
      steps_(model.unknowns(), std::min(model.unknowns(), problem.n_independent_parameters())),
      linearise_(model.unknowns(), points, model.rows_per_point()), acceleration_(model.unknowns()) {}

void descent::linearise(triangular_factor & factor) {
    if (polishing_) {
        linearise_.factorise(model_, factor);
    } else {
        linearise_.run(model_, factor);
    }
}

void descent::stand_at(mlVector const & x) {
    x_ = x;
    model_.place(x_);
    linearise(factor_);
    steps_.reduce(factor_, scales_.data());
    now_.resolution = model_.resolution();
    now_.last_step = false;
}

// By how much two sums of squares may differ through rounding alone.
double descent::slack() const {
    double const n = points_;
    double const r = model_.resolution();
    return rounding_of_sums * std::sqrt(n) * sum() + 2.0 * r * std::sqrt(n * sum()) + n * r * r;
}

bool descent::at_rounding() const {
    double const floor = distances_floor * std::sqrt(static_cast<double>(steps_.rank())) * now_.resolution +
                         products_floor * rounding * std::sqrt(sum());
    return removable() <= floor;
}

// Takes one step, if it leads down; otherwise the next one is shorter. False when no step is worth a pass any more.
bool descent::try_step() {
    double gain = 0.0;
    double const length = steps_.take(now_.limit, step_.data(), gain);
    if (is_last_step(length)) return false;
    bool const near = length < now_.limit && gain < near_the_minimum * sum();
    if (!near) acceleration_.reset();
    bool const improved = near && acceleration_.improve(last_move_, step_);
    model_.move(x_, step_, trial_x_);
    if (std::equal(x_.data(), x_.data() + x_.dimension(), trial_x_.data())) return false;
    model_.place(trial_x_);
    linearise(trial_factor_);

    // A sum that rounding has emptied says nothing of the way down.
    bool const known = !outgrown();
    double const decrease = known ? sum() - trial_factor_.sum_of_squares() : -sum();
    now_.flat = known && gain <= slack();
    now_.moved = known && (decrease >= -slack() || gradient_fell(gain, decrease));  // false for a NaN
    if (!now_.moved) {
        acceleration_.reset();
        if (improved) return true;
    }
    if (!now_.flat) {
        double const ratio = decrease / gain;
        if (!(ratio >= poor_ratio)) {
            // The lowest point of the parabola through the two sums with the slope of the linearised problem.
            now_.limit = length * std::fmin(std::fmax(1.0 / (2.0 - ratio), least_cut), most_cut);
        } else if (ratio >= good_ratio) {
            now_.limit = std::fmax(now_.limit, growth * length);
        }
    }
    if (now_.moved) {
        now_.resolution = model_.resolution();
        std::swap(factor_, trial_factor_);
        model_.difference(x_, trial_x_, last_move_);
        std::swap(x_, trial_x_);
        // From afar a step contracts more than those that follow it will, and an improved one more than plain ones do.
        now_.contracts = near && !improved;
        now_.last_length = length;
        now_.last_removable = removable();
        steps_.reduce(factor_, scales_.data());
    }
    return true;
}

// Whether the geometry just placed has grown until rounding eats its distances.
bool descent::outgrown() const {
    double const r = model_.resolution();
    bool const grown = r > growth_from_start * now_.start_resolution && r > growth_in_a_step * now_.resolution;
    return grown && r > least_known * std::sqrt(sum() / points_);
}

// Near the minimum a sum that grew by its rounding says nothing, and the gradient everything. How far rounding goes is
// known of our own models only; those of a host may use coordinates with more of it.
bool descent::gradient_fell(double gain, double decrease) {
    double const unsaid = gradient_decides * sum();
    if (!(gain <= unsaid && std::abs(decrease) <= unsaid)) return false;
    double const before = removable();
    steps_.reduce(trial_factor_, scales_.data());
    bool const fell = removable() < before;
    steps_.reduce(factor_, scales_.data());
    return fell;
}

// When the steps shrink so fast that the one behind this would move the geometry by less than distances can tell, this
// one is taken without looking again: on so short a way the linearised problem is exact.
bool descent::is_last_step(double length) {
    double const contraction = std::fmax(length / now_.last_length, removable() / now_.last_removable);
    double const next = length * (now_.contracts ? std::fmin(1.0, contraction_margin * contraction) : 1.0);
    now_.last_step = !strict_ && length < now_.limit && next <= last_move * now_.resolution;
    return now_.last_step;
}

// Whether the steps have ceased to help: sums no longer tell them apart, and the gradient stays where it was.
bool descent::stale() {
    if (!now_.flat) {
        now_.lowest = unlimited;
        now_.stale = 0;
        return false;
    }
    if (now_.moved && removable() < lower_gradient * now_.lowest) {
        now_.lowest = removable();
        best_x_ = x_;
        now_.stale = 0;
        return false;
    }
    return ++now_.stale >= stale_limit;
}

// Leaves a stationary point that is no minimum: a saddle that was never left, or a ridge along a parameter on which the
// distances do not depend at first order. There a step the length of the mean distance leads down.
bool descent::push() {
    int const n = step_.dimension();
    bool const descended = sum() < now_.stationary_from - slack();
    double const length = std::sqrt(sum() / points_);
    if (!(length > now_.resolution)) return false;
    double lowest = sum() - 10.0 * slack();
    bool found = false;
    for (int k = 0; k < (descended ? n - steps_.rank() : n); ++k) {
        if (descended) {
            steps_.idle(k, direction_.data());
        } else {
            for (int j = 0; j < n; ++j) direction_[j] = j == k ? 1.0 / scales_[k] : 0.0;
        }
        for (double const way : {length, -length}) found = try_push(way, lowest) || found;
    }
    if (found) {
        stand_at(best_x_);
        now_.stationary_from = sum();
        now_.limit = length;
        now_.lowest = unlimited;
        now_.stale = 0;
    }
    return found;
}

bool descent::try_push(double way, double & lowest) {
    for (int j = 0; j < push_.dimension(); ++j) push_[j] = way * direction_[j];
    model_.move(x_, push_, trial_x_);
    model_.place(trial_x_);
    model_.difference(x_, trial_x_, push_);
    double moved = 0.0;
    for (int j = 0; j < push_.dimension(); ++j) moved = std::fmax(moved, scales_[j] * std::abs(push_[j]));
    if (!(moved > undone * std::abs(way))) return false;
    double const s = model_.sum_of_squares(lowest);
    if (!(s < lowest)) return false;
    lowest = s;
    best_x_ = trial_x_;
    return true;
}

// Gives the mean square at the parameters, which may differ from the solver's own coordinates by their rounding.
double descent::finish(mlVector & result) {
    trial_x_ = x_;
    if (now_.last_step) {
        model_.move(x_, step_, trial_x_);
        model_.place(trial_x_);
    }
    model_.to_parameters(trial_x_, result);
    problem_.normalize_parameters(result);
    problem_.set_parameters(result);
    model_.from_parameters(result, trial_x_);
    model_.place(trial_x_);
    model_.difference(x_, trial_x_, step_);
    double change = 0.0;
    for (int i = 0; i < step_.dimension(); ++i) {
        double w = 0.0;
        for (int j = i; j < step_.dimension(); ++j) w += factor_(i, j) * step_[j];
        change += w * (2.0 * factor_.head(i) + w);
    }
    double const there = std::isfinite(sum()) ? std::fmax(0.0, sum() + change) : sum();
    return points_ > 0 ? there / points_ : 0.0;
}

void descent::begin(mlVector const & start) {
    now_ = progress();
    polishing_ = false;
    acceleration_.reset();
    model_.look();
    model_.from_parameters(start, trial_x_);
    model_.place(trial_x_);
    model_.scales(scales_);
    for (int k = 0; k < scales_.dimension(); ++k) {  // a geometry of no size tells nothing about its scales
        if (!(scales_[k] > 0.0 && std::isfinite(scales_[k]))) scales_[k] = 1.0;
    }
    stand_at(trial_x_);
    now_.stationary_from = sum();
    now_.start_resolution = now_.resolution;
}

// Goes on with the factor by reflections where the Gram matrix has brought the fit as near as its digits reach. True
// when there is something to go on for.
bool descent::polish() {
    if (polishing_ || !(factor_.weakest_pivot() < sound_pivot)) return false;
    polishing_ = true;
    stand_at(x_);
    now_.lowest = unlimited;
    now_.stale = 0;
    return true;
}

double descent::run(mlVector const & start, int max_iterations, bool strict, mlVector & result) {
    strict_ = strict;
    begin(start);
    int pushes = 0;
    for (int iteration = 0; iteration < max_iterations && std::isfinite(sum()); ++iteration) {
        if ((strict_ || !at_rounding()) && try_step() && !stale()) continue;
        if (removable() > now_.lowest) stand_at(best_x_);
        if (polish()) continue;
        if (pushes++ == push_limit || !push()) break;
    }
    return finish(result);
}

}  // namespace internal
}  // namespace datumfit
