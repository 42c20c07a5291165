#pragma once

#include <datumfit/align2d/line_and_point.h>
#include <datumfit/foundation/geometry/angle.h>
#include <datumfit/foundation/maths/matrix.h>
#include <datumfit/foundation/maths/vector.h>

namespace datumfit {
namespace internal {

/// The share of the equations of points to points beside those of points to lines. It keeps a step definite where the
/// lines leave a direction open.
constexpr double point_to_point_share = 0.01;

/// A singular value of the equations up to this counts as 0, and along its direction nothing moves.
constexpr double least_singular_value = 1e-7;

/// A record as a step sees it.
struct seen_line {
    giVector2 m, d, n;  // the measured point, the way from it to the line's point, the normal

    /// How the deviation grows with a turn about the origin.
    double turn_effect() const { return m.cross(n); }
};

/// From where a step sees the records: measured points from one place, and turned, the lines from another, where the
/// first belongs. Lengths come out times the scale.
struct line_view {
    giPoint2 measured_origin = giPoint2(giOrigin), line_origin = giPoint2(giOrigin);
    giAngle turn;
    double scale = 1.0;

    seen_line operator()(sqLineAndPoint const & record) const {
        giVector2 const m = record.measured_point() - measured_origin.release();
        giVector2 const turned(turn.cos() * m.x() - turn.sin() * m.y(), turn.sin() * m.x() + turn.cos() * m.y());
        // Neighbours are subtracted first, so that digits last far from the origin.
        giVector2 const d = record.line_point() - line_origin.release() - turned;
        return {scale * turned, scale * d, record.line_normal()};
    }
};

/// Adds to equations A x = b, of n unknowns, those of one record whose deviation along the line's normal is to change
/// by v . x = deviation: weight v v^T and weight deviation v.
inline void add_normal_equations(int n, double const * v, double deviation, mlMatrix & A, mlVector & b, double weight) {
    for (int j = 0; j < n; ++j) {
        double * const row = A.row_data(j);
        for (int k = 0; k < n; ++k) row[k] += weight * v[j] * v[k];
        b.data()[j] += weight * deviation * v[j];
    }
}

/// Adds to A x = b the share that equations of points to points have.
inline void add_share(mlMatrix & A, mlVector & b, mlMatrix points_A, mlVector points_b) {
    A += points_A *= point_to_point_share;
    b += points_b *= point_to_point_share;
}

/// The shortest x that solves A x = b best, where singular values up to a limit count as 0. 0 when numbers have
/// overflowed.
mlVector solution(mlMatrix const & A, mlVector const & b, double limit = least_singular_value);

}  // namespace internal
}  // namespace datumfit
