#include <datumfit/curved/cone/cone_guess_generator.h>

#include <datumfit/curved/axis_limits.h>
#include <datumfit/curved/cone/least_square_cone_fixed_axis.h>
#include <datumfit/foundation/maths/levenberg_marquardt.h>
#include <datumfit/foundation/maths/singular_value_decomposition.h>
#include <datumfit/foundation/utilities/math.h>
#include <datumfit/primitives/evaluator/least_square_evaluator.h>

#include <algorithm>
#include <cmath>

using namespace datumfit::internal;

namespace {

constexpr long seed = 6983277;
constexpr double no_guess = utMath::max_double();

// Normals nearer to one plane than this are those of a cylinder.
constexpr double singular = 1e-7;

// Circles: the least cosine between their planes, the least difference of places and of radii, and the furthest apex.
constexpr double nearly_parallel = 0.85;
constexpr double same_circle = 1e-7;
constexpr double furthest_apex = 10000000.0;

constexpr double flat_half_angle = 1.5657963267948967;  // pi / 2 - 0.005
constexpr int flat_steps = 100;

constexpr int trials = 200;
constexpr int trials_of_one_width = 60;

struct circle {
    giPoint3 centre;
    giUnitVec3 normal;
    double radius = 0.0;

    // Through three points that follow each other; false where they have none.
    bool find(giPoint3coDynArr const & points, int first) {
        giPoint3coDynArr const three = {points[first], points[first + 1], points[first + 2]};
        double deviation;
        return sqLeastSquareEvaluator::evaluate_circle3(three, centre, normal, radius, deviation) != 0;
    }
};

void set_place(giPoint3 const & q, mlVector & p) {
    p[0] = q.x();
    p[1] = q.y();
    p[2] = q.z();
}

void set_direction(giVector3 const & a, mlVector & p) {
    p[3] = a.x();
    p[4] = a.y();
    p[5] = a.z();
}

void set_cone(giPoint3 const & apex, giVector3 const & axis, double half_angle, mlVector & p) {
    p.become(mlVectorZero, 8);
    set_place(apex, p);
    set_direction(axis, p);
    p[7] = half_angle;
}

// The axis of a cone with these normals, whose tips lie on a circle about it; 0 where there is none.
int axis_of_normals(giUnitVec3coDynArr const & normals, giUnitVec3 & axis) {
    giPoint3coDynArr tips(normals.size(), 1);
    for (int i = 0; i < normals.size(); ++i) {
        if (normals[i].invalid()) return 0;
        tips.append(normals[i].anchor());
    }
    giPoint3 in_plane;
    double deviation;
    return sqLeastSquareEvaluator::evaluate_plane(tips, in_plane, axis, deviation);
}

// The point nearest to all tangent planes. It is found as seen from a place among the points, which keeps its digits;
// false where the planes have none in common.
bool apex_of_tangents(giPoint3coDynArr const & points, giUnitVec3coDynArr const & normals, giPoint3 const & from,
                      giPoint3 & apex) {
    int const n = normals.size();
    mlMatrix rows(n, 3);
    mlVector heights(mlVectorDim, n);
    for (int i = 0; i < n; ++i) {
        for (int k = 0; k < 3; ++k) rows(i, k) = static_cast<giVector3 const &>(normals[i]).coordinate(gi_Axis(k));
        heights[i] = normals[i].dot(points[i] - from);
    }
    mlSingularValueDecomposition svd(rows);
    if (svd.is_singular(singular)) return false;
    mlVector const place(mlMatrixProduct, svd.inverse(singular), heights);
    apex = from + giVector3(place[0], place[1], place[2]);
    return true;
}

// The mean slope of normals against the axis.
double half_angle_of(giUnitVec3coDynArr const & normals, giUnitVec3 const & axis) {
    double sum = 0.0;
    for (int i = 0; i < normals.size(); ++i) sum += std::acos(std::min(1.0, std::abs(axis.dot(normals[i]))));
    return utMath::pi() / 2.0 - sum / normals.size();
}

// Of the circles through three points behind the first three, the one whose plane is most nearly parallel to theirs;
// false where none is.
bool find_parallel(giPoint3coDynArr const & points, giUnitVec3 const & normal, circle & found) {
    double best = -1.0;
    for (int first = 3; first <= 6 && first + 2 < points.size(); ++first) {
        circle c;
        if (!c.find(points, first)) continue;
        double const parallel = std::abs(c.normal.dot(normal));
        if (parallel > best) {
            best = parallel;
            found = c;
        }
    }
    return best >= nearly_parallel;
}

}  // namespace

