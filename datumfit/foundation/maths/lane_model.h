#pragma once

#include <datumfit/foundation/maths/all_points_model.h>
#include <datumfit/foundation/maths/lanes.h>

#include <algorithm>
#include <cmath>

/// The passes of the solver over all points, made from the formula for one point.
///
/// A kernel holds the state of one geometry and answers for a point q, measured from the origin that the model chose,
/// with the signed probe radius `radius`; both are doubles or lanes.
///
/// - dimension, unknowns, rows: the coordinates of a point, the entries of a step, the rows of [J d] that a point
/// gives.
/// - probed: whether points have radii.
/// - sees_reach: whether it has a member `reach`, to be told how far the points go from the origin, and other rows,
///   near_row(q, radius, r), for a state in which is_near() says so.
/// - regular: whether J has full rank as a rule, so that a Gram matrix can serve.
/// - distance(q, radius, d): the distances of the point, one a row; their squares are summed.
/// - row(q, radius, r): the rows, derivatives by the step and then the distance.
/// - take(x): makes x current as it stands.
/// - place, move, difference, from_parameters, to_parameters: as all_points_model has them, but for the origin.
/// - scales(reach, s), resolution(reach): the same, where coordinates go up to `reach`.
namespace datumfit {
namespace internal {

#if !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpsabi"
#endif

/// The steps of a kernel that has one unknown for each parameter.
template <int Parameters>
struct plain_steps {
    static constexpr int parameters = Parameters;
    static constexpr int unknowns = Parameters;

    static void move(mlVector const & x, mlVector const & step, mlVector & to) {
        for (int k = 0; k < Parameters; ++k) to[k] = x[k] + step[k];
    }
    static void difference(mlVector const & from, mlVector const & to, mlVector & step) {
        for (int k = 0; k < Parameters; ++k) step[k] = to[k] - from[k];
    }
    static void scales(double, mlVector & s) { s.fill(1.0); }
};

/// Points as plain numbers, seen from an origin among them: differences of neighbours keep the digits that coordinates
/// far from 0 would lose.
template <int Dimension>
struct lane_points {
    lane_points(double const * coordinates, double const * radii, int count, double const * seen_from)
        : at(coordinates), radius(radii), n(count), origin{}, reach(0.0) {
        for (int k = 0; k < Dimension && n > 0; ++k) origin[k] = seen_from[k];
    }

    void look() {
        reach = 0.0;
        for (int i = 0; i <= looked_at && n > 0; ++i) {
            int const index = static_cast<int>(static_cast<long long>(n - 1) * i / looked_at);
            for (int k = 0; k < Dimension; ++k) {
                reach = std::max(reach, std::abs(at[Dimension * index + k] - origin[k]));
            }
        }
    }

    double const * at;
    double const * radius;
    int n;
    double origin[Dimension];
    double reach;  // how far the points go from the origin, as a few of them tell

private:
    static constexpr int looked_at = 8;
};

template <class Kernel>
class lane_model : public all_points_model {
public:
    static constexpr int dimension = Kernel::dimension;
    static constexpr int columns = Kernel::unknowns + 1;
    static constexpr int products = columns * (columns + 1) / 2;

    /// Sees the points from the first of them.
    lane_model(double const * coordinates, double const * radii, int count)
        : lane_model(coordinates, radii, count, coordinates) {}

    /// Sees them from a place of its own, at no greater distance than they are from each other.
    lane_model(double const * coordinates, double const * radii, int count, double const * origin)
        : points_(coordinates, radii, count, origin), wide_(has_wide_lanes()) {
        lane_model::look();
    }

    void look() override {
        points_.look();
        if constexpr (Kernel::sees_reach) kernel_.reach = points_.reach;
    }

    void from_parameters(mlVector const & p, mlVector & x) const override {
        kernel_.from_parameters(points_.origin, p, x);
    }
    void to_parameters(mlVector const & x, mlVector & p) const override { kernel_.to_parameters(points_.origin, x, p); }
    void place(mlVector & x) override { kernel_.place(x); }
    int unknowns() const override { return Kernel::unknowns; }
    void move(mlVector const & x, mlVector const & step, mlVector & to) const override { kernel_.move(x, step, to); }
    void difference(mlVector const & from, mlVector const & to, mlVector & step) const override {
        kernel_.difference(from, to, step);
    }
    void scales(mlVector & s) const override { kernel_.scales(points_.reach, s); }
    double resolution() const override { return kernel_.resolution(points_.reach); }
    int rows_per_point() const override { return Kernel::rows; }

    double sum_of_squares(double bound) override { return wide_ ? wide_sum(bound) : sum<narrow_lanes>(bound); }

    void distances(double * d) override {
        for (int i = 0; i < points_.n; ++i) {
            double q[dimension], radius, each[Kernel::rows];
            load(i, q, radius);
            kernel_.distance(q, radius, each);
            d[i] = each[0];
        }
    }

