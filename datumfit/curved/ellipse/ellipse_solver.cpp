#include <datumfit/curved/ellipse/ellipse_solver.h>

#include <datumfit/curved/ellipse/random_ellipses.h>
#include <datumfit/foundation/maths/levenberg_marquardt.h>
#include <datumfit/foundation/utilities/math.h>
#include <datumfit/primitives/evaluator/least_square_evaluator.h>

#include <cmath>

using namespace datumfit::internal;

namespace {

constexpr int fewest_points = 4;
constexpr int attempts = 20;

// The circle of least squares.
mlVector circle_start(sqLeastSquareEllipse const & problem, giPoint2coDynArr const & points) {
    giPoint2 centre;
    double radius, deviation;
    if (sqLeastSquareEvaluator::evaluate_circle(points, centre, radius, deviation) == 0) {
        centre = problem.centroid();
        radius = problem.range();
    }
    double const circle[] = {radius, radius, centre.x(), centre.y(), 0.0};
    return mlVector(utConvert, circle, 5);
}

}  // namespace

int sqCalculateLeastSquareEllipse(giPoint2coDynArr const & points, giPoint2 & centre, double & major, double & minor,
                                  double & angle, double & deviation) {
    if (points.size() < fewest_points) return 0;
    sqLeastSquareEllipse problem(points);
    mlLevenbergMarquardt solver(problem);
    random_ellipses starts(problem, points);
    mlVector start = circle_start(problem, points), found(start), p(start);
    double best = utMath::max_double();
    for (int attempt = 0; attempt < attempts; ++attempt) {
        if (attempt > 0) starts.best_of_next_batch(start);
        double const mean_square = solver.fit(start, found);
        if (mean_square < best) {
            best = mean_square;
            p = found;
        }
    }
    bool const in_order = std::abs(p[0]) > std::abs(p[1]);
    major = std::abs(in_order ? p[0] : p[1]);
    minor = std::abs(in_order ? p[1] : p[0]);
    angle = utMath::remd(in_order ? p[4] : p[4] + utMath::pi() / 2.0, utMath::pi());
    centre = giPoint2(p[2], p[3]);
    deviation = std::sqrt(best);
    return 1;
}
