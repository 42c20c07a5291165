#include <datumfit/curved/cylinder/circle_bound.h>

#include <datumfit/primitives/point_sums.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace datumfit {
namespace internal {

namespace {

constexpr int first_of[] = {0, 1, 2, 0, 0, 1, 3};
constexpr int second_of[] = {0, 1, 2, 1, 2, 2, 3};
constexpr int in_space = 6;  // so many products are of coordinates alone

constexpr int block = 256;  // sums of blocks are added up apart, to keep the rounding of long sums down

// Points seen as a narrower strip than this, as a ratio of squares, tell too little about a circle's centre.
constexpr double narrowest = 1e-6;

// What is left of the bound's factors when their own few roundings, amplified by a narrow strip, are taken off.
constexpr double safe_side = 1.0 - 1e-8;

// Radii that differ by less than this share of themselves are one radius but for rounding.
constexpr double same_radii = 1e-14;

// Of the ellipsoid of flat points, its thickness as a share of its size, and what that leaves to rounding.
constexpr double least_thickness = 1e-8;
constexpr double ellipsoid_margin = 1.0 + 1e-6;

}  // namespace

circle_bound::circle_bound(giPoint3coDynArr const & points, doublecoDynArr const * radii, double sense)
    : points_(plain(points)), radii_(radii), sense_(sense), n_(points.size()) {
    if (n_ == 0) return;
    mean_of_points(points_, 3, n_, mean_);
    for (int i = 0; i < n_ && radii_ != nullptr; ++i) mean_[3] += sense_ * radii_->read(i) / n_;
    add_up();
    find_reach();
}

circle_bound::sample circle_bound::sample_of(int i) const {
    sample s;
    for (int k = 0; k < 3; ++k) s.q[k] = points_[3 * i + k] - mean_[k];
    s.q[3] = radii_ != nullptr ? sense_ * radii_->read(i) - mean_[3] : 0.0;
    for (int a = 0; a < products; ++a) s.product[a] = s.q[first_of[a]] * s.q[second_of[a]];
    return s;
}

void circle_bound::add_up() {
    double sum[coordinates] = {};
    for (int first = 0; first < n_; first += block) {
        double s1[coordinates] = {}, s2[products] = {}, sr[3] = {};
        double s3[coordinates][products] = {}, s4[products][products] = {};
        for (int i = first; i < std::min(n_, first + block); ++i) {
            sample const s = sample_of(i);
            for (int k = 0; k < coordinates; ++k) s1[k] += s.q[k];
            for (int k = 0; k < 3; ++k) sr[k] += s.q[k] * s.q[3];
            for (int a = 0; a < products; ++a) {
                s2[a] += s.product[a];
                for (int k = 0; k < coordinates; ++k) s3[k][a] += s.q[k] * s.product[a];
                for (int b = 0; b <= a; ++b) s4[a][b] += s.product[a] * s.product[b];
            }
        }
        for (int k = 0; k < coordinates; ++k) sum[k] += s1[k];
        for (int k = 0; k < 3; ++k) with_radius_[k] += sr[k];
        for (int a = 0; a < products; ++a) {
            second_[a] += s2[a];
            for (int k = 0; k < coordinates; ++k) third_[k][a] += s3[k][a];
            for (int b = 0; b <= a; ++b) fourth_[a][b] += s4[a][b];
        }
    }
    for (int const a : {0, 1, 2, 6}) {
        for (int const b : {0, 1, 2, 6}) size_of_fourth_ += fourth_[std::max(a, b)][std::min(a, b)];
    }
    take_off_means(sum);
}

// The means of the coordinates are rounded; what they left over is taken off here.
void circle_bound::take_off_means(double const * sum) {
    for (int a = 0; a < products; ++a) {
        for (int k = 0; k < coordinates; ++k) third_[k][a] -= sum[k] * second_[a] / n_;
        for (int b = 0; b <= a; ++b) {
            fourth_[a][b] -= second_[a] * second_[b] / n_;
            fourth_[b][a] = fourth_[a][b];
        }
    }
    for (int a = 0; a < products; ++a) second_[a] -= sum[first_of[a]] * sum[second_of[a]] / n_;
    for (int k = 0; k < 3; ++k) with_radius_[k] -= sum[k] * sum[3] / n_;
    double const rounding = same_radii * mean_[3];
    radii_differ_ = second_[6] > n_ * rounding * rounding;
}

// All points lie within the ellipsoid q' C^-1 q = e for the greatest such e, and so, seen along any axis, within the
// root of e times the greater eigenvalue of the scatter.
void circle_bound::find_reach() {
    thickness_ = least_thickness * (second_[0] + second_[1] + second_[2]);
    double const xx = second_[0] + thickness_, yy = second_[1] + thickness_, zz = second_[2] + thickness_;
    double const xy = second_[3], xz = second_[4], yz = second_[5];
    double const cofactor[in_space] = {yy * zz - yz * yz,         xx * zz - xz * xz,         xx * yy - xy * xy,
                                       2.0 * (xz * yz - xy * zz), 2.0 * (xy * yz - xz * yy), 2.0 * (xy * xz - yz * xx)};
    double const det = xx * cofactor[0] + 0.5 * (xy * cofactor[3] + xz * cofactor[4]);
    double greatest = 0.0, furthest = 0.0;
    for (int i = 0; i < n_; ++i) {
        sample const s = sample_of(i);
        double e = 0.0;
        for (int a = 0; a < in_space; ++a) e += cofactor[a] * s.product[a];
        greatest = std::max(greatest, e);
        furthest = std::max(furthest, s.product[0] + s.product[1] + s.product[2]);
        greatest_radius_ = std::max(greatest_radius_, std::abs(s.q[3]));
    }
    reach_ = std::sqrt(furthest);
    ellipsoid_ = det > 0.0 ? ellipsoid_margin * greatest / det : std::numeric_limits<double>::infinity();
}

double circle_bound::scatter(double const * a, double const * b) const {
    double sum = 0.0;
    for (int k = 0; k < 3; ++k) sum += second_[k] * a[k] * b[k];
    for (int k = 3; k < in_space; ++k) {
        int const i = first_of[k], j = second_of[k];
        sum += second_[k] * (a[i] * b[j] + a[j] * b[i]);
    }
    return sum;
}

double circle_bound::along(double const * axis) const {
    // The squared distance of a projected point from the mean, less s², is the sum of w over the products.
    double w[products];
    for (int a = 0; a < 3; ++a) w[a] = 1.0 - axis[a] * axis[a];
    for (int a = 3; a < in_space; ++a) w[a] = -2.0 * axis[first_of[a]] * axis[second_of[a]];
    w[6] = -1.0;
    double zz = 0.0, zq[coordinates] = {};
    for (int a = 0; a < products; ++a) {
        double sum = 0.0;
        for (int b = 0; b < products; ++b) sum += fourth_[a][b] * w[b];
        zz += w[a] * sum;
        for (int k = 0; k < coordinates; ++k) zq[k] += third_[k][a] * w[a];
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

    double uu = scatter(u, u), vv = scatter(v, v), uv = scatter(u, v);
    double const mean_square = (uu + vv) / n_, greatest_scatter = uu + vv;
    double const greatest_of_all = 0.5 * (uu + vv) + std::sqrt(0.25 * (uu - vv) * (uu - vv) + uv * uv);
    double zu = zq[0] * u[0] + zq[1] * u[1] + zq[2] * u[2];
    double zv = zq[0] * v[0] + zq[1] * v[1] + zq[2] * v[2];
    if (radii_differ_) {  // what s explains
        double const us = with_radius_[0] * u[0] + with_radius_[1] * u[1] + with_radius_[2] * u[2];
        double const vs = with_radius_[0] * v[0] + with_radius_[1] * v[1] + with_radius_[2] * v[2];
        zz -= zq[3] * zq[3] / second_[6];
        zu -= zq[3] * us / second_[6];
        zv -= zq[3] * vs / second_[6];
        uu -= us * us / second_[6];
        vv -= vs * vs / second_[6];
        uv -= us * vs / second_[6];
    }
    double const half_gap = std::sqrt(0.25 * (uu - vv) * (uu - vv) + uv * uv);
    double const greatest = 0.5 * (uu + vv) + half_gap;
    double const smallest = 0.5 * (uu + vv) - half_gap;
    if (!(smallest > narrowest * greatest_scatter)) return 0.0;

    double const det = greatest * smallest;
    double const bu = (zu * vv - zv * uv) / det;  // twice the centre of the algebraic circle
    double const bv = (zv * uu - zu * uv) / det;

    // Each moment is a sum of n products, in blocks: it is off by no more than so many roundings of the sum of their
    // absolute values, and a narrow strip of points amplifies that by the ratio of its eigenvalues.
    double const roundings = 64.0 + block + static_cast<double>(n_) / block;
    double const slack =
        roundings * std::numeric_limits<double>::epsilon() * (1.0 + greatest_scatter / smallest) * size_of_fourth_;
    double const residual = zz - (bu * zu + bv * zv) - slack;
    if (!(residual > 0.0)) return 0.0;

    double const within = std::min(reach_, std::sqrt(ellipsoid_ * (greatest_of_all + thickness_)));
    double const span = std::sqrt(bu * bu + bv * bv) + within + std::sqrt(mean_square) + greatest_radius_;
    return safe_side / (1.0 / smallest + span * span / residual);
}

}  // namespace internal
}  // namespace datumfit
