#pragma once

#include <datumfit/align3d/points_to_planes/record_pass.h>
#include <datumfit/foundation/maths/matrix.h>
#include <datumfit/foundation/maths/vector.h>

#if !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpsabi"
#endif

/// The normal equations of a linear step, summed over the records in one pass.
///
/// A kernel sums what its equations are made of, add(record, s), for records seen from a pivot, and writes them from
/// the sums, write(s, n, equations) for n records. The scale of an unknown multiplies its sums when they are written,
/// so the pass needs not know it.
namespace datumfit {
namespace internal {

/// The share of the equations of points to points beside those of points to planes.
constexpr double point_share = 0.01;

/// A record, or four, with the measured point seen from a pivot and the plane from where the pivot belongs.
template <class Real>
struct seen_record {
    triple<Real> u, e, n;  // e is the way from the measured point to the plane's one
};

struct pivot_pair {
    giPoint3 measured = giPoint3(giOrigin), nominal = giPoint3(giOrigin);
};

/// Adds to equations A x = b: each sum times a factor, and times the scales of its unknowns.
class scaled_equations {
public:
    /// The unknowns from number `first` on have the scale.
    scaled_equations(mlMatrix & A, mlVector & b, int first, double scale)
        : a_(A), b_(b), first_(first), scale_(scale) {}
    scaled_equations(mlMatrix & A, mlVector & b) : scaled_equations(A, b, 0, 1.0) {}

    void add(int j, double sum) { b_[j] += factor_ * scaled(j, sum); }

    /// The element and its mirror.
    void add(int j, int k, double sum) {
        double const x = factor_ * scaled(j, scaled(k, sum));
        a_(j, k) += x;
        if (j != k) a_(k, j) += x;
    }

    scaled_equations times(double factor) const {
        scaled_equations result(*this);
        result.factor_ = factor * factor_;
        return result;
    }

private:
    // A sum that overflows tells nothing where its unknown is scaled away.
    double scaled(int j, double x) const { return j < first_ ? x : scale_ == 0.0 ? 0.0 : scale_ * x; }

    mlMatrix & a_;
    mlVector & b_;
    int first_;
    double scale_;
    double factor_ = 1.0;
};

/// The rows of a form against planes: m unknowns, of which each record gives the coefficients v and a deviation.
template <int M>
struct outer_product {
    static constexpr int sums = M * (M + 1) / 2 + M;

    template <class Real>
    static DATUMFIT_INLINE void add(Real const (&v)[M], Real const & deviation, Real * s) {
        int at = 0;
        for (int j = 0; j < M; ++j) {
            for (int k = 0; k <= j; ++k) s[at++] += v[j] * v[k];
        }
        for (int j = 0; j < M; ++j) s[at++] += v[j] * deviation;
    }

    static double product(double const * s, int j, int k) { return j < k ? product(s, k, j) : s[j * (j + 1) / 2 + k]; }
    static double const * right_sides(double const * s) { return s + M * (M + 1) / 2; }

    /// Writes the first m unknowns, which are number place_of(k) in v.
    template <class Place>
    static void write(double const * s, int m, scaled_equations & equations, Place const & place_of) {
        for (int j = 0; j < m; ++j) {
            for (int k = 0; k <= j; ++k) equations.add(j, k, product(s, place_of(j), place_of(k)));
            equations.add(j, right_sides(s)[place_of(j)]);
        }
    }
    static void write(double const * s, scaled_equations & equations) {
        write(s, M, equations, [](int k) { return k; });
    }
};

/// Those of both systems of a step in one pass; the sums of the first precede those of the second.
template <class Planes, class Points>
struct both_systems {
    Planes planes;
    Points points;
    static constexpr int sums = Planes::sums + Points::sums;

    template <class Real>
    DATUMFIT_INLINE void add(seen_record<Real> const & r, Real * s) const {
        planes.add(r, s);
        points.add(r, s + Planes::sums);
    }
    void write(double const * s, int n, scaled_equations equations) const {
        planes.write(s, n, equations);
        points.write(s + Planes::sums, n, equations.times(point_share));
    }
};

/// Hands records to a kernel as they are seen from the pivots.
template <class Kernel>
struct from_pivots {
    Kernel const & kernel;
    pivot_pair pivots;
    static constexpr int sums = Kernel::sums;

    template <class Real>
    DATUMFIT_INLINE void add(lane_record<Real> const & r, Real (&s)[sums]) const {
        // Neighbours are subtracted first: q + (P - Q) - p would lose digits far from the origin.
        triple<Real> const u = r.p - triple<Real>(pivots.measured);
        kernel.add(seen_record<Real>{u, (r.q - triple<Real>(pivots.nominal)) - u, r.n}, s);
    }
};

/// The sums of a kernel over the records.
template <class Kernel>
struct kernel_sums {
    double s[Kernel::sums] = {};

    kernel_sums(sqPlaneAndPointcoDynArr const & records, pivot_pair const & pivots, Kernel const & kernel) {
        sum_over_records(records, from_pivots<Kernel>{kernel, pivots}, s);
    }
};

/// Sums a kernel over the records and adds its equations.
template <class Kernel>
void add_equations(sqPlaneAndPointcoDynArr const & records, pivot_pair const & pivots, Kernel const & kernel,
                   scaled_equations const & equations) {
    kernel_sums<Kernel> const sums(records, pivots, kernel);
    kernel.write(sums.s, records.size(), equations);
}

}  // namespace internal
}  // namespace datumfit

#if !defined(__clang__)
#pragma GCC diagnostic pop
#endif
