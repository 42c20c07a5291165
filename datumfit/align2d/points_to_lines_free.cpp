#include <datumfit/align2d/extent2.h>
#include <datumfit/align2d/points_to_lines.h>
#include <datumfit/foundation/maths/band_ends.h>
#include <datumfit/foundation/maths/constrained_quadratic_minimiser.h>
#include <datumfit/foundation/maths/singular_value_decomposition.h>

#include <cmath>

namespace {

using namespace datumfit::internal;

// Shift along x and y, turn.
constexpr int unknowns = 3;

// Of equations whose lengths are times a scale, as they are without it.
bool is_singular(mlMatrix A, double scale) {
    for (int k = 0; k < unknowns; ++k) {
        A(k, unknowns - 1) /= scale;
        A(unknowns - 1, k) /= scale;
    }
    return mlSingularValueDecomposition(A).diagonal()[unknowns - 1] <= least_singular_value;
}

}  // namespace

void sqPointsToLines::linear_step_free_points_to_lines(mlMatrix & A, mlVector & b) const {
    for (int i = 0; i < records_.size(); ++i) {
        seen_line const r = view_(records_.read(i));
        double const v[unknowns] = {r.n.x(), r.n.y(), r.turn_effect()};
        add_normal_equations(unknowns, v, r.d.dot(r.n), A, b, weights_.read(i));
    }
}

void sqPointsToLines::linear_step_free_points_to_points(mlMatrix & A, mlVector & b) const {
    double w_sum = 0.0, wx = 0.0, wy = 0.0, w_square = 0.0, wdx = 0.0, wdy = 0.0, w_moment = 0.0;
    for (int i = 0; i < records_.size(); ++i) {
        seen_line const r = view_(records_.read(i));
        double const w = weights_.read(i);
        w_sum += w;
        wx += w * r.m.x();
        wy += w * r.m.y();
        w_square += w * r.m.dot(r.m);
        wdx += w * r.d.x();
        wdy += w * r.d.y();
        w_moment += w * r.m.cross(r.d);
    }
    // The point moves by t + turn (-m.y, m.x).
    A(0, 0) += w_sum;
    A(1, 1) += w_sum;
    A(0, 2) -= wy;
    A(2, 0) -= wy;
    A(1, 2) += wx;
    A(2, 1) += wx;
    A(2, 2) += w_square;
    b[0] += wdx;
    b[1] += wdy;
    b[2] += w_moment;
}

void sqPointsToLines::free_equations(mlMatrix & A, mlVector & b) const {
    A = mlMatrix(mlMatrixZero, unknowns, unknowns);
    b = mlVector(mlVectorZero, unknowns);
    mlMatrix points_A(A);
    mlVector points_b(b);
    linear_step_free_points_to_lines(A, b);
    linear_step_free_points_to_points(points_A, points_b);
    add_share(A, b, points_A, points_b);
}

// Sees the records from the middle of the points, in a unit of about their extent.
void sqPointsToLines::view_near_points() {
    giBox2 box;
    for (int i = 0; i < records_.size(); ++i) box.merge(records_.read(i).measured_point().anchor());
    extent2 const extent(box);
    view_.measured_origin = view_.line_origin = extent.middle;
    view_.scale = std::isnormal(extent.reach) ? std::ldexp(1.0, -std::ilogb(extent.reach)) : 1.0;
}

// A definite system has one solution, wherever the turn is taken about and whatever the unit. Near the points it keeps
// its digits, and the shifts and the turn are alike in size. About the origin, a turn of a part that is some thousand
// times as far away as it is large would be taken for one without effect. A system that is singular even so has its
// shortest solution about the origin.
void sqPointsToLines::single_linear_step_free(giXform2 & step) {
    view_near_points();
    mlMatrix A;
    mlVector b;
    free_equations(A, b);
    double limit = 0.0;
    if (is_singular(A, view_.scale)) {
        limit = least_singular_value;
        view_ = line_view();
        free_equations(A, b);
    }
    mlVector const x = has_bands_ ? solution_under_bands(A, b) : solution(A, b, limit);

    double const turn = x[2];
    giVector2 const by = turn * view_.measured_origin.release();
    giVector2 const shift(x[0] / view_.scale + by.y(), x[1] / view_.scale - by.x());
    step.become(giXformProduct, giXform2(giXformTranslate, shift),
                giXform2(giXformRotate, giPoint2(giOrigin), giAngle(giAngleRadians, turn)));
    view_ = line_view();
}

mlVector sqPointsToLines::solution_under_bands(mlMatrix const & A, mlVector const & b) {
    constraint_coefs_free(lower_, upper_);
    mlConstrainedQuadraticMinimiser minimiser(constraint_matrix_, constraint_values_, 1);
    mlVector x(mlVectorZero, unknowns), gradient(b);
    gradient *= -1.0;
    minimiser.solve(A, gradient, x);
    mlConstrainedQuadraticMinimiser::append_constraint_indices(overdetermined_, minimiser.overdetermined_constraints());
    return x;
}

void sqPointsToLines::constraint_coefs_free(doublecoDynArr const & lower, doublecoDynArr const & upper) {
    band_ends counting(overdetermined_);
    for (int i = 0; i < records_.size(); ++i) {
        counting.next_lower(lower.read(i));
        counting.next_upper(upper.read(i));
    }
    constraint_matrix_.become(counting.kept(), unknowns);
    constraint_values_.become(mlVectorDim, counting.kept());

    int row = 0;
    auto const add_row = [&](double sign, seen_line const & r, double value) {
        constraint_matrix_(row, 0) = sign * r.n.x();
        constraint_matrix_(row, 1) = sign * r.n.y();
        constraint_matrix_(row, 2) = sign * r.turn_effect();
        constraint_values_[row++] = value;
    };
    band_ends ends(overdetermined_);
    for (int i = 0; i < records_.size(); ++i) {
        bool const keeps_lower = ends.next_lower(lower.read(i)), keeps_upper = ends.next_upper(upper.read(i));
        if (!keeps_lower && !keeps_upper) continue;
        seen_line const r = view_(records_.read(i));
        double const deviation = -r.d.dot(r.n);
        if (keeps_lower) add_row(1.0, r, view_.scale * lower.read(i) - deviation);
        if (keeps_upper) add_row(-1.0, r, deviation - view_.scale * upper.read(i));
    }
}
