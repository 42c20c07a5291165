#include <datumfit/foundation/maths/sym_eigen_vecs.h>
#include <datumfit/foundation/surfaces/quadric_shape.h>
#include <datumfit/foundation/surfaces/quarter_turns.h>

#include <cmath>
#include <limits>

namespace datumfit {
namespace internal {

namespace {

// Squares of semi-axes that differ by this share are equal: rounding leaves as much when a stretch is undone.
constexpr double equal_axes = 64.0 * std::numeric_limits<double>::epsilon();

void append(secular_equation::feet & found, double x, double y, double z) {
    double * const place = found.places[found.n++];
    place[0] = x;
    place[1] = y;
    place[2] = z;
}

// x = K y turns x² + y² + q z² into y . B y with B = K^T Q K, whose eigenvectors are the columns of E, by falling
// eigenvalues b. False without memory, or if B is not finite.
bool principal_axes(matrix3 const & K, double q, matrix3 & E, double (&b)[3]) {
    double const Q[] = {1.0, 1.0, q};
    mlMatrix B(mlMatrixZero, 3, 3);
    if (B.rows() != 3) return false;
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            for (int k = 0; k < 3; ++k) B(r, c) += K.rows[k][r] * Q[k] * K.rows[k][c];
        }
    }
    mlSymEigenVecs eigen(B);
    eigen.calculate();
    if (eigen.num_real_eigen_values() != 3) return false;
    for (int k = 0; k < 3; ++k) {
        b[k] = eigen.eigen_value(k);
        for (int r = 0; r < 3; ++r) E.rows[r][k] = eigen.eigen_vector(k)[r];
    }
    return true;
}

}  // namespace

// The axis of a cylinder stays one, to the last bit. For a cone the longer edges lead: as long as the two parts of its
// quadratic form are of different size, the smaller one keeps its digits.
bool quadric_shape::third_edge_leads(giVector3 const (&edges)[3]) const {
    return kind_ == cylinder || (kind_ == cone && edges[2].dot(edges[2]) > edges[0].dot(edges[0]));
}

bool quadric_shape::settle(affine_placement & placement) {
    if (!(low_ < high_)) return false;
    matrix3 E;
    double b[3];
    double const third_square = kind_ == sphere ? 1.0 : kind_ == cylinder ? 0.0 : -1.0;
    if (!principal_axes(placement.unstretch(), third_square, E, b)) return false;
    bool const third_fits = kind_ == cylinder || (kind_ == sphere ? b[2] > 0.0 : b[2] < 0.0);
    if (!(b[1] > 0.0 && third_fits)) return false;
    if (kind_ == cone) {
        b[0] /= -b[2];
        b[1] /= -b[2];
    }
    placement.turn(E);

    double s[] = {1.0 / std::sqrt(b[0]), 1.0 / std::sqrt(b[1]), kind_ == sphere ? 1.0 / std::sqrt(b[2]) : 1.0};
    if (b[0] - b[1] <= equal_axes * b[0]) s[1] = s[0];
    if (kind_ == sphere && b[1] - b[2] <= equal_axes * b[1]) s[2] = s[1];
    round_ = s[0] == s[1] && (kind_ != sphere || s[1] == s[2]);
    semi_axis_ = s[0];
    cosine_ = 1.0 / std::sqrt(1.0 + s[0] * s[0]);
    sine_ = s[0] * cosine_;
    equation_ = secular_equation(kind_ == sphere     ? secular_equation::ellipsoid
                                 : kind_ == cylinder ? secular_equation::elliptic_cylinder
                                                     : secular_equation::elliptic_cone,
                                 s[0], s[1], s[2]);
    double const * const z = placement.unstretch().rows[2];
    height_rounding_ = std::abs(z[0]) + std::abs(z[1]) + std::abs(z[2]);
    return true;
}

void quadric_shape::find_round(double const (&q)[3], secular_equation::feet & found) const {
    double x = q[0], y = q[1], z = q[2];
    double const f = std::sqrt(x * x + y * y);
    if (kind_ == sphere) {
        double const length = std::sqrt(x * x + y * y + z * z), ratio = semi_axis_ / length;
        if (length > 0.0) {
            append(found, ratio * x, ratio * y, ratio * z);
            append(found, -ratio * x, -ratio * y, -ratio * z);
        } else {
            append(found, semi_axis_, 0.0, 0.0);
            append(found, -semi_axis_, 0.0, 0.0);
        }
        return;
    }
    x = f > 0.0 ? x / f : 1.0;
    y = f > 0.0 ? y / f : 0.0;
    if (kind_ == cylinder) {
        append(found, semi_axis_ * x, semi_axis_ * y, z);
        append(found, -semi_axis_ * x, -semi_axis_ * y, z);
        return;
    }
    // In the half planes of the point and of its opposite the cone is a line each, through the apex.
    double const k = sine_ * f + cosine_ * z, m = cosine_ * z - sine_ * f;
    append(found, sine_ * k * x, sine_ * k * y, cosine_ * k);
    append(found, -sine_ * m * x, -sine_ * m * y, cosine_ * m);
}

void quadric_shape::find_feet(affine_placement const & placement, double const (&q)[3], double rounding,
                              surf_feet & feet) const {
    secular_equation::feet found;
    if (round_) {
        find_round(q, found);
    } else {
        equation_.find(q, found);
        // In the apex of a cone there is no direction to search along.
        if (found.n == 0) append(found, 0.0, 0.0, 0.0);
    }
    double const slack = kind_ == sphere ? 0.0 : rounding * height_rounding_;
    for (int i = 0; i < found.n; ++i) {
        double x[3];
        placement.unstretch().times(found.places[i], x);
        double const u = quarter_turns(x[0], x[1]);
        if (kind_ == sphere) {
            feet.add(found.places[i], u, quarter_turns(std::sqrt(x[0] * x[0] + x[1] * x[1]), x[2]));
        } else if (x[2] >= low_ - slack && x[2] <= high_ + slack) {
            feet.add(found.places[i], u, x[2]);
        }
    }
}

void quadric_shape::gradient(double u, double v, double (&g)[3]) const {
    from_quarter_turns(u, g[0], g[1]);
    g[2] = 0.0;
    if (kind_ == sphere) {
        double c, s;
        from_quarter_turns(v, c, s);
        g[0] *= c;
        g[1] *= c;
        g[2] = s;
    }
    if (kind_ == cone) {
        g[2] = v > 0.0 ? -1.0 : 1.0;
        if (v == 0.0) g[0] = g[1] = g[2] = 0.0;
    }
}

}  // namespace internal
}  // namespace datumfit
