#include <datumfit/primitives/evaluator/least_square_evaluator.h>

#include <datumfit/foundation/maths/levenberg_marquardt.h>
#include <datumfit/foundation/utilities/math.h>
#include <datumfit/primitives/least_square_probed_line2.h>
#include <datumfit/primitives/least_square_probed_plane.h>

#include <cmath>

namespace {

// What differs between lines of the plane and planes of space.
struct in_the_plane {
    using point = giPoint2;
    using vector = giVector2;
    using unit = giUnitVec2;
    using problem = sqLeastSquareProbedLine2;
    static mlVector start(unit const & n, point const & p) {
        double const at[] = {n.dot(p.release()), n.x(), n.y()};
        return mlVector(utConvert, at, 3);
    }
    static unit normal(mlVector const & p) { return unit(p[1], p[2]); }
};

struct in_space {
    using point = giPoint3;
    using vector = giVector3;
    using unit = giUnitVec3;
    using problem = sqLeastSquareProbedPlane;
    static mlVector start(unit const & n, point const & p) {
        double const at[] = {n.dot(p.release()), n.x(), n.y(), n.z()};
        return mlVector(utConvert, at, 4);
    }
    static unit normal(mlVector const & p) { return unit(p[1], p[2], p[3]); }
};

template <class Space>
typename Space::vector sum_of(coDynArr<typename Space::unit> const & normals, typename Space::vector sum) {
    for (int i = 0; i < normals.size(); ++i) sum += normals[i];
    return sum;
}

// From the unprobed fit, the point p0 and the normal n0, to the fit that stands one probe radius off each centre.
template <class Space>
void fit_probed(coDynArr<typename Space::point> const & points, doublecoDynArr const & radii,
                typename Space::vector const & side, typename Space::point const & p0, typename Space::unit const & n0,
                typename Space::point & point, typename Space::unit & normal, double & deviation) {
    mlVector const start = Space::start(n0, p0);
    mlVector result(start), best_result(start);
    bool const side_known = side.length().value() != 0.0;
    double best = utMath::max_double();
    for (int inside : {1, 0}) {
        if (side_known) inside = n0.dot(side) > 0.0 ? 1 : 0;
        typename Space::problem problem(points, radii, inside);
        double const mean_square = mlLevenbergMarquardt(problem).fit(start, result);
        if (best > mean_square) {
            best = mean_square;
            best_result = result;
        }
        if (side_known) break;
    }
    typename Space::unit const n = Space::normal(best_result);
    typename Space::point const foot = (best_result[0] * n).anchor();  // of the origin
    typename Space::vector const w = foot - p0;
    point = foot + (w - w.dot(n) * n);
    normal = side.dot(n) < 0.0 ? -n : n;
    deviation = std::sqrt(best);
}

}  // namespace

int sqLeastSquareEvaluator::evaluate_probed_line2(giPoint2coDynArr const & points, doublecoDynArr const & radii,
                                                  giUnitVec2coDynArr const & normals, giPoint2 & point,
                                                  giUnitVec2 & normal, double & deviation) {
    giPoint2 p0;
    giUnitVec2 d0;
    double of_start;
    if (evaluate_line(points, p0, d0, of_start) == 0) return 0;
    giVector2 const side = sum_of<in_the_plane>(normals, giVector2(0.0, 0.0));
    fit_probed<in_the_plane>(points, radii, side, p0, giUnitVec2(-d0.y(), d0.x()), point, normal, deviation);
    return 1;
}

int sqLeastSquareEvaluator::evaluate_probed_plane(giPoint3coDynArr const & points, doublecoDynArr const & radii,
                                                  giUnitVec3coDynArr const & normals, giPoint3 & point,
                                                  giUnitVec3 & normal, double & deviation) {
    giPoint3 p0;
    giUnitVec3 n0;
    double of_start;
    if (evaluate_plane(points, p0, n0, of_start) == 0) return 0;
    giVector3 const side = sum_of<in_space>(normals, giVector3(0.0, 0.0, 0.0));
    fit_probed<in_space>(points, radii, side, p0, n0, point, normal, deviation);
    return 1;
}
