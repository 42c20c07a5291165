#include <datumfit/align3d/points_to_planes/normal_equations.h>
#include <datumfit/align3d/points_to_planes/point_moments.h>
#include <datumfit/align3d/points_to_planes/points_to_planes.h>
#include <datumfit/align3d/points_to_planes/tangent_turn.h>

#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wpsabi"  // no vector crosses a call: all that hold one are inlined into the pass
#endif

namespace {

using namespace datumfit::internal;

constexpr int unknowns = 3;

// The deviation of a record changes by r . (u x n).
struct rotation_planes {
    static constexpr int sums = outer_product<unknowns>::sums;

    template <class Real>
    DATUMFIT_INLINE void add(seen_record<Real> const & r, Real * s) const {
        triple<Real> const c = r.u.cross(r.n);
        Real const v[unknowns] = {c.x, c.y, c.z};
        outer_product<unknowns>::add(v, r.e.dot(r.n), s);
    }
    void write(double const * s, int, scaled_equations equations) const {
        outer_product<unknowns>::write(s, equations);
    }
};

struct rotation_points {
    static constexpr int sums = point_moments::sums;

    template <class Real>
    DATUMFIT_INLINE void add(seen_record<Real> const & r, Real * s) const {
        point_moments::add(r, s);
    }
    void write(double const * s, int, scaled_equations equations) const { point_moments::write(s, 0, equations); }
};

}  // namespace

void sqPointsToPlanes::linear_step_rotation_points_to_planes(giPoint3 const & pivot, giPoint3 const & nominal_pivot,
                                                             mlMatrix & A, mlVector & b) const {
    add_equations(bestfit_, {pivot, nominal_pivot}, rotation_planes(), scaled_equations(A, b));
}

void sqPointsToPlanes::linear_step_rotation_points_to_points(giPoint3 const & pivot, giPoint3 const & nominal_pivot,
                                                             mlMatrix & A, mlVector & b) const {
    add_equations(bestfit_, {pivot, nominal_pivot}, rotation_points(), scaled_equations(A, b));
}

int sqPointsToPlanes::single_linear_step_locked_point(giXform3 & step) {
    if (positioning_.size() == 0) return 0;
    pivot_pair const pivots = {positioning_.read(0).point, positioning_.read(0).plane_point};
    mlMatrix A(mlMatrixZero, unknowns, unknowns);
    mlVector b(mlVectorZero, unknowns), start, minimum;
    add_equations(bestfit_, pivots, both_systems<rotation_planes, rotation_points>(), scaled_equations(A, b));
    if (!search_constrained_minimum(A, b, unknowns, start, minimum)) return 0;

    giXform3 const turn = tangent_turn(pivots.measured, giVector3(minimum[0], minimum[1], minimum[2]), TINY_DOUBLE);
    step = giXform3(giXformProduct, giXform3(giXformTranslate, pivots.nominal - pivots.measured), turn);
    return 1;
}
