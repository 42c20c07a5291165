#include <datumfit/primitives/evaluator/least_square_evaluator.h>

#include <datumfit/foundation/maths/levenberg_marquardt.h>
#include <datumfit/foundation/maths/random.h>
#include <datumfit/foundation/utilities/math.h>
#include <datumfit/primitives/least_square_circle3.h>
#include <datumfit/primitives/least_square_probed_circle2.h>
#include <datumfit/primitives/plane_frame.h>
#include <datumfit/primitives/point_sums.h>
#include <datumfit/primitives/ring_kernel.h>

#include <algorithm>
#include <cmath>

using namespace datumfit::internal;

namespace {

constexpr int probed_starts = 10;
constexpr double smallest_start = 0.1;  // of a radius, as a share of the mean distance from the centroid

// A circle in space is fitted to at most so many points; from the second number on they are spread over the array.
constexpr int sample_size = 10000;
constexpr int spread_from = 12000;

double mean_distance_from(giPoint2coDynArr const & points, giPoint2 const & from) {
    double const at[2] = {from.x(), from.y()};
    return mean_distance(plain(points), 2, points.size(), at);
}

double greatest_radius(doublecoDynArr const & radii, int n) {
    double greatest = 0.0;
    for (int i = 0; i < n; ++i) greatest = std::max(greatest, std::abs(radii[i]));
    return greatest;
}

giPoint3coDynArr sample_of(giPoint3coDynArr const & points) {
    int const n = points.size();
    giPoint3coDynArr sample(sample_size, 1);
    for (int i = 0; i < sample_size; ++i) {
        int const at = n < spread_from ? i : static_cast<int>(static_cast<double>(n) * i / 10000.0) % n;
        sample.append(points[at]);
    }
    return sample;
}

// The root mean square distance of points from a circle in space, heights above its plane included.
double deviation_in_space(giPoint3coDynArr const & points, giPoint3 const & centre, giUnitVec3 const & normal,
                          double radius) {
    lane_model<ring_kernel> model(plain(points), nullptr, points.size());
    double const circle[] = {centre.x(), centre.y(), centre.z(), normal.x(), normal.y(), normal.z(), radius};
    mlVector x(utConvert, circle, ring_kernel::parameters);
    model.from_parameters(mlVector(utCopy, x), x);
    model.place(x);
    return std::sqrt(model.sum_of_squares(utMath::max_double()) / points.size());
}

}  // namespace

int sqLeastSquareEvaluator::evaluate_circle(giPoint2coDynArr const & points, giPoint2 & centre, double & radius,
                                            double & deviation) {
    if (points.size() < 3) return 0;
    sqLeastSquareCircle2 problem(points);
    giPoint2 const m = problem.centroid();
    double const start[] = {m.x(), m.y(), mean_distance_from(points, m)};
    mlVector result(mlVectorDim, problem.n_parameters());
    double const mean_square = mlLevenbergMarquardt(problem).fit(mlVector(utConvert, start, 3), result);
    radius = result[2];
    centre = giPoint2(result[0], result[1]);
    deviation = std::sqrt(mean_square);
    return 1;
}

int sqLeastSquareEvaluator::evaluate_probed_circle(giPoint2coDynArr const & points, doublecoDynArr const & radii,
                                                   int inside, giPoint2 & centre, double & radius, double & deviation) {
    if (points.size() < 3) return 0;
    sqLeastSquareProbedCircle2 problem(points, radii, inside);
    giPoint2 const m = problem.centroid();
    double const r0 = mean_distance_from(points, m);
    double const q = greatest_radius(radii, points.size());
    mlVector result(mlVectorDim, problem.n_parameters());
    mlRandom random(1);
    deviation = utMath::max_double();
    for (int k = 0; k < probed_starts; ++k) {
        double const a = random.rnd(-q, q);
        double const b = random.rnd(-q, q);
        double const e = random.rnd(-q, q);
        double const start[] = {m.x() + a, m.y() + b, utMath::max(r0 + e, smallest_start * r0)};
        double const t = std::sqrt(mlLevenbergMarquardt(problem).fit(mlVector(utConvert, start, 3), result));
        if (deviation > t) {
            radius = result[2];
            centre = giPoint2(result[0], result[1]);
            deviation = t;
        }
    }
    return 1;
}

int sqLeastSquareEvaluator::evaluate_circle2(giPoint3 const & origin, giUnitVec3 const & normal,
                                             giPoint3coDynArr const & points, giPoint3 & centre, double & radius,
                                             double & deviation) {
    if (points.size() < 3) return 0;
    plane_frame const frame = plane_frame::near(points[0], origin, normal);
    giPoint2coDynArr flat;
    frame.project(points, flat);
    giPoint2 c;
    double within_plane;
    if (evaluate_circle(flat, c, radius, within_plane) == 0) return 0;
    centre = frame.point(c);
    deviation = deviation_in_space(points, centre, normal, radius);
    return 1;
}

int sqLeastSquareEvaluator::evaluate_circle3(giPoint3coDynArr const & points, giPoint3 & centre, giUnitVec3 & normal,
                                             double & radius, double & deviation) {
    if (points.size() < 3) return 0;
    if (points.size() > sample_size) return evaluate_circle3(sample_of(points), centre, normal, radius, deviation);
    giPoint3 plane_point, c;
    giUnitVec3 n;
    double r, of_start;
    if (evaluate_plane(points, plane_point, n, of_start) == 0) return 0;
    if (evaluate_circle2(plane_point, n, points, c, r, of_start) == 0) return 0;

    sqLeastSquareCircle3 problem(points);
    double const start[] = {c.x(), c.y(), c.z(), n.x(), n.y(), n.z(), r};
    mlVector result(mlVectorDim, problem.n_parameters());
    double const mean_square = mlLevenbergMarquardt(problem).fit(mlVector(utConvert, start, 7), result);
    deviation = std::sqrt(mean_square);
    normal = giUnitVec3(result[3], result[4], result[5]);
    radius = result[6];
    centre = giPoint3(result[0], result[1], result[2]);
    return 1;
}
