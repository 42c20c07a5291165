#include <datumfit/curved/cone/cone_search.h>

#include <datumfit/foundation/maths/levenberg_marquardt.h>

#include <cmath>

namespace datumfit {
namespace internal {

namespace {

constexpr int random_guesses = 6;      // of a pass, each the best of many random axes
constexpr double cone_of_pass = 25.0;  // degrees about the direction that a pass favours

// A solution is good enough when its deviation is below this share of the range of the points, if there are more of
// them than so many, or below the rounding of measured data.
constexpr int few_points = 15;
constexpr double good_deviation = 0.001;
constexpr double perfect_deviation = 1e-8;

constexpr int refining_iterations = 10000;

using guess = double (sqConeGuessGenerator::*)(mlVector &);

}  // namespace

cone_search::cone_search(sqLeastSquareCone & problem, giPoint3coDynArr const & points,
                         giPoint3coDynArr const & guess_points, giUnitVec3 const & preferred_dir,
                         giAngle const & dir_limit, giUnitVec3coDynArr const & normals, ways const & w)
    : problem_(problem), points_(points), guess_points_(guess_points), preferred_dir_(preferred_dir),
      dir_limit_(dir_limit), normals_(normals), ways_(w), range_(problem.range()),
      results_(ut_make_observer(&points), ut_make_observer(&normals), preferred_dir, dir_limit, range_,
               w.non_physical_tolerance) {}

void cone_search::run(double & square, mlVector & parameters) {
    bool const has_normals = normals_.size() != 0;
    bool const has_limits = has_normals || !preferred_dir_.invalid();
    int const directed_passes = !has_limits ? 0 : has_normals ? sqLeastSquareDistance3::num_guess_directions() : 1;
    try_pass(giUnitVec3(), giAngle(), true);
    for (int i = 0; i < directed_passes && results_.constrained_deviation() == utMath::max_double(); ++i) {
        if (has_normals) {
            try_pass(sqLeastSquareDistance3::guess_direction(i), giAngle(giAngleDegrees, cone_of_pass), false);
        } else {
            try_pass(preferred_dir_, dir_limit_, false);
        }
    }
    results_.get_best(square, parameters);
    if (square == utMath::max_double() || !ways_.refine) return;
    solve(parameters, true);
    results_.get_best(square, parameters);
}

void cone_search::try_pass(giUnitVec3 const & centre, giAngle const & angle, bool first) {
    sqConeGuessGenerator generator(guess_points_, centre, angle, normals_);
    mlVector start(mlVectorZero, problem_.n_parameters());
    auto const try_guess = [&](guess of) {
        bool const guessed = (generator.*of)(start) != utMath::max_double();
        if (guessed) solve(start, false);
        return guessed;
    };
    auto const ends_with = [&](guess of) { return try_guess(of) && ways_.stop_at_any_guess && good_enough(); };

    if (first && ends_with(&sqConeGuessGenerator::get_guess_from_normals)) return;
    if (ends_with(&sqConeGuessGenerator::get_guess_two_circles)) return;
    if (ways_.flat_guess && ends_with(&sqConeGuessGenerator::get_guess_flat)) return;
    for (int k = 0; k < random_guesses; ++k) {
        if (try_guess(&sqConeGuessGenerator::get_guess_fixed_axis_fit) && good_enough()) return;
    }
}

bool cone_search::good_enough() const {
    double const e = std::sqrt(results_.constrained_deviation());
    return (points_.size() > few_points && good_deviation * range_ > e) || perfect_deviation * range_ > e;
}

void cone_search::solve(mlVector const & start, bool to_the_last_digit) {
    mlLevenbergMarquardt solver(problem_);
    if (to_the_last_digit) {
        solver.set_strict(true);
        solver.set_max_iterations(refining_iterations);
    }
    double const square = solver.fit(start, found_);
    results_.add(square, found_);
}

}  // namespace internal
}  // namespace datumfit