    bool gram(double * upper) override {
        if constexpr (Kernel::regular) {
            if (is_near()) {
                wide_ ? wide_gram<Kernel::sees_reach>(upper) : add_up<narrow_lanes, Kernel::sees_reach>(upper);
            } else {
                wide_ ? wide_gram<false>(upper) : add_up<narrow_lanes, false>(upper);
            }
        }
        return Kernel::regular;
    }

    int rows(int first, int count, double * block, int stride) override {
        for (int i = 0; i < count; ++i) {
            double q[dimension], radius, r[Kernel::rows][columns];
            load(first + i, q, radius);
            is_near() ? row<Kernel::sees_reach>(q, radius, r) : row<false>(q, radius, r);
            for (int m = 0; m < Kernel::rows; ++m) {
                for (int k = 0; k < columns; ++k) block[k * stride + m * count + i] = r[m][k];
            }
        }
        return Kernel::rows * count;
    }

    /// The passes in lanes of one kind or the other give the same bits; a test says so.
    void use_wide_lanes(bool wide) { wide_ = wide && has_wide_lanes(); }

private:
    // Sums of so many points are added up apart, to keep the rounding of long sums down.
    static constexpr int summed_apart = 512;

    DATUMFIT_INLINE void load(int i, double (&q)[dimension], double & radius) const {
        for (int k = 0; k < dimension; ++k) q[k] = points_.at[dimension * i + k] - points_.origin[k];
        radius = Kernel::probed ? points_.radius[i] : 0.0;
    }

    template <class V>
    DATUMFIT_INLINE void load(int i, lanes<V> (&q)[dimension], lanes<V> & radius) const {
        constexpr int d = dimension;
        double const * const p = points_.at + d * i;
        for (int k = 0; k < d; ++k) q[k] = lanes<V>(p[k], p[d + k], p[2 * d + k], p[3 * d + k]) - points_.origin[k];
        if constexpr (Kernel::probed) {
            double const * const r = points_.radius + i;
            radius = lanes<V>(r[0], r[1], r[2], r[3]);
        } else {
            radius = lanes<V>(0.0);
        }
    }

    template <class Real>
    DATUMFIT_INLINE void add_squares(int i, Real & s) const {
        Real q[dimension], radius, d[Kernel::rows];
        load(i, q, radius);
        kernel_.distance(q, radius, d);
        for (int m = 0; m < Kernel::rows; ++m) s += d[m] * d[m];
    }

    bool is_near() const {
        if constexpr (Kernel::sees_reach) return kernel_.is_near();
        return false;
    }

    // Which rows a kernel gives is settled before a pass, so that the pass has no choice to make a point.
    template <bool Near, class Real>
    DATUMFIT_INLINE void row(Real const (&q)[dimension], Real const & radius, Real (&r)[Kernel::rows][columns]) const {
        if constexpr (Near) {
            kernel_.near_row(q, radius, r);
        } else {
            kernel_.row(q, radius, r);
        }
    }

    template <bool Near, class Real>
    DATUMFIT_INLINE void add_products(int i, Real (&s)[products]) const {
        Real q[dimension], radius, r[Kernel::rows][columns];
        load(i, q, radius);
        row<Near>(q, radius, r);
        for (int m = 0; m < Kernel::rows; ++m) {
            int at = 0;
            for (int j = 0; j < columns; ++j) {
                for (int k = j; k < columns; ++k) s[at++] += r[m][j] * r[m][k];
            }
        }
    }

    // The points behind the last whole group of a block are added one by one.
    template <class Lanes>
    DATUMFIT_INLINE double sum(double bound) const {
        double total = 0.0;
        for (int first = 0; first < points_.n && !(total > bound); first += summed_apart) {
            int const last = std::min(points_.n, first + summed_apart);
            Lanes s(0.0);
            double rest = 0.0;
            int i = first;
            for (; i + lane_count <= last; i += lane_count) add_squares(i, s);
            for (; i < last; ++i) add_squares(i, rest);
            total += sum_of_lanes(s) + rest;
        }
        return total;
    }

    template <class Lanes, bool Near>
    DATUMFIT_INLINE void add_up(double * upper) const {
        std::fill(upper, upper + products, 0.0);
        for (int first = 0; first < points_.n; first += summed_apart) {
            int const last = std::min(points_.n, first + summed_apart);
            Lanes s[products];
            double rest[products] = {};
            for (int k = 0; k < products; ++k) s[k] = Lanes(0.0);
            int i = first;
            for (; i + lane_count <= last; i += lane_count) add_products<Near>(i, s);
            for (; i < last; ++i) add_products<Near>(i, rest);
            for (int k = 0; k < products; ++k) upper[k] += sum_of_lanes(s[k]) + rest[k];
        }
    }

    DATUMFIT_WIDE double wide_sum(double bound) const { return sum<wide_lanes>(bound); }
    template <bool Near>
    DATUMFIT_WIDE void wide_gram(double * upper) const {
        add_up<wide_lanes, Near>(upper);
    }

    Kernel kernel_;
    lane_points<dimension> points_;
    bool wide_;
};

#if !defined(__clang__)
#pragma GCC diagnostic pop
#endif

}  // namespace internal
}  // namespace datumfit
