#include <datumfit/curved/cone/fixed_axis_passes.h>

#include <datumfit/foundation/maths/lane_model.h>
#include <datumfit/primitives/point_sums.h>

#include <algorithm>
#include <cmath>

namespace datumfit {
namespace internal {

#if !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpsabi"
#endif

namespace {

using steps = plain_steps<2>;

// Sums of so many points are added up apart, to keep the rounding of long sums down.
constexpr int summed_apart = 512;

// Four numbers that follow each other, or the one. To copy bytes would take wide lanes through the memory by halves.
template <class V>
struct anywhere {
    typedef V vector __attribute__((aligned(8), may_alias));
};

DATUMFIT_INLINE void load(double const * from, double & x) {
    x = *from;
}
DATUMFIT_INLINE void store(double x, double * to) {
    *to = x;
}

template <class V>
DATUMFIT_INLINE void load(double const * from, lanes<V> & x) {
    using vector = typename anywhere<V>::vector;
    for (int k = 0; k < x.parts; ++k) x.part[k] = reinterpret_cast<vector const *>(from)[k];
}
template <class V>
DATUMFIT_INLINE void store(lanes<V> const & x, double * to) {
    using vector = typename anywhere<V>::vector;
    for (int k = 0; k < x.parts; ++k) reinterpret_cast<vector *>(to)[k] = x.part[k];
}

template <class Real>
DATUMFIT_INLINE Real load(double const * from) {
    Real x;
    load(from, x);
    return x;
}

// Sees the points from an axis and adds up what the line needs.
struct profile_pass {
    double const *x, *y, *z;
    double *r, *u, *v;
    double at_x, at_y, origin;

    template <class Real>
    DATUMFIT_INLINE void add(int i, Real (&s)[profile_line::sums]) const {
        Real const dx = at_x - load<Real>(x + i), dy = at_y - load<Real>(y + i), h = load<Real>(z + i);
        Real const f = square_root(dx * dx + dy * dy);
        Real const over = where_above(f, on_fixed_axis, Real(1.0) / f);
        Real const e[2] = {dx * over, dy * over};
        store(f, r + i);
        store(e[0], u + i);
        store(e[1], v + i);
        add_to_profile(Real(f - origin), h, e[0], e[1], s);
    }
};

// The residuals of the line and their derivatives.
struct residual_pass {
    double const *z, *r, *u, *v;
    profile_line line;
    double level;

    template <class Real>
    DATUMFIT_INLINE Real distance(int i, Real & from_mean) const {
        from_mean = load<Real>(r + i) - line.mean_radius;
        return load<Real>(z + i) + level - line.slope * from_mean;
    }

