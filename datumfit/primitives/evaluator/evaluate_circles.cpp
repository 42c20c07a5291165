#include <datumfit/primitives/evaluator/least_square_evaluator.h>

#include <datumfit/foundation/maths/levenberg_marquardt.h>
#include <datumfit/foundation/utilities/math.h>
#include <datumfit/primitives/circle_fits.h>
#include <datumfit/primitives/least_square_circle3.h>
#include <datumfit/primitives/plane_frame.h>
#include <datumfit/primitives/point_sums.h>
#include <datumfit/primitives/ring_kernel.h>

#include <cmath>

using namespace datumfit::internal;

namespace {

// A circle in space is fitted to at most so many points; from the second number on they are spread over the array.
constexpr int sample_size = 10000;
constexpr int spread_from = 12000;

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
    mlLevenbergMarquardt solver(problem);
    mlVector circle(mlVectorDim, problem.n_parameters());
    double const mean_square = fit_circle(problem, solver, points, circle);
    radius = circle[2];
    centre = giPoint2(circle[0], circle[1]);
    deviation = std::sqrt(mean_square);
    return 1;
}

int sqLeastSquareEvaluator::evaluate_probed_circle(giPoint2coDynArr const & points, doublecoDynArr const & radii,
                                                   int inside, giPoint2 & centre, double & radius, double & deviation) {
    if (points.size() < 3) return 0;
    sqLeastSquareProbedCircle2 problem(points, radii, inside);
    mlLevenbergMarquardt solver(problem);
    mlVector circle(mlVectorDim, problem.n_parameters()), scratch(circle);
    deviation = fit_probed_circle(problem, solver, points, radii, scratch, circle);
    if (deviation == utMath::max_double()) return 1;
    radius = circle[2];
    centre = giPoint2(circle[0], circle[1]);
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
