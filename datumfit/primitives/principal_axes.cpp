#include <datumfit/primitives/principal_axes.h>

#include <datumfit/foundation/maths/lanes.h>
#include <datumfit/primitives/point_sums.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wpsabi"  // no vector crosses a call: all that hold one are inlined into the pass
#endif

namespace datumfit {
namespace internal {

namespace {

constexpr double rounding = std::numeric_limits<double>::epsilon();

// So many points tell a frame; they are taken all over the array, in no regular order that a scan might share.
constexpr int sample_size = 32;
constexpr std::uint32_t golden_ratio = 2654435769;  // its fraction, in units of 2^-32

// The moments of a frame are good while at least this share of each is left when they are turned into the axes.
constexpr double trusted_share = 1e-2;
constexpr int frames_tried = 4;

constexpr int sweeps = 30;  // Jacobi's method takes 4 to 8
constexpr int block = 1024;

// Where points are looked at from: directions and a centre, measured from an origin.
template <int D>
struct frame {
    double origin[D];
    double centre[D];
    double axis[D][D];
};

template <int D>
constexpr int moments = D + D *(D + 1) / 2;  // sums of w, then of the products w_j w_k, j <= k

template <class Real, int D>
DATUMFIT_INLINE void add_moments(Real const (&q)[D], frame<D> const & f, Real (&s)[moments<D>]) {
    Real u[D], w[D];
    for (int k = 0; k < D; ++k) u[k] = q[k] - f.origin[k] - f.centre[k];
    for (int j = 0; j < D; ++j) {
        w[j] = u[0] * f.axis[j][0];
        for (int k = 1; k < D; ++k) w[j] += u[k] * f.axis[j][k];
    }
    int at = D;
    for (int j = 0; j < D; ++j) {
        s[j] += w[j];
        for (int k = j; k < D; ++k) s[at++] += w[j] * w[k];
    }
}

template <class Lanes, int D>
DATUMFIT_INLINE void gather(double const * p, int n, frame<D> const & f, double (&total)[moments<D>]) {
    for (int first = 0; first < n; first += block) {
        int const last = std::min(n, first + block);
        Lanes s[moments<D>];
        double rest[moments<D>] = {};
        for (int k = 0; k < moments<D>; ++k) s[k] = Lanes(0.0);
        int i = first;
        for (; i + lane_count <= last; i += lane_count) {
            double const * const a = p + D * i;
            Lanes q[D];
            for (int k = 0; k < D; ++k) q[k] = Lanes(a[k], a[D + k], a[2 * D + k], a[3 * D + k]);
            add_moments(q, f, s);
        }
        for (; i < last; ++i) {
            double q[D];
            for (int k = 0; k < D; ++k) q[k] = p[D * i + k];
            add_moments(q, f, rest);
        }
        for (int k = 0; k < moments<D>; ++k) total[k] += sum_of_lanes(s[k]) + rest[k];
    }
}

template <int D>
DATUMFIT_WIDE void gather_wide(double const * p, int n, frame<D> const & f, double (&total)[moments<D>]) {
    gather<wide_lanes>(p, n, f, total);
}

template <int D>
void gather_sample(double const * p, int n, frame<D> const & f, double (&total)[moments<D>]) {
    for (int i = 0; i < sample_size; ++i) {
        std::uint32_t const share = static_cast<std::uint32_t>(i) * golden_ratio;  // of the array, modulo all of it
        int const at = static_cast<int>((std::uint64_t{share} * static_cast<std::uint64_t>(n)) >> 32);
        double q[D];
        for (int k = 0; k < D; ++k) q[k] = p[D * at + k];
        add_moments(q, f, total);
    }
}

// Turns a symmetric matrix into its eigenvalues, on the diagonal, and the rows of v along: v becomes the eigenvectors.
template <int D>
void diagonalise(double (&c)[D][D], double (&v)[D][D]) {
    bool turned = true;
    for (int sweep = 0; turned && sweep < sweeps; ++sweep) {
        turned = false;
        for (int i = 0; i < D; ++i) {
            for (int j = i + 1; j < D; ++j) {
                if (!(std::abs(c[i][j]) > rounding * std::sqrt(std::abs(c[i][i] * c[j][j])))) continue;
                turned = true;
                double const cot = (c[j][j] - c[i][i]) / (2.0 * c[i][j]);  // of twice the angle
                double const t = std::copysign(1.0, cot) / (std::abs(cot) + std::sqrt(cot * cot + 1.0));
                double const cs = 1.0 / std::sqrt(t * t + 1.0), sn = t * cs;
                c[i][i] -= t * c[i][j];
                c[j][j] += t * c[i][j];
                c[i][j] = c[j][i] = 0.0;
                for (int k = 0; k < D; ++k) {
                    if (k != i && k != j) {
                        double const a = c[k][i], b = c[k][j];
                        c[k][i] = c[i][k] = cs * a - sn * b;
                        c[k][j] = c[j][k] = sn * a + cs * b;
                    }
                    double const a = v[i][k], b = v[j][k];
                    v[i][k] = cs * a - sn * b;
                    v[j][k] = sn * a + cs * b;
                }
            }
        }
    }
}

// Moves the frame to the centre and the axes that its moments tell, in descending order of the eigenvalues written to
// `squares`. Gives whether they could be trusted: whether no small one is what is left of large numbers.
template <int D>
bool follow_moments(frame<D> & f, double const (&s)[moments<D>], double n, double (&squares)[D]) {
    double c[D][D], before[D];
    int at = D;
    for (int j = 0; j < D; ++j) {
        for (int k = j; k < D; ++k) c[j][k] = c[k][j] = s[at++] - s[j] * (s[k] / n);
    }
    at = D;
    for (int j = 0; j < D; ++j) {
        before[j] = s[at];
        at += D - j;
        for (int k = 0; k < D; ++k) f.centre[k] += s[j] / n * f.axis[j][k];
    }
    diagonalise(c, f.axis);
    for (int j = 0; j < D; ++j) squares[j] = std::max(c[j][j], 0.0);
    for (int j = 0; j < D; ++j) {  // few enough to be sorted by exchanges
        for (int k = j + 1; k < D; ++k) {
            if (!(squares[k] > squares[j])) continue;
            std::swap(squares[j], squares[k]);
            std::swap(f.axis[j], f.axis[k]);
        }
    }
    std::sort(before, before + D, [](double a, double b) { return a > b; });
    bool trusted = true;
    for (int j = 1; j < D; ++j) {
        // Nothing is to be had below the rounding of the coordinates within the frame.
        double const floor = 16.0 * rounding * rounding * before[0];
        if (squares[j] < trusted_share * before[j] && before[j] > floor) trusted = false;
    }
    return trusted;
}

}  // namespace

template <int D>
double point_axes<D>::mean_square_from(int k, int points) const {
    double sum = 0.0;
    for (; k < D; ++k) {
        double off = 0.0;
        for (int j = 0; j < D; ++j) off += beyond[j] * axis[k][j];
        sum += extent[k] * (extent[k] / points) + off * off;
    }
    return sum;
}

template <int D>
point_axes<D> find_axes(double const * p, int n) {
    frame<D> f = {};
    for (int k = 0; k < D; ++k) {
        f.origin[k] = p[k];
        f.axis[k][k] = 1.0;
    }
    double squares[D];
    double sample[moments<D>] = {};
    gather_sample(p, n, f, sample);
    follow_moments(f, sample, sample_size, squares);

    bool trusted = false;
    for (int tried = 0; tried < frames_tried && !trusted; ++tried) {
        double total[moments<D>] = {};
        has_wide_lanes() ? gather_wide(p, n, f, total) : gather<narrow_lanes>(p, n, f, total);
        trusted = follow_moments(f, total, n, squares);
    }
    point_axes<D> result;
    for (int k = 0; k < D; ++k) {
        result.centroid[k] = f.origin[k] + f.centre[k];
        result.beyond[k] = (f.origin[k] - result.centroid[k]) + f.centre[k];
        result.extent[k] = std::sqrt(squares[k]);
        for (int j = 0; j < D; ++j) result.axis[k][j] = f.axis[k][j];
    }
    return result;
}

template struct point_axes<2>;
template struct point_axes<3>;
template point_axes<2> find_axes<2>(double const *, int);
template point_axes<3> find_axes<3>(double const *, int);

int principal_axes(giPoint3coDynArr const & points, giPoint3 & centroid, mlVector & s, mlMatrix & v) {
    if (points.size() < 2) return 0;
    point_axes<3> const axes = find_axes<3>(plain(points), points.size());
    centroid = giPoint3(axes.centroid[0], axes.centroid[1], axes.centroid[2]);
    s.become(mlVectorDim, 3);
    v.become(3, 3);
    for (int k = 0; k < 3; ++k) {
        s[k] = axes.extent[k];
        for (int j = 0; j < 3; ++j) v(j, k) = axes.axis[k][j];
    }
    return 1;
}

}  // namespace internal
}  // namespace datumfit
