#include <datumfit/direct/direct_ellipse2.h>

#include <datumfit/direct/direct_circle2.h>
#include <datumfit/direct/plane_moments.h>
#include <datumfit/direct/radial_square.h>
#include <datumfit/foundation/maths/asym_eigen_vecs3.h>
#include <datumfit/foundation/maths/singular_value_decomposition.h>
#include <datumfit/foundation/maths/sym_eigen_vecs.h>
#include <datumfit/primitives/point_sums.h>

#include <cmath>
#include <limits>

using namespace datumfit::internal;

namespace {

// Singular values up to this count as 0 where a matrix is inverted.
constexpr double lost_value = 1e-7;

// A singular value of the reduced matrix up to this share of the squares that it is the rest of is their rounding.
constexpr double lost_share = 1e-13;

// a x² + b x y + c y², the quadratic part of a conic.
struct quadratic {
    double a, b, c;

    // In coordinates from which x = xu u and y = yu u + yv v.
    quadratic seen_from(double xu, double yu, double yv) const {
        return {a * xu * xu + b * xu * yu + c * yu * yu, b * xu * yv + 2.0 * c * yu * yv, c * yv * yv};
    }

    // This part times s, plus t times another one.
    quadratic plus(double s, double t, quadratic const & k) const {
        return {s * a + t * k.a, s * b + t * k.b, s * c + t * k.c};
    }

    double dot(quadratic const & k) const { return a * k.a + b * k.b + c * k.c; }

    // The bilinear form of 4 a c - b², which is positive for ellipses, and greatest for circles of those of one size.
    double roundness(quadratic const & k) const { return 2.0 * (a * k.c + c * k.a) - b * k.b; }
};

quadratic quadratic_of(mlSlice const & k) {
    return {k[0], k[1], k[2]};
}

// The roundest of the combinations of two.
quadratic roundest(quadratic p, quadratic q) {
    p = p.plus(1.0 / std::sqrt(p.dot(p)), 0.0, p);
    q = q.plus(1.0, -q.dot(p), p);
    q = q.plus(1.0 / std::sqrt(q.dot(q)), 0.0, q);
    double const form[] = {p.roundness(p), p.roundness(q), p.roundness(q), q.roundness(q)};
    mlSymEigenVecs eigen(mlMatrix(utConvert, form, 2, 2));
    eigen.calculate();
    return p.plus(eigen.eigen_vector(0)[0], eigen.eigen_vector(0)[1], q);
}

// The matrix of the means of the products of (x, y, 1).
mlMatrix linear_gram(plane_moments const & m) {
    skew_frame const & f = m.frame;
    double const gram[] = {m(2, 0), m(1, 1), m(1, 0), m(1, 1), m(0, 2), m(0, 1), m(1, 0), m(0, 1), 1.0};
    double const from_frame[] = {f.ux, f.uy, 0.0, 0.0, f.vy, 0.0, f.centre[0], f.centre[1], 1.0};
    mlMatrix const t(utConvert, from_frame, 3, 3);
    mlMatrix const half(mlMatrixProduct, mlMatrix(utConvert, gram, 3, 3), t);
    return mlMatrix(mlMatrixProduct, mlMatrix(mlMatrixTranspose, t), half);
}

}  // namespace

// quadratic + x dx + y dy + one = 0, with dx and dy from a point near the centre.
struct sqDirectEllipse2::conic {
    giPoint2 from;
    quadratic k;
    double x, y, one;
};

namespace {

// The direct fit in the frame of the moments, where k1 u² + k2 u v + k3 v² is the quadratic part of the conic.
class direct_problem {
public:
    explicit direct_problem(plane_moments const & m) : frame_(m.frame) {
        double const squares[] = {m(4, 0), m(3, 1), m(2, 2), m(3, 1), m(2, 2), m(1, 3), m(2, 2), m(1, 3), m(0, 4)};
        double const mixed[] = {m(3, 0), m(2, 1), m(2, 0), m(2, 1), m(1, 2), m(1, 1), m(1, 2), m(0, 3), m(0, 2)};
        double const lines[] = {m(2, 0), m(1, 1), m(1, 0), m(1, 1), m(0, 2), m(0, 1), m(1, 0), m(0, 1), 1.0};
        mlMatrix const s2(utConvert, mixed, 3, 3);
        mlSingularValueDecomposition s3(mlMatrix(utConvert, lines, 3, 3));
        linear_of_ = mlMatrix(mlMatrixProduct, s3.inverse(lost_value), mlMatrix(mlMatrixTranspose, s2));
        reduced_ = mlMatrix(utConvert, squares, 3, 3);
        squares_ = m(4, 0) + m(2, 2) + m(0, 4);
        reduced_ -= mlMatrix(mlMatrixProduct, s2, linear_of_);
    }

    // The eigenproblem of the quadratic part: the reduced matrix under the inverse of the constraint 4 a c - b².
    mlAsymEigenVecs3 eigenproblem() const {
        double const inverse_constraint[] = {0.0, 0.0, 0.5, 0.0, -1.0, 0.0, 0.5, 0.0, 0.0};
        return mlAsymEigenVecs3(mlMatrix(mlMatrixProduct, mlMatrix(utConvert, inverse_constraint, 3, 3), reduced_));
    }

