#include <datumfit/curved/torus/torus_solver.h>

#include <datumfit/curved/torus/distance_from_torus.h>
#include <datumfit/curved/torus/least_square_torus.h>
#include <datumfit/foundation/geometry/box3.h>
#include <datumfit/foundation/maths/down_hill_simplex.h>
#include <datumfit/foundation/maths/levenberg_marquardt.h>
#include <datumfit/foundation/maths/random.h>
#include <datumfit/foundation/utilities/math.h>
#include <datumfit/sampling/scan_range.h>
#include <datumfit/sampling/vector_gradient.h>

#include <cmath>

using datumfit::internal::orthogonal_pair;

namespace {

constexpr double none = 3.4028234663852886e38;  // the largest float: the deviation of no torus

constexpr int first_rings = 2;
constexpr int most_rings = 64;
constexpr int starts_a_refinement = 3;
constexpr int most_refinements = 20;

constexpr int local_runs = 100;
constexpr double shortest_direction = 1.1920928955078125e-7;  // squared

struct torus {
    giPoint3 centre;
    giVector3 axis;
    double major = 0.0;
    double minor = 0.0;
    double deviation = none;
};

// The objective of the simplex counts what is no torus as a deviation of 100. Points whose box has no longer diagonal
// than this come nearer than that to any circle they are folded to; others are searched in a greater unit, a power of
// two, which costs no digit.
constexpr double longest_diagonal = 200.0;

double unit_of(giPoint3coDynArr const & points) {
    if (points.size() == 0) return 1.0;
    giBox3 box;
    for (int i = 0; i < points.size(); ++i) box.merge(points[i]);
    double const diagonal = (box.max() - box.min()).length().value();
    bool const large = diagonal > longest_diagonal && std::isfinite(diagonal);
    return large ? std::ldexp(1.0, std::ilogb(diagonal / longest_diagonal) + 1) : 1.0;
}

giPoint3 times(double factor, giPoint3 const & p) {
    return giPoint3(factor * p.x(), factor * p.y(), factor * p.z());
}

// One simplex or several from a start axis, in the unit in which the points are given.
int descend_from_guess(giPoint3coDynArr const & points, doublecoDynArr const & radii, int inside,
                       giPoint3 const & start_point, giVector3 const & start_axis, giPoint3 & centre, giVector3 & axis,
                       double & major, double & minor, double & deviation, sqTORUS_SPEED speed) {
    sqDistanceFromTorus distance(points, radii, inside, start_point, start_axis);
    mlVector x(mlVectorZero, 4);
    auto const descend = [&x](mlDownHillSimplex & simplex, mlFunctionN1 & f, mlDownHillSimplexSpeed effort) {
        simplex.solve(f, x, effort);
        simplex.result(x);
    };
    mlDownHillSimplexSpeed effort = static_cast<mlDownHillSimplexSpeed>(speed);
    if (speed == sqTORUS_HULL_AREA) {
        sqRotationalProjectionHullArea hull(distance);
        mlDownHillSimplex simplex(4);
        for (int k = 0; k < 3; ++k) descend(simplex, hull, mlDownHillSimplexNormal);
        descend(simplex, hull, mlDownHillSimplexThorough);
        effort = mlDownHillSimplexThorough;
    }
    mlDownHillSimplex simplex(4);
    descend(simplex, distance, effort);
    return distance.torus_data(x, centre, axis, major, minor, deviation);
}

// A search of tori about a set of points.
class torus_search {
public:
    torus_search(giPoint3coDynArr const & points, doublecoDynArr const & radii, int inside, double tolerance)
        : points_(points), radii_(radii), inside_(inside), tolerance_(tolerance), problem_(points, radii, inside) {}

    bool run(torus & best) {
        scan(best);
        if (best.deviation == none) return false;
        try_guess(giPoint3(best.centre), giVector3(best.axis), best, sqTORUS_THOROUGH);
        if (tolerance_ > best.deviation) return true;
        try_guess(giPoint3(best.centre), giVector3(best.axis), best, sqTORUS_HULL_AREA);
        refine(best);
        return true;
    }

private:
    void try_guess(giPoint3 const & start_point, giVector3 const & start_axis, torus & best,
                   sqTORUS_SPEED speed) const {
        torus t;
        if (sqCalculateTorusDownhillSimplexWithGuess(points_, radii_, inside_, start_point, start_axis, t.centre,
                                                     t.axis, t.major, t.minor, t.deviation, speed) != 0 &&
            t.deviation < best.deviation) {
            best = t;
        }
    }

    // Tries axes of a grid of directions and places about the centroid, ever finer ones.
    void scan(torus & best) {
        double const length = 3.0 * problem_.range();
        sqScanRange s1(-length, length, tolerance_), s2(-length, length, tolerance_);
        for (int rings = first_rings;; rings *= 2) {
            if (!scan_directions(rings, s1, s2, best)) return;
            if (rings > most_rings || s1.reduce_step() == 0 || s2.reduce_step() == 0) return;
        }
    }

