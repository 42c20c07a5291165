#include <datumfit/align3d/points_to_planes/interpolated_square_dists_sum_free.h>
#include <datumfit/align3d/points_to_planes/normal_equations.h>
#include <datumfit/align3d/points_to_planes/point_moments.h>
#include <datumfit/align3d/points_to_planes/points_to_planes.h>
#include <datumfit/foundation/maths/brent_minimum_search.h>

#include <cmath>

#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wpsabi"  // no vector crosses a call: all that hold one are inlined into the pass
#endif

namespace {

using namespace datumfit::internal;

constexpr int unknowns = 6;
constexpr int first_rotation = 3;
constexpr int most_halvings = 5;
constexpr double line_tolerance = 1e-5;
constexpr int line_iterations = 5;

// The deviation of a record changes by n . t + r . (p x n).
struct free_planes {
    static constexpr int sums = outer_product<unknowns>::sums;

    template <class Real>
    DATUMFIT_INLINE void add(seen_record<Real> const & r, Real * s) const {
        triple<Real> const c = r.u.cross(r.n);
        Real const v[unknowns] = {r.n.x, r.n.y, r.n.z, c.x, c.y, c.z};
        outer_product<unknowns>::add(v, r.e.dot(r.n), s);
    }
    void write(double const * s, int, scaled_equations equations) const {
        outer_product<unknowns>::write(s, equations);
    }
};

// The point moves by t + r x p = t - K r, with K v = p x v. The sums are those of p and e, then those of a rotation.
struct free_points {
    static constexpr int own_sums = 6, sums = own_sums + point_moments::sums;

    template <class Real>
    DATUMFIT_INLINE void add(seen_record<Real> const & r, Real * s) const {
        s[0] += r.u.x;
        s[1] += r.u.y;
        s[2] += r.u.z;
        s[3] += r.e.x;
        s[4] += r.e.y;
        s[5] += r.e.z;
        point_moments::add(r, s + own_sums);
    }
    void write(double const * s, int n, scaled_equations equations) const {
        for (int k = 0; k < 3; ++k) {
            equations.add(k, k, n);
            equations.add(k, s[3 + k]);
        }
        // The lower left block is K, skew as it is.
        int const x = first_rotation, y = x + 1, z = x + 2;
        equations.add(x, 1, -s[2]);
        equations.add(x, 2, s[1]);
        equations.add(y, 0, s[2]);
        equations.add(y, 2, -s[0]);
        equations.add(z, 0, -s[1]);
        equations.add(z, 1, s[0]);
        point_moments::write(s + own_sums, first_rotation, equations);
    }
};

using free_systems = both_systems<free_planes, free_points>;

// Where on the line the true sum of squares is lowest, when the full step, for the linearised rotation, makes it worse.
double backed_off(sqInterpolatedSquareDistsSumFree & f, double at_start) {
    double t = 0.5;
    for (int i = 0; i < most_halvings; ++i, t /= 2.0) {
        if (at_start > f.function(t)) {
            double best = 0.0;
            ml_brent_minimum_search(f, 0.0, t, 1.0, line_tolerance, line_iterations, &best);
            return best;
        }
    }
    return 0.0;
}

}  // namespace

void sqPointsToPlanes::linear_step_free_points_to_planes(mlMatrix & A, mlVector & b) const {
    add_equations(bestfit_, {}, free_planes(), scaled_equations(A, b, first_rotation, rotation_scale_));
}

void sqPointsToPlanes::linear_step_free_points_to_points(mlMatrix & A, mlVector & b) const {
    add_equations(bestfit_, {}, free_points(), scaled_equations(A, b, first_rotation, rotation_scale_));
}

int sqPointsToPlanes::single_linear_step_free(giXform3 & step) {
    free_systems const systems{};
    kernel_sums<free_systems> const sums(bestfit_, {}, systems);
    double const * const point_sums = sums.s + free_planes::sums + free_points::own_sums;
    set_rotation_scale(point_moments::sum_of_squares(point_sums));

    mlMatrix A(mlMatrixZero, unknowns, unknowns);
    mlVector b(mlVectorZero, unknowns), start, minimum;
    systems.write(sums.s, bestfit_.size(), scaled_equations(A, b, first_rotation, rotation_scale_));
    if (!search_constrained_minimum(A, b, unknowns, start, minimum)) return 0;

    sqInterpolatedSquareDistsSumFree f(bestfit_, start, minimum, rotation_scale_, point_share, TINY_DOUBLE);
    double const at_start = f.function(0.0), at_minimum = f.function(1.0);
    step = f.last_xform();
    if (!(at_start >= at_minimum)) step = f.interpolate_xform(backed_off(f, at_start));
    return 1;
}
