#include <datumfit/curved/cylinder/circle_bound.h>

#include <datumfit/primitives/point_sums.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace datumfit {
namespace internal {

namespace {

constexpr int first_of[] = {0, 1, 2, 0, 0, 1};
constexpr int second_of[] = {0, 1, 2, 1, 2, 2};

constexpr int block = 256;  // sums of blocks are added up apart, to keep the rounding of long sums down

// Points seen as a narrower strip than this, as a ratio of squares, tell too little about a circle's centre.
constexpr double narrowest = 1e-6;

// What is left of the bound's factors when their own few roundings, amplified by a narrow strip, are taken off.
constexpr double safe_side = 1.0 - 1e-8;

// Of the ellipsoid of flat points, its thickness as a share of its size, and what that leaves to rounding.
constexpr double least_thickness = 1e-8;
constexpr double ellipsoid_margin = 1.0 + 1e-6;

void products(double const * p, double const * mean, double (&q)[3], double (&s)[6]) {
    for (int k = 0; k < 3; ++k) q[k] = p[k] - mean[k];
    for (int a = 0; a < 6; ++a) s[a] = q[first_of[a]] * q[second_of[a]];
}

}  // namespace

circle_bound::circle_bound(giPoint3coDynArr const & points) : n_(points.size()) {
    if (n_ == 0) return;
    double mean[3];
    mean_of_points(plain(points), 3, n_, mean);
    add_up(points, mean);
    find_reach(points, mean);
}

void circle_bound::add_up(giPoint3coDynArr const & points, double const * mean) {
    double sum[3] = {};
    for (int first = 0; first < n_; first += block) {
        double s1[3] = {}, s2[pairs] = {}, s3[3][pairs] = {}, s4[pairs][pairs] = {};
        for (int i = first; i < std::min(n_, first + block); ++i) {
            double q[3], s[pairs];
            products(plain(points) + 3 * i, mean, q, s);
            for (int k = 0; k < 3; ++k) s1[k] += q[k];
            for (int a = 0; a < pairs; ++a) {
                s2[a] += s[a];
                for (int k = 0; k < 3; ++k) s3[k][a] += q[k] * s[a];
                for (int b = 0; b <= a; ++b) s4[a][b] += s[a] * s[b];
            }
        }
        for (int k = 0; k < 3; ++k) sum[k] += s1[k];
        for (int a = 0; a < pairs; ++a) {
            second_[a] += s2[a];
            for (int k = 0; k < 3; ++k) third_[k][a] += s3[k][a];
            for (int b = 0; b <= a; ++b) fourth_[a][b] += s4[a][b];
        }
    }
    for (int a = 0; a < 3; ++a) {
        for (int b = 0; b <= a; ++b) size_of_fourth_ += (a == b ? 1.0 : 2.0) * fourth_[a][b];
    }
    take_off_means(sum);
}

// The mean of the points is rounded; what it left over is taken off here.
void circle_bound::take_off_means(double const * sum) {
    for (int a = 0; a < pairs; ++a) {
        for (int k = 0; k < 3; ++k) third_[k][a] -= sum[k] * second_[a] / n_;
        for (int b = 0; b <= a; ++b) {
            fourth_[a][b] -= second_[a] * second_[b] / n_;
            fourth_[b][a] = fourth_[a][b];
        }
    }
    for (int a = 0; a < pairs; ++a) second_[a] -= sum[first_of[a]] * sum[second_of[a]] / n_;
}

// All points lie within the ellipsoid q' C^-1 q = e for the greatest such e, and so, seen along any axis, within the
// root of e times the greater eigenvalue of the scatter.
void circle_bound::find_reach(giPoint3coDynArr const & points, double const * mean) {
    thickness_ = least_thickness * (second_[0] + second_[1] + second_[2]);
    double const xx = second_[0] + thickness_, yy = second_[1] + thickness_, zz = second_[2] + thickness_;
    double const xy = second_[3], xz = second_[4], yz = second_[5];
    double const cofactor[pairs] = {yy * zz - yz * yz,         xx * zz - xz * xz,         xx * yy - xy * xy,
                                    2.0 * (xz * yz - xy * zz), 2.0 * (xy * yz - xz * yy), 2.0 * (xy * xz - yz * xx)};
    double const det = xx * cofactor[0] + 0.5 * (xy * cofactor[3] + xz * cofactor[4]);
    double greatest = 0.0, furthest = 0.0;
    for (int i = 0; i < n_; ++i) {
        double q[3], s[pairs], e = 0.0;
        products(plain(points) + 3 * i, mean, q, s);
        for (int a = 0; a < pairs; ++a) e += cofactor[a] * s[a];
        greatest = std::max(greatest, e);
        furthest = std::max(furthest, s[0] + s[1] + s[2]);
    }
    reach_ = std::sqrt(furthest);
    ellipsoid_ = det > 0.0 ? ellipsoid_margin * greatest / det : std::numeric_limits<double>::infinity();
}

double circle_bound::scatter(double const * a, double const * b) const {
    double sum = 0.0;
    for (int k = 0; k < 3; ++k) sum += second_[k] * a[k] * b[k];
    for (int k = 3; k < pairs; ++k) {
        int const i = first_of[k], j = second_of[k];
        sum += second_[k] * (a[i] * b[j] + a[j] * b[i]);
    }
    return sum;
}

double circle_bound::along(double const * axis) const {
    // The squared distance of a projected point from the mean is the sum of w over the products of its coordinates.
    double w[pairs];
    for (int a = 0; a < 3; ++a) w[a] = 1.0 - axis[a] * axis[a];
    for (int a = 3; a < pairs; ++a) w[a] = -2.0 * axis[first_of[a]] * axis[second_of[a]];
    double zz = 0.0, zp[3] = {};
    for (int a = 0; a < pairs; ++a) {
        double sum = 0.0;
        for (int b = 0; b < pairs; ++b) sum += fourth_[a][b] * w[b];
        zz += w[a] * sum;
        for (int k = 0; k < 3; ++k) zp[k] += third_[k][a] * w[a];
    }

    // Two directions across the axis.
    int const least = std::abs(axis[0]) <= std::abs(axis[1]) ? (std::abs(axis[0]) <= std::abs(axis[2]) ? 0 : 2)
                                                             : (std::abs(axis[1]) <= std::abs(axis[2]) ? 1 : 2);
    int const next = (least + 1) % 3, last = (least + 2) % 3;
    double const length = std::sqrt(axis[next] * axis[next] + axis[last] * axis[last]);
    double u[3], v[3];
    u[least] = 0.0;
    u[next] = -axis[last] / length;
    u[last] = axis[next] / length;
    for (int k = 0; k < 3; ++k) v[k] = axis[(k + 1) % 3] * u[(k + 2) % 3] - axis[(k + 2) % 3] * u[(k + 1) % 3];

    double const uu = scatter(u, u), vv = scatter(v, v), uv = scatter(u, v);
    double const half_gap = std::sqrt(0.25 * (uu - vv) * (uu - vv) + uv * uv);
    double const greatest = 0.5 * (uu + vv) + half_gap;
    double const smallest = 0.5 * (uu + vv) - half_gap;
    if (!(smallest > narrowest * greatest)) return 0.0;

    double const zu = zp[0] * u[0] + zp[1] * u[1] + zp[2] * u[2];
    double const zv = zp[0] * v[0] + zp[1] * v[1] + zp[2] * v[2];
    double const det = greatest * smallest;
    double const bu = (zu * vv - zv * uv) / det;  // twice the centre of the algebraic circle
    double const bv = (zv * uu - zu * uv) / det;

    // Each moment is a sum of n products, in blocks: it is off by no more than so many roundings of the sum of their
    // absolute values, and a narrow strip of points amplifies that by the ratio of its eigenvalues.
    double const roundings = 64.0 + block + static_cast<double>(n_) / block;
    double const slack =
        roundings * std::numeric_limits<double>::epsilon() * (1.0 + greatest / smallest) * size_of_fourth_;
    double const residual = zz - (bu * zu + bv * zv) - slack;
    if (!(residual > 0.0)) return 0.0;

    double const within = std::min(reach_, std::sqrt(ellipsoid_ * (greatest + thickness_)));
    double const span = std::sqrt(bu * bu + bv * bv) + within + std::sqrt((uu + vv) / n_);
    return safe_side / (1.0 / smallest + span * span / residual);
}

}  // namespace internal
}  // namespace datumfit
