#include <datumfit/align3d/points_to_planes/points_to_planes.h>
#include <datumfit/foundation/maths/band_ends.h>
#include <datumfit/foundation/maths/down_hill_simplex.h>
#include <datumfit/foundation/maths/random.h>

#include <algorithm>
#include <cmath>
#include <limits>

using datumfit::internal::unbounded;

namespace {

constexpr double guess_range = 20.0;  // tenths of a radian
constexpr double pi = 3.141592653589793;
constexpr double same_deviation = 1e-5, same_spread = 1e-5;
constexpr double small_positioning_deviation = 1e-5, small_deviation = 0.01;
constexpr double far_apart = 100.0;  // times the deviations
constexpr int patience = 20;         // attempts before a looser tolerance will do
constexpr double looser = 10.0;
constexpr int usual_guesses = 60;

// What an attempt of a search has found.
struct candidate {
    double deviation = std::numeric_limits<double>::max();
    double spread = std::numeric_limits<double>::max();  // of located points from their places
    int flip = 0;
    int ok = 0;  // points are on their sides of the planes
    bool small = false;
};

// Whether the deviations do not tell a from b.
bool equally_good(candidate const & a, candidate const & b, double ambiguity_limit) {
    double const top = std::max(a.deviation, b.deviation);
    bool const close = std::abs(b.deviation - a.deviation) <= same_deviation;
    bool const ambiguous = b.spread != std::numeric_limits<double>::max() &&
                           std::abs(b.spread - a.spread) > far_apart * top && ambiguity_limit > top;
    return close || (a.small && b.small) || ambiguous;
}

// Whether a takes the place of the best one so far.
bool wins(candidate const & a, candidate const & best, double ambiguity_limit, int flip_allowed) {
    if (!equally_good(a, best, ambiguity_limit)) return best.deviation > a.deviation;
    if (a.ok != best.ok) return a.ok > best.ok;
    if (std::abs(a.spread - best.spread) > same_spread) return best.spread > a.spread;
    if (flip_allowed && a.flip < best.flip) return true;
    if (best.deviation != a.deviation) return best.deviation > a.deviation;
    return best.spread > a.spread;
}

giXform3 transform_of(sqAmoebaPointsToPlanesDirectShift const & function) {
    return giXform3(giXformTranslate, function.get_shift()).postmultiply(function.get_matrix());
}

bool has_band(sqPlaneAndPoint const & record) {
    return record.lower != -unbounded || record.upper != unbounded;
}

}  // namespace

void sqPointsToPlanes::data_for_downhill(sqPlaneAndPointcoDynArr & pairs,
                                         std::vector<std::pair<int, double>> & pair_balance, int positioning_only,
                                         int forget_located) const {
    pairs = positioning_;
    for (int i = 0; i < pairs.size(); ++i) {
        pairs[i].normal *= POSITIONING_WEIGHT;
        if (forget_located) pairs[i].located = 0;
    }
    if (positioning_only) return;
    if (!balance_.empty()) pair_balance.insert(pair_balance.end(), static_cast<std::size_t>(pairs.size()), {-1, 0.0});
    pairs.reserve(pairs.size() + bestfit_.size());
    for (int i = 0; i < bestfit_.size(); ++i) pairs.append(bestfit_[i]);
    for (std::size_t i = 0; i < balance_.size(); ++i) {
        if (balance_[i].first == -1) {
            pair_balance.push_back(balance_[i]);
            continue;
        }
        pair_balance.emplace_back(static_cast<int>(pair_balance.size()) + 1, balance_[i].second);
        ++i;
        pair_balance.emplace_back(static_cast<int>(pair_balance.size()) - 1, balance_[i].second);
    }
}

giVector3coDynArr sqPointsToPlanes::locked_axis() const {
    if (locked_from_.size() == 0) return {};
    return {locked_from_[0], locked_to_[0]};
}

double sqPointsToPlanes::fit(giXform3 & transform, double tolerance, double * positioning_deviation) const {
    transform.become(giXformIdentity);
    sqPlaneAndPointcoDynArr pairs;
    std::vector<std::pair<int, double>> balance;
    data_for_downhill(pairs, balance, 0, 0);
    if (pairs.size() == 0) return 0.0;

    giVector3coDynArr const axis = locked_axis();
    bool const banded = std::any_of(pairs.data(), pairs.data() + pairs.size(), has_band);
    using search_function = sqAmoebaPointsToPlanesDirectShift;
    double deviation = 0.0, worst_positioning = 0.0;
    mlVector guess(mlVectorZero, search_function::get_dimension(axis.size() > 0, shift_directions_, 1));
    if (!banded || use_multiple_guesses_) {
        search_function function(pairs, balance, axis, shift_directions_, attraction_, 0);
        mlVector solution;
        deviation = fit_pairs_downhill(function, transform, tolerance, &worst_positioning, &solution);
        if (banded) function.convert_to_min_max_parameter(solution, guess);
    }
    if (banded) {
        search_function function(pairs, balance, axis, shift_directions_, attraction_, 1);
        mlDownHillSimplex simplex(function.variables());
        simplex.solve(function, guess, mlDownHillSimplexThorough);
        simplex.result(guess);
        function.get_max_deviations(guess, worst_positioning, deviation);
        transform = transform_of(function);
    }
    if (positioning_deviation) *positioning_deviation = worst_positioning;
    return deviation;
}

double sqPointsToPlanes::fit_pairs_downhill(sqAmoebaPointsToPlanesDirectShift & function, giXform3 & transform,
                                            double tolerance, double * positioning_deviation,
                                            mlVector * solution) const {
    int const n = function.variables();
    mlRandom generator(1);
    mlVector guess(mlVectorZero, n), best(mlVectorZero, n);
    candidate best_so_far;
    double positioning = 0.0, fitting = 0.0;
    if (!function.rotations_locked()) {
        mlDownHillSimplex simplex(n);
        for (int attempt = 0; attempt < num_guesses_; ++attempt) {
            if (attempt > 0 || use_multiple_guesses_) {
                for (int k = 0; k < n; ++k) guess[k] = generator.minus_one_one() * guess_range;
                guess[0] *= pi;
            }
            candidate found;
            found.flip = generator.minus_one_one() < 0.0;  // drawn always, so that guesses do not depend on the flag
            if (flip_allowed_) function.flip_locked_axis(found.flip);
            simplex.solve(function, guess, mlDownHillSimplexThorough);
            simplex.result(guess);
            function.get_max_deviations(guess, positioning, fitting);
            found.deviation = std::max(fitting, positioning);
            found.small = positioning <= small_positioning_deviation && found.deviation <= small_deviation;
            found.ok = function.check_transformation(found.spread);
            found.spread = std::sqrt(found.spread);
            if (wins(found, best_so_far, ambiguity_limit_, flip_allowed_)) {
                best_so_far = found;
                best = guess;
            }
            if (!best_so_far.ok) continue;
            if (tolerance > best_so_far.deviation && best_so_far.flip == 0) break;
            if (attempt > patience && tolerance * looser > best_so_far.deviation) break;
            if (!use_multiple_guesses_) break;
        }
        if (flip_allowed_) function.flip_locked_axis(best_so_far.flip);
    }
    function.get_max_deviations(best, positioning, fitting);
    transform = transform_of(function);
    if (positioning_deviation) *positioning_deviation = positioning;
    if (solution) *solution = best;
    num_guesses_ = usual_guesses;
    return std::max(fitting, positioning);
}
