#include <datumfit/direct/direct_circle2.h>

#include <datumfit/direct/plane_moments.h>
#include <datumfit/foundation/maths/point_pass.h>
#include <datumfit/foundation/maths/singular_value_decomposition.h>
#include <datumfit/foundation/maths/sym_eigen_vecs.h>
#include <datumfit/primitives/point_sums.h>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace datumfit::internal;

namespace {

// Of the smallest singular value to the greatest, relative to the tolerance of the fit.
constexpr double singular_share = 0.01;

// Below this share of its square, what a column keeps beside the columns before it is of the size of the rounding in
// the squares; and the circle no longer depends on how large it is.
constexpr double lost_square = 1e-14;

// A circle q (dx² + dy²) + x dx + y dy + one = 0, with dx and dy from the frame's centre.
struct local_circle {
    double q, x, y, one;
};

// The problem in the columns c = (1, u, v, q) with q = (dx² + dy²) / unit, in the frame of the moments.
class pratt_problem {
public:
    explicit pratt_problem(plane_moments const & m) : frame_(m.frame) {
        skew_frame const & f = frame_;
        unit_ = f.ux * f.ux + f.uy * f.uy + f.vy * f.vy;
        double const uu = (f.ux * f.ux + f.uy * f.uy) / unit_, uv = f.uy * f.vy / unit_, vv = f.vy * f.vy / unit_;

        // Pratt's constraint is the same about any centre. This is its inverse, in the four columns, over the unit.
        double const b[] = {0.0, 0.0, 0.0, -0.5, 0.0, uu, uv, 0.0, 0.0, uv, vv, 0.0, -0.5, 0.0, 0.0, 0.0};
        inverse_constraint_ = mlMatrix(utConvert, b, 4, 4);

        auto const q = [&](int i, int j) { return uu * m(i + 2, j) + 2.0 * uv * m(i + 1, j + 1) + vv * m(i, j + 2); };
        double const qq = uu * q(2, 0) + 2.0 * uv * q(1, 1) + vv * q(0, 2);
        double const gram[4][4] = {{1.0, m(1, 0), m(0, 1), q(0, 0)},
                                   {0.0, m(2, 0), m(1, 1), q(1, 0)},
                                   {0.0, 0.0, m(0, 2), q(0, 1)},
                                   {0.0, 0.0, 0.0, qq}};
        factorise(gram);
    }

    local_circle solve(double singular) const {
        // By its columns the inverse of the triangular factor of the rows (1, x, y, x² + y²). Its singular values are
        // those of the rows, inverted.
        mlMatrix inverse(4, 4);
        for (int k = 0; k < 4; ++k) {
            double e[4] = {};
            e[k] = 1.0;
            write_as_given(from_factor(e), inverse.col(k));
        }
        mlSingularValueDecomposition const svd(inverse, mlJOB_U_NONE, mlJOB_V_WANTED);
        if (exact_ || svd.is_singular(singular)) return from_factor(svd.V().col(0));

        mlMatrix const rb(mlMatrixProduct, factor_, inverse_constraint_);
        mlSymEigenVecs eigen(mlMatrix(mlMatrixProduct, rb, mlMatrix(mlMatrixTranspose, factor_)));
        eigen.calculate();
        int i = 3;
        while (i > 0 && !(eigen.eigen_value(i) >= 0.0)) --i;
        return from_factor(eigen.eigen_vector(i));
    }

private:
    // The upper triangular R of the upper half of a Gram matrix. What rounding leaves of a dependent column is kept
    // above 0: then the solution is that column, and the others it depends on.
    void factorise(double const (&gram)[4][4]) {
        factor_ = mlMatrix(mlMatrixZero, 4, 4);
        for (int j = 0; j < 4; ++j) {
            for (int k = j; k < 4; ++k) {
                double a = gram[j][k];
                for (int i = 0; i < j; ++i) a -= factor_(i, j) * factor_(i, k);
                if (k > j) {
                    factor_(j, k) = a / factor_(j, j);
                    continue;
                }
                constexpr double rounding = std::numeric_limits<double>::epsilon();
                exact_ = exact_ || !(a > lost_square * gram[j][j]);
                a = std::max({a, rounding * rounding * gram[j][j], std::numeric_limits<double>::min()});
                factor_(j, j) = std::sqrt(a);
            }
        }
    }

