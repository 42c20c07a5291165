#include <datumfit/align3d/points_to_planes/normal_equations.h>
#include <datumfit/align3d/points_to_planes/points_to_planes.h>
#include <datumfit/align3d/points_to_planes/tangent_turn.h>

#include <algorithm>

#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wpsabi"  // no vector crosses a call: all that hold one are inlined into the pass
#endif

namespace {

using namespace datumfit::internal;

constexpr int most_unknowns = 4;

// The axis, and the free shifts beside the turn about it. Those that are not free are zero, so that the pass is the
// same for all; what it sums for them is not read.
struct axis_freedoms {
    int m;
    giVector3 axis;
    giVector3 orts[most_unknowns - 1];

    axis_freedoms(int unknowns, giVector3 const & direction) : m(unknowns), axis(direction) {
        std::fill(std::begin(orts), std::end(orts), giVector3(0.0, 0.0, 0.0));
        sqPointsToPlanes::linear_step_fixed_axis_orts(m, axis, orts);
    }

    int turn() const { return m - 1; }
    int place_of(int unknown) const { return unknown == turn() ? most_unknowns - 1 : unknown; }
};

// The deviation of a record changes by n . S + g (u x n) . axis, for a shift S and a turn by g.
struct axis_planes {
    axis_freedoms const & freedoms;
    static constexpr int sums = outer_product<most_unknowns>::sums;

    template <class Real>
    DATUMFIT_INLINE void add(seen_record<Real> const & r, Real * s) const {
        giVector3 const * const orts = freedoms.orts;
        Real const v[most_unknowns] = {r.n.dot(orts[0]), r.n.dot(orts[1]), r.n.dot(orts[2]),
                                       r.u.cross(r.n).dot(freedoms.axis)};
        outer_product<most_unknowns>::add(v, r.e.dot(r.n), s);
    }
    void write(double const * s, int, scaled_equations equations) const {
        outer_product<most_unknowns>::write(s, freedoms.m, equations, [&](int k) { return freedoms.place_of(k); });
    }
};

// The point moves by S + g c, with c = axis x u.
struct axis_points {
    axis_freedoms const & freedoms;
    static constexpr int sums = 8;

    template <class Real>
    DATUMFIT_INLINE void add(seen_record<Real> const & r, Real * s) const {
        triple<Real> const c = triple<Real>(freedoms.axis).cross(r.u);
        for (int k = 0; k < most_unknowns - 1; ++k) {
            triple<Real> const ort(freedoms.orts[k]);
            s[k] += c.dot(ort);
            s[3 + k] += r.e.dot(ort);
        }
        s[6] += c.dot(c);
        s[7] += r.e.dot(c);
    }
    void write(double const * s, int n, scaled_equations equations) const {
        int const turn = freedoms.turn();
        for (int k = 0; k < turn; ++k) {
            equations.add(k, k, n);
            equations.add(turn, k, s[k]);
            equations.add(k, s[3 + k]);
        }
        equations.add(turn, turn, s[6]);
        equations.add(turn, s[7]);
    }
};

// The square of the lever arm of each record about the origin, times its weight.
struct lever_arms {
    static constexpr int sums = 1;

    template <class Real>
    DATUMFIT_INLINE void add(lane_record<Real> const & r, Real (&s)[1]) const {
        triple<Real> const c = r.p.cross(r.n);
        s[0] += c.dot(c);
    }
};

}  // namespace

void sqPointsToPlanes::linear_step_fixed_axis_points_to_planes(int m, giPoint3 const & pivot,
                                                               giPoint3 const & nominal_pivot, giVector3 const & axis,
                                                               mlMatrix & A, mlVector & b) const {
    axis_freedoms const freedoms(m, axis);
    add_equations(bestfit_, {pivot, nominal_pivot}, axis_planes{freedoms},
                  scaled_equations(A, b, freedoms.turn(), rotation_scale_));
}

void sqPointsToPlanes::linear_step_fixed_axis_points_to_points(int m, giPoint3 const & pivot,
                                                               giPoint3 const & nominal_pivot, giVector3 const & axis,
                                                               mlMatrix & A, mlVector & b) const {
    axis_freedoms const freedoms(m, axis);
    add_equations(bestfit_, {pivot, nominal_pivot}, axis_points{freedoms},
                  scaled_equations(A, b, freedoms.turn(), rotation_scale_));
}

giXform3 sqPointsToPlanes::align_locked_direction() {
    giXform3 lock(giXformIdentity);
    // Unit vectors: unequal lengths alone would let each step undo the turn of the one before.
    giVector3 const from = locked_from_.read(0).unit(), to = locked_to_.read(0).unit();
    if (!((from - to).length() > TINY_DOUBLE)) return lock;
    find_lock_matrix(from, to, lock);
    for (int i = 0; i < bestfit_.size(); ++i) bestfit_[i].point = lock * bestfit_[i].point;
    transform_rps_data(lock);
    return lock;
}

int sqPointsToPlanes::single_linear_step_locked_axis(giXform3 & step) {
    if (locked_from_.size() == 0) return 0;
    double arms[1] = {};
    sum_over_records(bestfit_, lever_arms(), arms);
    set_rotation_scale(arms[0]);
    giXform3 const lock = align_locked_direction();
    giUnitVec3 const axis = locked_from_.read(0).unit();
    if (axis.invalid()) return 0;

    pivot_pair pivots;
    if (positioning_.size() > 0) pivots = {positioning_.read(0).point, positioning_.read(0).plane_point};
    axis_freedoms const freedoms(std::max(most_unknowns - positioning_.size(), 1), axis);
    int const m = freedoms.m;
    mlMatrix A(mlMatrixZero, m, m);
    mlVector b(mlVectorZero, m), start, minimum;
    both_systems<axis_planes, axis_points> const systems{{freedoms}, {freedoms}};
    add_equations(bestfit_, pivots, systems, scaled_equations(A, b, freedoms.turn(), rotation_scale_));
    if (!search_constrained_minimum(A, b, m, start, minimum)) return 0;

    giVector3 shift = pivots.nominal - pivots.measured;
    for (int k = 0; k < freedoms.turn(); ++k) shift += minimum[k] * freedoms.orts[k];
    giXform3 const turn = tangent_turn(pivots.measured, axis, minimum[m - 1] * rotation_scale_, TINY_DOUBLE);
    step = giXform3(giXformProduct, giXform3(giXformTranslate, shift), giXform3(giXformProduct, turn, lock));
    return 1;
}
