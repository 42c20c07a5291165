#include <datumfit/foundation/maths/sym_eigen_vecs.h>

#include <datumfit/foundation/maths/binary_scale.h>
#include <datumfit/foundation/utilities/hypotenuse.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// The convergence is quadratic in the end, after 6 sweeps or so; the limit only keeps the loop finite.
constexpr int most_sweeps = 60;

// A symmetric matrix on its way to a diagonal, with the product of the rotations so far.
class jacobi {
public:
    jacobi(mlMatrix const & m, double scale)
        : n_(m.rows()), a_(m.rows(), m.rows()), vectors_(mlMatrixIdentity, m.rows()) {
        for (int r = 0; r < n_; ++r) {
            for (int c = 0; c < n_; ++c) {
                a_(r, c) = 0.5 * (scale * m(r, c) + scale * m(c, r));
            }
        }
    }

    double value(int i) const { return a_(i, i); }
    mlSlice vector(int i) { return vectors_.col(i); }

    // Rotates all pairs once; false when none had anything left to rotate.
    bool sweep() {
        bool rotated = false;
        for (int p = 0; p + 1 < n_; ++p) {
            for (int q = p + 1; q < n_; ++q) {
                if (!negligible(p, q)) {
                    rotate(p, q);
                    rotated = true;
                }
            }
        }
        return rotated;
    }

private:
    // Relative to the two diagonal elements, not to the whole matrix: so small eigenvalues keep their digits.
    bool negligible(int p, int q) const {
        double const limit =
            std::numeric_limits<double>::epsilon() * std::sqrt(std::fabs(a_(p, p))) * std::sqrt(std::fabs(a_(q, q)));
        return std::fabs(a_(p, q)) <= std::max(limit, std::numeric_limits<double>::min());
    }

    // The rotation by at most 45 degrees that makes element (p, q) zero; t is the tangent of its angle.
    void rotate(int p, int q) {
        double const theta = 0.5 * (a_(q, q) - a_(p, p)) / a_(p, q);
        double const t = std::copysign(1.0, theta) / (std::fabs(theta) + datumfit::internal::hypotenuse(theta, 1.0));
        double const cosine = 1.0 / datumfit::internal::hypotenuse(t, 1.0);
        double const sine = t * cosine;
        double const shift = t * a_(p, q);
        a_(p, p) -= shift;
        a_(q, q) += shift;
        a_(p, q) = a_(q, p) = 0.0;
        for (int k = 0; k < n_; ++k) {
            if (k != p && k != q) {
                turn(a_(k, p), a_(k, q), cosine, sine);
                a_(p, k) = a_(k, p);
                a_(q, k) = a_(k, q);
            }
            turn(vectors_(k, p), vectors_(k, q), cosine, sine);
        }
    }

    static void turn(double & p, double & q, double cosine, double sine) {
        double const old_p = p;
        p = cosine * old_p - sine * q;
        q = sine * old_p + cosine * q;
    }

    int n_;
    mlMatrix a_, vectors_;
};

}  // namespace

void mlSymEigenVecs::calculate() {
    clear_results();
    double const scale = datumfit::internal::binary_scale(matrix());
    if (!(scale > 0.0)) {
        return;
    }
    jacobi rotations(matrix(), scale);
    for (int i = 0; i < most_sweeps && rotations.sweep(); ++i) {
    }
    intcoDynArr order;
    for (int i = 0; i < matrix().rows(); ++i) {
        order.append(i);
    }
    std::stable_sort(order.data(), order.data() + order.size(),
                     [&](int a, int b) { return rotations.value(a) > rotations.value(b); });
    for (int i = 0; i < order.size(); ++i) {
        append_result(rotations.value(order[i]) / scale, rotations.vector(order[i]));
    }
}
