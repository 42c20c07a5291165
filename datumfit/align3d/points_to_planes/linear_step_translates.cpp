#include <datumfit/align3d/points_to_planes/normal_equations.h>
#include <datumfit/align3d/points_to_planes/points_to_planes.h>

#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wpsabi"  // no vector crosses a call: all that hold one are inlined into the pass
#endif

namespace {

using namespace datumfit::internal;

constexpr int dimension = 3;

// The shift directions, and what the pass works with in their place: up to three are taken as they are, in further ones
// everything is linear in what the coordinate axes give.
struct shifts {
    giVector3coDynArr const & directions;
    giVector3 basis[dimension];

    explicit shifts(giVector3coDynArr const & d)
        : directions(d), basis{giVector3(giAxisX), giVector3(giAxisY), giVector3(giAxisZ)} {
        for (int k = 0; k < dimension && !many(); ++k) basis[k] = k < d.size() ? d[k] : giVector3(0.0, 0.0, 0.0);
    }

    bool many() const { return directions.size() > dimension; }

    // The part of direction k along basis vector a.
    double part(int k, int a) const {
        return many() ? directions[k].coordinate(static_cast<gi_Axis>(a)) : k == a ? 1.0 : 0.0;
    }

    void write_right_side(double const * s, scaled_equations & equations) const {
        for (int k = 0; k < directions.size(); ++k) {
            for (int a = 0; a < dimension; ++a) equations.add(k, part(k, a) * s[a]);
        }
    }
};

// The deviation of a record changes by n . S for a shift S.
struct shift_planes {
    shifts const & along;
    static constexpr int sums = outer_product<dimension>::sums;

    template <class Real>
    DATUMFIT_INLINE void add(seen_record<Real> const & r, Real * s) const {
        giVector3 const * const basis = along.basis;
        Real const v[dimension] = {r.n.dot(basis[0]), r.n.dot(basis[1]), r.n.dot(basis[2])};
        outer_product<dimension>::add(v, r.e.dot(r.n), s);
    }
    void write(double const * s, int, scaled_equations equations) const {
        for (int j = 0; j < along.directions.size(); ++j) {
            for (int k = 0; k <= j; ++k) equations.add(j, k, product(s, j, k));
        }
        along.write_right_side(outer_product<dimension>::right_sides(s), equations);
    }
    double product(double const * s, int j, int k) const {
        double sum = 0.0;
        for (int a = 0; a < dimension; ++a) {
            for (int c = 0; c < dimension; ++c) {
                sum += along.part(j, a) * along.part(k, c) * outer_product<dimension>::product(s, a, c);
            }
        }
        return sum;
    }
};

// The directions are taken as orthogonal.
struct shift_points {
    shifts const & along;
    static constexpr int sums = dimension;

    template <class Real>
    DATUMFIT_INLINE void add(seen_record<Real> const & r, Real * s) const {
        for (int k = 0; k < dimension; ++k) s[k] += r.e.dot(along.basis[k]);
    }
    void write(double const * s, int n, scaled_equations equations) const {
        for (int k = 0; k < along.directions.size(); ++k) equations.add(k, k, n);
        along.write_right_side(s, equations);
    }
};

}  // namespace

void sqPointsToPlanes::linear_step_translates_points_to_planes(mlMatrix & A, mlVector & b) const {
    shifts const along(shift_directions_);
    add_equations(bestfit_, {}, shift_planes{along}, scaled_equations(A, b));
}

void sqPointsToPlanes::linear_step_translates_points_to_points(mlMatrix & A, mlVector & b) const {
    shifts const along(shift_directions_);
    add_equations(bestfit_, {}, shift_points{along}, scaled_equations(A, b));
}

int sqPointsToPlanes::single_linear_step_translates(giXform3 & step) {
    int const unknowns = shift_directions_.size();
    if (unknowns == 0) return 0;
    mlMatrix A(mlMatrixZero, unknowns, unknowns);
    mlVector b(mlVectorZero, unknowns), start, minimum;
    shifts const along(shift_directions_);
    add_equations(bestfit_, {}, both_systems<shift_planes, shift_points>{{along}, {along}}, scaled_equations(A, b));
    if (!search_constrained_minimum(A, b, unknowns, start, minimum)) return 0;

    giVector3 shift(0.0, 0.0, 0.0);
    for (int k = 0; k < unknowns; ++k) shift += minimum[k] * shift_directions_.read(k);
    step = giXform3(giXformTranslate, shift);
    return 1;
}