    // False when the scan is to end.
    bool scan_directions(int rings, sqScanRange & s1, sqScanRange & s2, torus & best) {
        giPoint3 const c = problem_.centroid();
        sqVectorGradient const gradient(giVector3(giAxisZ), utMath::pi(), rings);
        for (sqVectorGradientIterator at = gradient.iterator(); at++;) {
            giVector3 d = at.vector(), e1, e2;
            d.unitize();
            orthogonal_pair(e1, e2, d);
            for (double t1; s1.next(t1) != 0;) {
                for (double t2; s2.next(t2) != 0;) {
                    if (!try_start(c + (t1 * e1 + t2 * e2), d, best)) return false;
                }
                s2.reset_step();
            }
            s1.reset_step();
        }
        return true;
    }

    // A quick search; the best of every four of them is gone into.
    bool try_start(giPoint3 const & point, giVector3 const & axis, torus & best) {
        try_guess(point, axis, work_, sqTORUS_QUICK);
        if (++tried_ > starts_a_refinement) {
            if (!work_.centre.invalid()) try_guess(work_.centre, work_.axis, best, sqTORUS_NORMAL);
            work_.deviation = none;
            ++refined_;
            tried_ = 0;
        }
        return refined_ <= most_refinements && !(tolerance_ > best.deviation);
    }

    // Runs the solver from the torus found, and from others about its centre with axes of random direction.
    void refine(torus & best) {
        mlLevenbergMarquardt solver(problem_);
        mlRandom random(1);
        mlVector start(mlVectorDim, problem_.n_parameters()), found(start), best_found;
        double best_square = none;
        for (int k = 0; k < local_runs; ++k) {
            giVector3 axis = best.axis;
            if (k > 0) {
                double const x = random.minus_one_one(), y = random.minus_one_one();
                axis = giVector3(x, y, random.minus_one_one());
            }
            if (axis.dot(axis) < shortest_direction) axis.set_z(1.0);
            double const p[] = {best.centre.x(), best.centre.y(), best.centre.z(), axis.x(),
                                axis.y(),        axis.z(),        best.major,      best.minor};
            start.become(utConvert, p, 8);
            double const square = solver.fit(start, found);
            if (square < best_square) {
                best_square = square;
                best_found = found;
            }
        }
        if (best_square == none) return;
        best.centre = giPoint3(best_found[0], best_found[1], best_found[2]);
        best.axis = giVector3(best_found[3], best_found[4], best_found[5]);
        best.major = best_found[6];
        best.minor = best_found[7];
        best.deviation = std::sqrt(best_square);
    }

    giPoint3coDynArr const & points_;
    doublecoDynArr const & radii_;
    int inside_;
    double tolerance_;
    sqLeastSquareTorus problem_;
    torus work_;
    int tried_ = 0;
    int refined_ = 0;
};

}  // namespace

int sqCalculateTorusDownhillSimplex(giPoint3coDynArr const & points, doublecoDynArr const & radii, int inside,
                                    giPoint3 & centre, giVector3 & axis, double & major, double & minor,
                                    double & deviation, double tolerance) {
    torus best;
    bool const found = torus_search(points, radii, inside, tolerance).run(best);
    deviation = best.deviation;
    if (!found) return 0;
    centre = best.centre;
    axis = best.axis;
    major = best.major;
    minor = best.minor;
    return 1;
}

int sqCalculateTorusDownhillSimplexWithGuess(giPoint3coDynArr const & points, doublecoDynArr const & radii, int inside,
                                             giPoint3 const & start_point, giVector3 const & start_axis,
                                             giPoint3 & centre, giVector3 & axis, double & major, double & minor,
                                             double & deviation, sqTORUS_SPEED speed) {
    double const unit = unit_of(points);
    if (unit == 1.0) {
        return descend_from_guess(points, radii, inside, start_point, start_axis, centre, axis, major, minor, deviation,
                                  speed);
    }
    giPoint3coDynArr smaller_points(points.size(), 1);
    doublecoDynArr smaller_radii(radii.size() + 1, 1);
    for (int i = 0; i < points.size(); ++i) smaller_points.append(times(1.0 / unit, points[i]));
    for (int i = 0; i < radii.size(); ++i) smaller_radii.append(radii[i] / unit);
    if (descend_from_guess(smaller_points, smaller_radii, inside, times(1.0 / unit, start_point), start_axis, centre,
                           axis, major, minor, deviation, speed) == 0) {
        return 0;
    }
    centre = times(unit, centre);
    major *= unit;
    minor *= unit;
    deviation *= unit;
    return 1;
}