    template <class Real>
    DATUMFIT_INLINE void row(int i, Real (&row)[3]) const {
        Real const unit[2] = {load<Real>(u + i), load<Real>(v + i)};
        Real const f = load<Real>(r + i);
        Real from_mean;
        row[2] = distance(i, from_mean);
        for (int m = 0; m < 2; ++m) {
            Real const d = -(line.slope * (unit[m] - line.mean_unit[m])) - from_mean * line.d_slope[m];
            row[m] = where_above(f, on_fixed_axis, d);
        }
    }
};

struct square_pass : residual_pass {
    template <class Real>
    DATUMFIT_INLINE void add(int i, Real (&s)[1]) const {
        Real from_mean;
        Real const d = distance(i, from_mean);
        s[0] += d * d;
    }
};

struct product_pass : residual_pass {
    template <class Real>
    DATUMFIT_INLINE void add(int i, Real (&s)[6]) const {
        Real r3[3];
        row(i, r3);
        int at = 0;
        for (int j = 0; j < 3; ++j) {
            for (int k = j; k < 3; ++k) s[at++] += r3[j] * r3[k];
        }
    }
};

// The points behind the last whole group of a block are added one by one.
template <class Lanes, int Sums, class Pass>
DATUMFIT_INLINE void add_blocks(Pass const & pass, int n, double (&sums)[Sums]) {
    std::fill(sums, sums + Sums, 0.0);
    for (int first = 0; first < n; first += summed_apart) {
        int const last = std::min(n, first + summed_apart);
        Lanes s[Sums];
        double rest[Sums] = {};
        for (int k = 0; k < Sums; ++k) s[k] = Lanes(0.0);
        int i = first;
        for (; i + lane_count <= last; i += lane_count) pass.add(i, s);
        for (; i < last; ++i) pass.add(i, rest);
        for (int k = 0; k < Sums; ++k) sums[k] += sum_of_lanes(s[k]) + rest[k];
    }
}

template <int Sums, class Pass>
DATUMFIT_WIDE void add_blocks_wide(Pass const & pass, int n, double (&sums)[Sums]) {
    add_blocks<wide_lanes>(pass, n, sums);
}

}  // namespace

fixed_axis_passes::fixed_axis_passes(giPoint3coDynArr const & points)
    : points_(points), n_(points.size()), wide_(has_wide_lanes()), mean_{} {
    if (n_ > 0) mean_of_points(plain(points), 3, n_, mean_);
    for (std::vector<double> * const each : {&x_, &y_, &z_, &r_, &u_, &v_}) each->resize(static_cast<std::size_t>(n_));
}

void fixed_axis_passes::set_frame(giVector3 const & x_dir, giVector3 const & y_dir, giVector3 const & axis) {
    giVector3 const mean(mean_[0], mean_[1], mean_[2]);
    centre_[0] = mean.dot(x_dir);
    centre_[1] = mean.dot(y_dir);
    double sum_z = 0.0, sum_squares = 0.0;
    reach_ = 0.0;
    double *x = x_.data(), *y = y_.data(), *z = z_.data();
    for (int i = 0; i < n_; ++i) {
        giVector3 const p = points_[i].release() - mean;
        x[i] = p.dot(x_dir);
        y[i] = p.dot(y_dir);
        z[i] = p.dot(axis);
        sum_z += z[i];
        sum_squares += x[i] * x[i] + y[i] * y[i];
        reach_ = std::max({reach_, std::abs(x[i]), std::abs(y[i]), std::abs(z[i])});
    }
    double const mean_z = n_ > 0 ? sum_z / n_ : 0.0;
    for (int i = 0; i < n_; ++i) z[i] -= mean_z;
    mean_square_ = n_ > 0 ? sum_squares / n_ : 0.0;
    height_ = mean.dot(axis) + mean_z;
    found_ = false;
}

void fixed_axis_passes::from_parameters(mlVector const & p, mlVector & x) const {
    for (int k = 0; k < 2; ++k) x[k] = p[k] - centre_[k];
}

void fixed_axis_passes::to_parameters(mlVector const & x, mlVector & p) const {
    for (int k = 0; k < 2; ++k) p[k] = x[k] + centre_[k];
}

void fixed_axis_passes::place(mlVector & x) {
    for (int k = 0; k < 2; ++k) at_[k] = x[k];
    found_ = false;
}

void fixed_axis_passes::move(mlVector const & x, mlVector const & step, mlVector & to) const {
    steps::move(x, step, to);
}

void fixed_axis_passes::difference(mlVector const & from, mlVector const & to, mlVector & step) const {
    steps::difference(from, to, step);
}

void fixed_axis_passes::scales(mlVector & s) const {
    steps::scales(reach_, s);
}

template <int Sums, class Pass>
void fixed_axis_passes::add_up(Pass const & pass, double (&sums)[Sums]) const {
    wide_ ? add_blocks_wide(pass, n_, sums) : add_blocks<narrow_lanes>(pass, n_, sums);
}

void fixed_axis_passes::find_line() {
    if (found_) return;
    // The root mean square distance is known beforehand, and never further from the mean one than the standard
    // deviation: distances less it lose no digits.
    double const origin = std::sqrt(at_[0] * at_[0] + at_[1] * at_[1] + mean_square_);
    double sums[profile_line::sums];
    add_up(profile_pass{x_.data(), y_.data(), z_.data(), r_.data(), u_.data(), v_.data(), at_[0], at_[1], origin},
           sums);
    line_.fit(sums, n_, origin);
    level_ = line_.exists ? 0.0 : height_;
    found_ = true;
}

double fixed_axis_passes::sum_of_squares(double) {
    find_line();
    double sum[1];
    add_up(square_pass{{z_.data(), r_.data(), u_.data(), v_.data(), line_, level_}}, sum);
    return sum[0];
}

bool fixed_axis_passes::gram(double * upper) {
    find_line();
    double products[6];
    add_up(product_pass{{z_.data(), r_.data(), u_.data(), v_.data(), line_, level_}}, products);
    std::copy(products, products + 6, upper);
    return true;
}

void fixed_axis_passes::distances(double * d) {
    find_line();
    residual_pass const pass{z_.data(), r_.data(), u_.data(), v_.data(), line_, level_};
    for (int i = 0; i < n_; ++i) {
        double from_mean;
        d[i] = pass.distance(i, from_mean);
    }
}

int fixed_axis_passes::rows(int first, int count, double * columns, int stride) {
    find_line();
    residual_pass const pass{z_.data(), r_.data(), u_.data(), v_.data(), line_, level_};
    for (int i = 0; i < count; ++i) {
        double row[3];
        pass.row(first + i, row);
        for (int k = 0; k < 3; ++k) columns[k * stride + i] = row[k];
    }
    return count;
}

double fixed_axis_passes::resolution() const {
    double const across = reach_ + std::abs(at_[0]) + std::abs(at_[1]);
    return std::numeric_limits<double>::epsilon() * (reach_ + std::abs(level_) + std::abs(line_.slope) * across);
}

#if !defined(__clang__)
#pragma GCC diagnostic pop
#endif

}  // namespace internal
}  // namespace datumfit