    // Whether a whole pencil of conics goes through all points, and its roundest one.
    bool find_pencil(quadratic & k) const {
        mlSingularValueDecomposition const svd(reduced_, mlJOB_U_NONE, mlJOB_V_WANTED);
        if (!(svd.diagonal()[1] <= lost_share * squares_)) return false;
        k = roundest(as_given(quadratic_of(svd.V().col(1))), as_given(quadratic_of(svd.V().col(2))))
                .seen_from(frame_.ux, frame_.uy, frame_.vy);
        return true;
    }

    // The conic of a quadratic part, in the directions and the unit of the points, with a quadratic part of length 1.
    template <class Conic>
    Conic whole(quadratic const & k) const {
        double const part[] = {k.a, k.b, k.c};
        mlVector const linear(mlMatrixProduct, linear_of_, mlVector(utConvert, part, 3));
        double const dv = 1.0 / frame_.vy, du = 1.0 / frame_.ux, shear = -frame_.uy * du * dv;
        quadratic const given = as_given(k);
        double const per_length = 1.0 / std::sqrt(given.dot(given));
        return {giPoint2(frame_.centre[0], frame_.centre[1]), given.plus(per_length, 0.0, given),
                -per_length * (linear[0] * du + linear[1] * shear), -per_length * linear[1] * dv,
                -per_length * linear[2]};
    }

private:
    quadratic as_given(quadratic const & k) const {
        double const du = 1.0 / frame_.ux, dv = 1.0 / frame_.vy;
        return k.seen_from(du, -frame_.uy * du * dv, dv);
    }

    skew_frame frame_;
    mlMatrix linear_of_, reduced_;
    double squares_;  // the trace of what was reduced
};

}  // namespace

sqDirectEllipse2::sqDirectEllipse2(giPoint2coDynArr const & points) : sqDirectFit(points) {
    if (points_.size() >= 4) {
        fit();
        if (status_ == sqDirectFitSuccess) return;
    }
    sqDirectCircle2 const circle(points_);
    status_ = circle.status();
    if (status_ != sqDirectFitSuccess) return;
    a_length_ = b_length_ = circle.radius();
    centre_ = circle.centre();
    a_axis_ = giVector2(giAxisX);
    b_axis_ = giVector2(giAxisY);
    ellipse_plane_.become(centre_, a_axis_);
}

void sqDirectEllipse2::fit() {
    plane_moments const m = find_plane_moments(plain(points_), points_.size());
    if (mlSingularValueDecomposition(linear_gram(m)).is_singular(tolerance_)) {
        status_ = sqDirectFitSingular;
        return;
    }
    direct_problem const problem(m);
    quadratic k;
    if (problem.find_pencil(k)) {
        accept(problem.whole<conic>(k));
        return;
    }
    mlAsymEigenVecs3 eigen = problem.eigenproblem();
    eigen.calculate();
    if (eigen.num_real_eigen_values() != 3) {
        status_ = sqDirectFitDegenerate;
        return;
    }
    for (int i = 2; i >= 0; --i) {
        if (accept(problem.whole<conic>(quadratic_of(eigen.eigen_vector(i))))) return;
    }
}

// Takes a conic as the result if it is an ellipse, and sets the status.
bool sqDirectEllipse2::accept(conic const & c) {
    double const elements[] = {c.k.a, 0.5 * c.k.b, 0.5 * c.k.b, c.k.c};
    mlMatrix q(utConvert, elements, 2, 2);
    mlSingularValueDecomposition svd(q);
    if (svd.is_singular(tolerance_)) {
        status_ = sqDirectFitSingular;
        return false;
    }
    mlMatrix const & inverse = svd.inverse(lost_value);
    double const x = -0.5 * (inverse(0, 0) * c.x + inverse(0, 1) * c.y);
    double const y = -0.5 * (inverse(1, 0) * c.x + inverse(1, 1) * c.y);
    centre_ = c.from + giVector2(x, y);
    // At the centre the left side is half of the linear part there, and the constant: 2 Q centre = -(x, y).
    q /= -(0.5 * (x * c.x + y * c.y) + c.one);

    mlSymEigenVecs eigen(q);
    eigen.calculate();
    double const l0 = eigen.eigen_value(0), l1 = eigen.eigen_value(1);
    if (!(l0 >= tolerance_ && l1 >= tolerance_)) {
        status_ = sqDirectFitDegenerate;
        return false;
    }
    a_length_ = std::sqrt(1.0 / l1);
    b_length_ = std::sqrt(1.0 / l0);
    a_axis_ = giVector2(eigen.eigen_vector(1)[0], eigen.eigen_vector(1)[1]);
    b_axis_ = giVector2(eigen.eigen_vector(0)[0], eigen.eigen_vector(0)[1]);
    angle_ = giVector2(giAxisX).signed_angle(a_axis_);
    ellipse_plane_.become(centre_, a_axis_);
    status_ = sqDirectFitSuccess;
    return true;
}

double sqDirectEllipse2::chi() const {
    if (status_ != sqDirectFitSuccess) return std::numeric_limits<double>::max();
    double sum = 0.0;
    for (int i = 0; i < points_.size(); ++i) {
        giPoint2 const p = ellipse_plane_.to_work(points_[i]);
        sum += radial_square(a_length_, b_length_, p.x(), p.y(), tolerance_);
    }
    return std::sqrt(sum / points_.size());
}
