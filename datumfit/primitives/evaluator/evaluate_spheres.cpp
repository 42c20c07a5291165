#include <datumfit/primitives/evaluator/least_square_evaluator.h>

#include <datumfit/foundation/maths/levenberg_marquardt.h>
#include <datumfit/foundation/maths/random.h>
#include <datumfit/foundation/utilities/math.h>
#include <datumfit/primitives/least_square_probed_sphere.h>

#include <cmath>

namespace {

constexpr int passes = 20;
constexpr int candidates = 100;         // of each pass but the first
constexpr int candidates_a_range = 30;  // before their range grows by the first one again

// A first fit is good enough when its mean square is below this share of the search range, number against number.
constexpr double good_enough = 0.001;

// The best of a pass of random spheres about m, each scored by its sum of squares; `start` stays if none has a sum.
void draw_start(sqLeastSquareSphere & problem, giPoint3 const & m, double range, mlRandom & random, mlVector & start) {
    double score = utMath::max_double();
    mlVector candidate(mlVectorDim, problem.n_parameters());
    for (int j = 0; j < candidates; ++j) {
        double const f = (j / candidates_a_range + 1) * range;
        candidate[0] = random.rnd(m.x() - f, m.x() + f);
        candidate[1] = random.rnd(m.y() - f, m.y() + f);
        candidate[2] = random.rnd(m.z() - f, m.z() + f);
        candidate[3] = random.rnd(0.0, f);
        double const sum = problem.score(candidate, score);
        if (score > sum) {
            score = sum;
            start = candidate;
        }
    }
}

// Fits plain and probed spheres alike: the problem knows the difference.
void fit_sphere(sqLeastSquareSphere & problem, giPoint3 & centre, double & radius, double & deviation) {
    double const range = 3.0 * problem.range();
    giPoint3 const m = problem.centroid();
    double const first[] = {m.x(), m.y(), m.z(), range};
    mlVector start(utConvert, first, 4), result(start), best_result(start);
    double best = utMath::max_double();
    mlRandom random(1);
    for (int pass = 0; pass < passes; ++pass) {
        if (pass > 0) draw_start(problem, m, range, random, start);
        double const mean_square = mlLevenbergMarquardt(problem).fit(start, result);
        if (best > mean_square) {
            best = mean_square;
            best_result = result;
        }
        if (pass == 0 && good_enough * range > best) break;
    }
    radius = best_result[3];
    centre = giPoint3(best_result[0], best_result[1], best_result[2]);
    deviation = std::sqrt(best);
}

}  // namespace

int sqLeastSquareEvaluator::evaluate_sphere(giPoint3coDynArr const & points, giPoint3 & centre, double & radius,
                                            double & deviation) {
    if (points.size() < 4) return 0;
    sqLeastSquareSphere problem(points);
    fit_sphere(problem, centre, radius, deviation);
    return 1;
}

int sqLeastSquareEvaluator::evaluate_probed_sphere(giPoint3coDynArr const & points, doublecoDynArr const & radii,
                                                   int inside, giPoint3 & centre, double & radius, double & deviation) {
    if (points.size() < 4) return 0;
    sqLeastSquareProbedSphere problem(points, radii, inside);
    fit_sphere(problem, centre, radius, deviation);
    return 1;
}