    // The circle whose columns times R are e.
    template <class Vector>
    local_circle from_factor(Vector const & e) const {
        double c[4];
        for (int k = 3; k >= 0; --k) {
            double s = e[k];
            for (int j = k + 1; j < 4; ++j) s -= factor_(k, j) * c[j];
            c[k] = s / factor_(k, k);
        }
        double const y = c[2] / frame_.vy;
        return {c[3] / unit_, (c[1] - frame_.uy * y) / frame_.ux, y, c[0]};
    }

    // The coefficients (D, B, C, A) in the coordinates as they were given.
    void write_as_given(local_circle const & g, mlSlice a) const {
        double const x = frame_.centre[0], y = frame_.centre[1];
        a[0] = g.one - g.x * x - g.y * y + g.q * (x * x + y * y);
        a[1] = g.x - 2.0 * x * g.q;
        a[2] = g.y - 2.0 * y * g.q;
        a[3] = g.q;
    }

    skew_frame frame_;
    double unit_;
    mlMatrix inverse_constraint_, factor_;
    bool exact_ = false;
};

}  // namespace

sqDirectCircle2::sqDirectCircle2(giPoint2coDynArr const & points) : sqDirectFit(points) {
    if (status_ == sqDirectFitUnfitted) fit();
}

void sqDirectCircle2::fit() {
    int const n = points_.size();
    if (n < 2) {
        status_ = sqDirectFitTooFewPoints;
    } else if (n == 2) {
        centre_ = points_[0].interpolate(points_[1], 0.5);
        radius_ = 0.5 * distance(points_[0], points_[1]).value();
        status_ = sqDirectFitSuccess;
    } else if (n == 3) {
        three_points_fit();
    } else {
        pratt_fit();
    }
}

void sqDirectCircle2::three_points_fit() {
    // 2 (p - first) · (centre - first) = |p - first|². The squares of the singular values are those of the normal
    // equations, whose tolerance is told.
    int const n = points_.size();
    giPoint2 const first = points_[0];
    mlMatrix rows(n - 1, 2);
    mlVector squares(mlVectorDim, n - 1), x;
    for (int i = 1; i < n; ++i) {
        giVector2 const d = points_[i] - first;
        rows(i - 1, 0) = 2.0 * d.x();
        rows(i - 1, 1) = 2.0 * d.y();
        squares[i - 1] = d.dot(d);
    }
    mlSingularValueDecomposition const svd(rows);
    if (svd.is_singular(std::sqrt(singular_share * tolerance_))) {
        status_ = sqDirectFitSingular;
        return;
    }
    svd.solve(squares, x);
    centre_ = first + giVector2(x[0], x[1]);
    double const centre[] = {centre_.x(), centre_.y()};
    radius_ = mean_distance(plain(points_), 2, n, centre);
    status_ = sqDirectFitSuccess;
}

void sqDirectCircle2::pratt_fit() {
    plane_moments const m = find_plane_moments(plain(points_), points_.size());
    local_circle const c = pratt_problem(m).solve(singular_share * tolerance_);
    // Halves of x and y over q, and of the root of x² + y² - 4 q one.
    double const dx = -0.5 * c.x / c.q, dy = -0.5 * c.y / c.q;
    double const radius = std::sqrt(dx * dx + dy * dy - c.one / c.q);
    giPoint2 const centre(m.frame.centre[0] + dx, m.frame.centre[1] + dy);
    // A straight line; or points in one place or two, which any number of circles fit, also some without a real point.
    if (!(std::abs(centre.x()) + std::abs(centre.y()) + radius <= std::numeric_limits<double>::max())) {
        status_ = sqDirectFitDegenerate;
        return;
    }
    centre_ = centre;
    radius_ = radius;
    status_ = sqDirectFitSuccess;
}

double sqDirectCircle2::chi() const {
    if (status_ != sqDirectFitSuccess) return std::numeric_limits<double>::max();
    double sum[1] = {};
    square_from_round<2> const add = {{centre_.x(), centre_.y()}, radius_};
    sum_over_points<2>(plain(points_), points_.size(), add, sum);
    return std::sqrt(sum[0] / points_.size());
}
