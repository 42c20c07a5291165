#include <datumfit/foundation/maths/singular_value_decomposition.h>

#include <datumfit/foundation/maths/binary_scale.h>

#include <Eigen/Householder>
#include <Eigen/Jacobi>
#include <Eigen/QR>
#include <algorithm>
#include <cmath>
#include <limits>

namespace {

using Eigen::Index;
using Eigen::MatrixXd;
using Eigen::VectorXd;
using rows_view = Eigen::Map<Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor> const>;
using householder = Eigen::HouseholderQR<Eigen::Ref<MatrixXd>>;

constexpr double epsilon = std::numeric_limits<double>::epsilon();

// Below this squared length, where the elements are about 1, a column counts as zero: the squares of shorter ones come
// near the smallest numbers and lose their digits.
constexpr double lost_square = 1e-260;

// The convergence is quadratic in the end, after 6 sweeps or so; the limit only keeps the loop finite.
constexpr int most_sweeps = 60;

// A matrix as left * diag(values) * right^T.
struct svd_factors {
    MatrixXd left;
    VectorXd values;
    MatrixXd right;
};

rows_view view(mlMatrix const & m) {
    return rows_view(m.row_data(0), m.rows(), m.cols());
}

mlMatrix from_eigen(MatrixXd const & m) {
    mlMatrix result(static_cast<int>(m.rows()), static_cast<int>(m.cols()));
    for (int r = 0; r < result.rows(); ++r) {
        for (int c = 0; c < result.cols(); ++c) {
            result(r, c) = m(r, c);
        }
    }
    return result;
}

// The longer column comes first, which sorts the singular values and speeds the convergence.
bool put_in_order(MatrixXd & a, MatrixXd & right, Index p, Index q) {
    if (!(a.col(p).squaredNorm() < a.col(q).squaredNorm())) {
        return false;
    }
    a.col(p).swap(a.col(q));
    right.col(p).swap(right.col(q));
    return true;
}

// A pair of columns is left alone once the cosine of their angle is within rounding of 0, whatever their lengths: this
// is what keeps the digits of the short ones.
bool make_orthogonal(MatrixXd & a, MatrixXd & right, Index p, Index q) {
    double const pp = a.col(p).squaredNorm();
    double const qq = a.col(q).squaredNorm();
    double const pq = a.col(p).dot(a.col(q));
    if (!(qq > lost_square && std::fabs(pq) > epsilon * std::sqrt(pp) * std::sqrt(qq))) {
        return false;
    }
    Eigen::JacobiRotation<double> rotation;
    rotation.makeJacobi(pp, pq, qq);
    a.applyOnTheRight(p, q, rotation);
    right.applyOnTheRight(p, q, rotation);
    return true;
}

// The left factor and the values: columns that are orthogonal and descend in length, as unit vectors times lengths.
// Those lost as zero are replaced by any that complete the orthogonal matrix.
void take_columns(MatrixXd const & a, svd_factors & factors) {
    Index rank = 0;
    while (rank < a.cols() && a.col(rank).squaredNorm() > lost_square) {
        ++rank;
    }
    factors.left = MatrixXd::Identity(a.rows(), a.cols());
    if (0 < rank && rank < a.cols()) {
        factors.left.applyOnTheLeft(Eigen::HouseholderQR<MatrixXd>(a.leftCols(rank)).householderQ());
    }
    factors.values = VectorXd::Zero(a.cols());
    for (Index k = 0; k < rank; ++k) {
        factors.values[k] = a.col(k).norm();
        factors.left.col(k) = a.col(k) / factors.values[k];
    }
}

// One-sided Jacobi rotations of a square matrix.
svd_factors jacobi(MatrixXd a) {
    svd_factors factors;
    factors.right = MatrixXd::Identity(a.cols(), a.cols());
    bool changed = true;
    for (int sweep = 0; sweep < most_sweeps && changed; ++sweep) {
        changed = false;
        for (Index p = 0; p + 1 < a.cols(); ++p) {
            for (Index q = p + 1; q < a.cols(); ++q) {
                bool const swapped = put_in_order(a, factors.right, p, q);
                bool const rotated = make_orthogonal(a, factors.right, p, q);
                changed = changed || swapped || rotated;
            }
        }
    }
    take_columns(a, factors);
    return factors;
}

MatrixXd upper_triangle(householder const & qr) {
    Index const order = std::min(qr.rows(), qr.cols());
    return qr.matrixQR().topRows(order).triangularView<Eigen::Upper>();
}

// The triangular factor of rows of scale * m. The factors of the two halves are stacked and reduced again: so only one
// block of rows is copied at a time, and the rounding grows with the logarithm of the number of rows.
MatrixXd triangular_factor(rows_view const & m, Index first, Index count, double scale) {
    Index const block = std::max<Index>(256, 2 * m.cols());
    MatrixXd rows;
    if (count <= block) {
        rows = scale * m.middleRows(first, count);
    } else {
        Index const half = count / 2;
        rows.resize(2 * m.cols(), m.cols());
        rows << triangular_factor(m, first, half, scale), triangular_factor(m, first + half, count - half, scale);
    }
    return upper_triangle(householder(rows));
}

// The first columns of Q * diag(corner, identity).
MatrixXd times_q(householder const & qr, MatrixXd const & corner, Index cols) {
    MatrixXd product = MatrixXd::Identity(qr.rows(), cols);
    product.topLeftCorner(corner.rows(), corner.cols()) = corner;
    product.applyOnTheLeft(qr.householderQ());
    return product;
}

// The factors of m that is at least as high as wide; left has `left_cols` columns, of which those beyond the width of m
// complete an orthogonal matrix.
svd_factors factors_of_tall(MatrixXd m, Index left_cols) {
    householder const qr(m);
    svd_factors factors = jacobi(upper_triangle(qr));
    factors.left = times_q(qr, factors.left, left_cols);
    return factors;
}

svd_factors factors_of(mlMatrix const & m, double scale, bool left_wanted) {
    rows_view const elements = view(m);
    if (m.rows() >= m.cols()) {
        return left_wanted ? factors_of_tall(scale * elements, m.cols())
                           : jacobi(triangular_factor(elements, 0, m.rows(), scale));
    }
    svd_factors factors = factors_of_tall(scale * elements.transpose(), m.cols());
    factors.left.swap(factors.right);
    factors.left.conservativeResizeLike(MatrixXd::Zero(m.rows(), m.cols()));
    return factors;
}

}  // namespace

