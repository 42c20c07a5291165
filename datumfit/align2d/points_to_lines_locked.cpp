#include <datumfit/align2d/points_to_lines.h>

namespace {

using namespace datumfit::internal;

// The normal of a direction on its right, the second direction of shifts.
giVector2 right_of(giVector2 const & direction) {
    return giVector2(direction.y(), -direction.x());
}

// Carries p onto q, and turns about it.
giXform2 carried_and_turned(giPoint2 const & p, giPoint2 const & q, giAngle const & angle) {
    return giXform2(giXformProduct, giXform2(giXformTranslate, q - p), giXform2(giXformRotate, p, angle));
}

}  // namespace

void sqPointsToLines::linear_step_locked_origin_points_to_lines(mlMatrix & A, mlVector & b) const {
    for (int i = 0; i < records_.size(); ++i) {
        seen_line const r = view_(records_.read(i));
        double const c = r.turn_effect();
        add_normal_equations(1, &c, r.d.dot(r.n), A, b, weights_.read(i));
    }
}

void sqPointsToLines::linear_step_locked_origin_points_to_points(mlMatrix & A, mlVector & b) const {
    for (int i = 0; i < records_.size(); ++i) {
        seen_line const r = view_(records_.read(i));
        double const w = weights_.read(i);
        A(0, 0) += w * r.m.dot(r.m);
        b[0] += w * r.m.cross(r.d);
    }
}

void sqPointsToLines::single_linear_step_locked_point(giXform2 & step) {
    view_.measured_origin = locks_.origin_from();
    view_.line_origin = locks_.origin_to();
    mlMatrix A(mlMatrixZero, 1, 1), points_A(A);
    mlVector b(mlVectorZero, 1), points_b(b);
    linear_step_locked_origin_points_to_lines(A, b);
    linear_step_locked_origin_points_to_points(points_A, points_b);
    add_share(A, b, points_A, points_b);
    view_ = line_view();
    step = carried_and_turned(locks_.origin_from(), locks_.origin_to(), giAngle(giAngleRadians, solution(A, b)[0]));
}

void sqPointsToLines::linear_step_fixed_shift_direction_points_to_lines(int n, giVector2 const & direction,
                                                                        mlMatrix & A, mlVector & b) const {
    giVector2 const aside = right_of(direction);
    for (int i = 0; i < records_.size(); ++i) {
        seen_line const r = view_(records_.read(i));
        double const v[] = {direction.dot(r.n), aside.dot(r.n)};
        add_normal_equations(n, v, r.d.dot(r.n), A, b, weights_.read(i));
    }
}

void sqPointsToLines::linear_step_fixed_shift_direction_points_to_points(int n, giVector2 const & direction,
                                                                         mlMatrix & A, mlVector & b) const {
    giVector2 const directions[] = {direction, right_of(direction)};
    for (int i = 0; i < records_.size(); ++i) {
        seen_line const r = view_(records_.read(i));
        double const w = weights_.read(i);
        for (int k = 0; k < n; ++k) {
            A(k, k) += w;
            b[k] += w * r.d.dot(directions[k]);
        }
    }
}

void sqPointsToLines::single_linear_shift_direction_axis(giXform2 & step) {
    bool const slides = locks_.has_origin();
    giPoint2 const p = slides ? locks_.origin_from() : giPoint2(giOrigin);
    giPoint2 const q = slides ? locks_.origin_to() : giPoint2(giOrigin);
    giVector2 const & direction = locks_.axis_to();
    int const n = slides ? 1 : 2;
    view_ = {p, q, locks_.turn()};
    mlMatrix A(mlMatrixZero, n, n), points_A(A);
    mlVector b(mlVectorZero, n), points_b(b);
    linear_step_fixed_shift_direction_points_to_lines(n, direction, A, b);
    linear_step_fixed_shift_direction_points_to_points(n, direction, points_A, points_b);
    add_share(A, b, points_A, points_b);
    view_ = line_view();

    mlVector const x = solution(A, b);
    giVector2 shift = x[0] * direction;
    if (n == 2) shift += x[1] * right_of(direction);
    step.become(giXformProduct, giXform2(giXformTranslate, shift), carried_and_turned(p, q, locks_.turn()));
}
