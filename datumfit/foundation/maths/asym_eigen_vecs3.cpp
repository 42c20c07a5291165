#include <datumfit/foundation/maths/asym_eigen_vecs3.h>

#include <datumfit/foundation/maths/binary_scale.h>
#include <datumfit/foundation/maths/singular_value_decomposition.h>
#include <datumfit/foundation/utilities/hypotenuse.h>

#include <Eigen/Eigenvalues>
#include <algorithm>
#include <cmath>
#include <limits>

namespace {

using Eigen::Matrix3d;

// What the elements are trusted to, relative to the norm. They are sums of products over thousands of points, whose
// rounding exceeds that of a single operation; true complex pairs lie far beyond.
constexpr double trusted = 0x1p-40;

// Eigenvalues nearer than this, relative to the norm, are one value computed twice.
constexpr double same_value = 64.0 * std::numeric_limits<double>::epsilon();

// Real eigenvalues in descending order.
struct real_values {
    double values[3];
    int count = 0;

    void add(double value) {
        int i = count++;
        for (; i > 0 && values[i - 1] < value; --i) {
            values[i] = values[i - 1];
        }
        values[i] = value;
    }

    // The end of the run of equal values from `first` on, and their mean.
    int end_of_run(int first, double tolerance, double & mean) const {
        double sum = 0.0;
        int i = first;
        while (i < count && values[first] - values[i] <= tolerance) {
            sum += values[i++];
        }
        mean = sum / (i - first);
        return i;
    }
};

// The eigenvalues of a block of the real Schur form, (a, b; c, d), that did not split into real ones.
//
// The block is (a + d) / 2 on the diagonal plus a matrix without trace, which is the sum of a symmetric one of size h
// and of a quarter turn of size k. A root of h^2 - k^2 parts the eigenvalues; taking k - h off the turn makes them one.
void add_pair(double a, double b, double c, double d, double tolerance, real_values & found) {
    double const h = datumfit::internal::hypotenuse(0.5 * (a - d), 0.5 * (b + c));
    double const k = std::fabs(0.5 * (b - c));
    if (k - h <= tolerance) {
        found.add(0.5 * (a + d));
        found.add(0.5 * (a + d));
    }
}

real_values eigenvalues(Matrix3d const & m) {
    real_values found;
    Eigen::RealSchur<Matrix3d> const schur(m, false);
    if (schur.info() != Eigen::Success) {
        return found;
    }
    Matrix3d const & t = schur.matrixT();
    for (int i = 0; i < 3; ++i) {
        if (i < 2 && t(i + 1, i) != 0.0) {
            add_pair(t(i, i), t(i, i + 1), t(i + 1, i), t(i + 1, i + 1), trusted * m.norm(), found);
            ++i;
        } else {
            found.add(t(i, i));
        }
    }
    return found;
}

mlSingularValueDecomposition decomposition_of_shifted(Matrix3d const & m, double value) {
    mlMatrix shifted(3, 3);
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            shifted(r, c) = m(r, c) - (r == c ? value : 0.0);
        }
    }
    return mlSingularValueDecomposition(shifted, mlJOB_U_NONE, mlJOB_V_WANTED);
}

// The dimension of the space that a matrix takes to 0, at least 1 where the shift is an eigenvalue.
int nullity(mlVector const & singular_values, double tolerance) {
    int result = 1;
    while (result < 3 && singular_values[2 - result] <= tolerance) {
        ++result;
    }
    return result;
}

}  // namespace

void mlAsymEigenVecs3::calculate() {
    clear_results();
    double const scale = datumfit::internal::binary_scale(matrix());
    if (!(scale > 0.0)) {
        return;
    }
    Matrix3d m;
    m << matrix()(0, 0), matrix()(0, 1), matrix()(0, 2), matrix()(1, 0), matrix()(1, 1), matrix()(1, 2), matrix()(2, 0),
        matrix()(2, 1), matrix()(2, 2);
    m *= scale;
    real_values const found = eigenvalues(m);
    int end = 0;
    for (int first = 0; first < found.count; first = end) {
        double value = 0.0;
        end = found.end_of_run(first, same_value * m.norm(), value);
        // An eigenvector is what the shifted matrix takes to 0.
        mlSingularValueDecomposition const svd = decomposition_of_shifted(m, value);
        int const independent = nullity(svd.diagonal(), trusted * m.norm());
        for (int i = first; i < end; ++i) {
            append_result(value / scale, svd.V().col(2 - std::min(i - first, independent - 1)));
        }
    }
}
