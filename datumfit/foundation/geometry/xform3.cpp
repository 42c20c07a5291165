#include <datumfit/foundation/geometry/xform3.h>

#include <cmath>
#include <limits>

namespace {

constexpr double epsilon = std::numeric_limits<double>::epsilon();

struct three_rows {
    giVector3 x, y, z;

    giVector3 times(giVector3 const & v) const { return giVector3(x.dot(v), y.dot(v), z.dot(v)); }
};

three_rows transposed(three_rows const & a) {
    return {giVector3(a.x.x(), a.y.x(), a.z.x()), giVector3(a.x.y(), a.y.y(), a.z.y()),
            giVector3(a.x.z(), a.y.z(), a.z.z())};
}

// A power of two that brings the greatest coordinate of a row into [1, 2); 0 for a row that is not finite or too short
// for an inverse in the range of doubles.
double power_of_two_for(giVector3 const & row) {
    double const greatest = std::fmax(std::abs(row.x()), std::fmax(std::abs(row.y()), std::abs(row.z())));
    if (greatest < 0x1p-960 || !std::isfinite(greatest)) return 0.0;
    return std::scalbn(1.0, -std::ilogb(greatest));
}

// The inverse by cofactors; false when the rows are dependent to rounding. They are scaled first, for rows of very
// different sizes are no sign of a singular matrix.
bool invert(three_rows const & a, three_rows & inverse) {
    double const sx = power_of_two_for(a.x), sy = power_of_two_for(a.y), sz = power_of_two_for(a.z);
    giVector3 const x = sx * a.x, y = sy * a.y, z = sz * a.z, yz = y.cross(z);
    double const det = x.dot(yz);
    double const volume_at_right_angles = x.length() * y.length() * z.length();
    if (!(std::abs(det) > 4.0 * epsilon * volume_at_right_angles)) return false;

    inverse = transposed({sx / det * yz, sy / det * z.cross(x), sz / det * x.cross(y)});
    return true;
}

// The rotation about an axis through the origin (Rodrigues).
three_rows rotation(giUnitVec3 const & axis, giAngle const & angle) {
    double const s = angle.sin(), v = 1.0 - angle.cos(), x = axis.x(), y = axis.y(), z = axis.z();
    return {giVector3(1.0 - v * (y * y + z * z), v * x * y - s * z, v * x * z + s * y),
            giVector3(v * x * y + s * z, 1.0 - v * (x * x + z * z), v * y * z - s * x),
            giVector3(v * x * z - s * y, v * y * z + s * x, 1.0 - v * (x * x + y * y))};
}

// The part of hint across w, of unit length. One projection leaves rounding along w, which a short part magnifies; the
// second takes that away.
giUnitVec3 across(giUnitVec3 const & w, giUnitVec3 const & hint) {
    giVector3 const part = w.project_normal(hint);
    if (part.is_zero(4.0 * epsilon)) return w.any_normal();
    return w.project_normal(giUnitVec3(part));
}

}  // namespace

giXform3::giXform3(giVector3 const & x_row, giVector3 const & y_row, giVector3 const & z_row, giVector3 const & t)
    : state_(general) {
    giVector3 const rows[] = {x_row, y_row, z_row};
    for (int r = 0; r < 3; ++r) {
        matrix_(r, 0) = rows[r].x();
        matrix_(r, 1) = rows[r].y();
        matrix_(r, 2) = rows[r].z();
        matrix_(r, 3) = t.coordinate(static_cast<gi_Axis>(r));
    }
    matrix_(3, 3) = 1.0;
}

giXform3::giXform3(giXformIdentityTag) : giXform3(giAxisX, giAxisY, giAxisZ, giVector3(0.0, 0.0, 0.0)) {
    state_ = unity;
}

giXform3::giXform3(giXformInverseTag, giXform3 const & x) : giXform3(x) {
    if (state_ != general) return;
    set_invalid();
    three_rows inverse;
    if (!invert({x.row(0), x.row(1), x.row(2)}, inverse)) return;
    *this = giXform3(inverse.x, inverse.y, inverse.z, -inverse.times(x.column(3)));
}

giXform3::giXform3(giXformProductTag, giXform3 const & a, giXform3 const & b) : giXform3() {
    if (a.invalid() || b.invalid()) return;
    if (a.identity() || b.identity()) {
        *this = a.identity() ? b : a;
        return;
    }
    giVector3 const c0 = a * b.column(0), c1 = a * b.column(1), c2 = a * b.column(2);
    three_rows const rows = transposed({c0, c1, c2});
    *this = giXform3(rows.x, rows.y, rows.z, a * b.column(3) + a.column(3));
}

giXform3::giXform3(giXformTranslateTag, giVector3 const & v) : giXform3() {
    if (!v.invalid()) *this = giXform3(giAxisX, giAxisY, giAxisZ, v);
}

giXform3::giXform3(giXformRotateTag, giPoint3 const & point, giUnitVec3 const & axis, giAngle const & angle)
    : giXform3() {
    if (point.invalid() || axis.invalid()) return;
    three_rows const r = rotation(axis, angle);
    // t = p - R p as (1 - R) p, from the rounded R: p stays where it is, and of a small turn no digit is lost.
    three_rows const turn{r.x - giVector3(giAxisX), r.y - giVector3(giAxisY), r.z - giVector3(giAxisZ)};
    *this = giXform3(r.x, r.y, r.z, -turn.times(point.release()));
}

giXform3::giXform3(giXformScaleTag, double sx, double sy, double sz)
    : giXform3(giVector3(sx, 0.0, 0.0), giVector3(0.0, sy, 0.0), giVector3(0.0, 0.0, sz), giVector3(0.0, 0.0, 0.0)) {}

giXform3::giXform3(giXformLocalTag, giPoint3 const & origin, giUnitVec3 const & w, giUnitVec3 const & hint)
    : giXform3() {
    if (origin.invalid() || w.invalid() || hint.invalid()) return;
    giUnitVec3 const y = across(w, hint), x = y.cross(w);
    three_rows const r{x, y, w};
    *this = giXform3(r.x, r.y, r.z, -r.times(origin.release()));
}

bool equal(giXform3 const & a, giXform3 const & b, double tol) {
    bool same = !a.invalid() && !b.invalid();
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) same = same && std::abs(a.matrix()(r, c) - b.matrix()(r, c)) <= tol;
    }
    return same;
}