sqConeGuessGenerator::sqConeGuessGenerator(giPoint3coDynArr const & points, giUnitVec3 const & cone_axis,
                                           giAngle const & cone_angle, giUnitVec3coDynArr const & normals)
    : points_(&points), random_(seed), cone_(points), cone_axis_(cone_axis), cone_angle_(cone_angle),
      normals_(utCopy, normals) {
    centroid_ = cone_.centroid();
}

double sqConeGuessGenerator::deviation(mlVector & parameters) {
    return cone_.score(parameters, no_guess);
}

double sqConeGuessGenerator::get_guess_from_normals(mlVector & parameters) {
    if (normals_.size() < 3 || points_->size() < normals_.size()) return no_guess;
    giUnitVec3 axis;
    giPoint3 apex;
    if (axis_of_normals(normals_, axis) == 0) return no_guess;
    if (!apex_of_tangents(*points_, normals_, centroid_, apex)) return no_guess;
    if (axis.dot((*points_)[0] - apex) > 0.0) axis = -axis;
    set_cone(apex, axis, half_angle_of(normals_, axis), parameters);
    return deviation(parameters);
}

double sqConeGuessGenerator::get_guess_two_circles(mlVector & parameters) {
    circle greater, smaller;
    if (points_->size() < 3 || !greater.find(*points_, 0)) return no_guess;
    if (!find_parallel(*points_, greater.normal, smaller)) return no_guess;
    if (smaller.radius > greater.radius) std::swap(greater, smaller);
    giVector3 axis = smaller.centre - greater.centre;
    double const apart = axis.length();
    double const narrowing = greater.radius - smaller.radius;
    if (!(apart >= same_circle && narrowing >= same_circle)) return no_guess;
    double const height = apart / narrowing * greater.radius;
    if (!(height <= furthest_apex)) return no_guess;
    axis.unitize();
    set_cone(greater.centre + height * axis, axis, std::atan2(narrowing, apart), parameters);
    return deviation(parameters);
}

double sqConeGuessGenerator::get_guess_flat(mlVector & parameters) {
    giPoint3 middle;
    giUnitVec3 normal;
    double off_plane;
    if (sqLeastSquareEvaluator::evaluate_plane(*points_, middle, normal, off_plane) == 0) return no_guess;
    double lo = 0.0, hi = 0.0;
    for (int i = 0; i < points_->size(); ++i) {
        double const height = normal.dot((*points_)[i] - middle);
        lo = std::min(lo, height);
        hi = std::max(hi, height);
    }
    mlVector trial(mlVectorZero, 8);
    trial[7] = flat_half_angle;
    double lowest = no_guess;
    giPoint3 walking = middle + lo * normal;
    for (int step = 0; step < flat_steps; ++step) {
        walking += (hi - lo) / flat_steps * normal;
        // Only place and direction are set anew: what the unique form made of the rest carries through the scan.
        set_place(walking, trial);
        for (double const sense : {1.0, -1.0}) {
            set_direction(sense * normal, trial);
            double const sum = cone_.score(trial, lowest);
            if (sum < lowest) {
                lowest = sum;
                parameters = trial;
            }
        }
    }
    return lowest;
}

// No two draws in one expression, whose order would be the compiler's.
giVector3 sqConeGuessGenerator::random_direction() {
    double const x = random_.minus_one_one();
    double const y = random_.minus_one_one();
    double const z = random_.minus_one_one();
    giVector3 direction(x, y, z);
    return direction.unitize().invalid() ? giVector3(giAxisZ) : direction;
}

double sqConeGuessGenerator::get_guess_fixed_axis_fit(mlVector & parameters) {
    sqLeastSquareConeFixedAxis problem(*points_);
    mlLevenbergMarquardt solver(problem);
    mlVector start(mlVectorDim, 2), place(mlVectorDim, 2), trial;
    double const range = cone_.range();
    double lowest = no_guess;
    for (int i = 0; i < trials; ++i) {
        int const widening = i / trials_of_one_width + 1;
        double const width = widening * 3.0 * range;
        giUnitVec3 const direction = random_direction();
        if (!cone_axis_.invalid() && !axis_in_limit(direction, cone_angle_, cone_axis_)) continue;
        problem.set_axis(direction);
        giVector3 const centre = centroid_.release();
        double const x = centre.dot(problem.x_axis()), y = centre.dot(problem.y_axis());
        start[0] = random_.rnd(x - width, x + width);
        start[1] = random_.rnd(y - width, y + width);
        solver.fit(start, place);
        problem.set_parameters(place);
        problem.full_fit_parameters(trial);
        double const sum = cone_.score(trial, lowest);
        if (sum < lowest) {
            lowest = sum;
            parameters = trial;
        }
    }
    return deviation(parameters);
}