mlSingularValueDecomposition::mlSingularValueDecomposition(mlMatrix const & m)
    : mlSingularValueDecomposition(m, mlJOB_U_WANTED, mlJOB_V_WANTED) {}

mlSingularValueDecomposition::mlSingularValueDecomposition(mlMatrix const & m, mlJOB_U job_u, mlJOB_V job_v)
    : diagonal_(mlVectorZero, m.cols()) {
    double const scale = datumfit::internal::binary_scale(m);
    if (!(scale > 0.0)) {
        *this = mlSingularValueDecomposition(mlMatrix(mlMatrixZero, m.rows(), m.cols()), job_u, job_v);
        return;
    }
    svd_factors const factors = factors_of(m, scale, job_u != mlJOB_U_NONE);
    for (int k = 0; k < static_cast<int>(factors.values.size()); ++k) {
        diagonal_[k] = factors.values[k] / scale;
    }
    if (job_u != mlJOB_U_NONE) {
        u_ = from_eigen(factors.left);
    }
    if (job_v != mlJOB_V_NONE) {
        v_ = from_eigen(factors.right);
    }
}

bool mlSingularValueDecomposition::is_singular(double tol) const {
    int const n = diagonal_.dimension();
    return n == 0 || !(diagonal_.read(n - 1) > tol * diagonal_.read(0));
}

mlMatrix const & mlSingularValueDecomposition::inverse(double tol) {
    if (!has_both_factors()) {
        return inverse_;
    }
    // The inverse of still smaller values would overflow.
    double const threshold = std::max(tol, std::numeric_limits<double>::min());
    mlMatrix scaled_v(v_);
    for (int k = 0; k < v_.cols(); ++k) {
        double const value = diagonal_.read(k);
        for (int r = 0; r < v_.rows(); ++r) {
            scaled_v(r, k) = value > threshold ? scaled_v(r, k) / value : 0.0;
        }
    }
    return inverse_.become(mlMatrixProduct, scaled_v, mlMatrix(mlMatrixTranspose, u_));
}

void mlSingularValueDecomposition::solve(mlVector const & b, mlVector & x) const {
    if (!has_both_factors()) {
        x.clear(0);
        return;
    }
    double const threshold = epsilon * std::max(u_.rows(), v_.rows()) * diagonal_.read(0);
    mlVector coefficients(mlMatrixProduct, mlMatrix(mlMatrixTranspose, u_), b);
    for (int k = 0; k < coefficients.dimension(); ++k) {
        double const value = diagonal_.read(k);
        coefficients[k] = value > threshold ? coefficients[k] / value : 0.0;
    }
    x.become(mlMatrixProduct, v_, coefficients);
}
