#include <datumfit/align3d/points_to_planes/points_to_planes.h>
#include <datumfit/foundation/maths/band_ends.h>

#include <algorithm>

namespace {

using datumfit::internal::band_ends;

constexpr int most_orts = 3;

// How the deviation of a record depends on the n unknowns of a step: first on shifts, then on what turns.
struct band_row {
    int n;
    double scale;
    enum { free_turn, axis_turn, point_turn, no_turn } turn = point_turn;
    giVector3 axis;
    giVector3coDynArr shifts;
    giPoint3 pivot = giPoint3(giOrigin), nominal_pivot = giPoint3(giOrigin);

    band_row(int unknowns, double rotation_scale) : n(unknowns), scale(rotation_scale) {}

    void be_free() {
        turn = free_turn;
        shifts = {giVector3(giAxisX), giVector3(giAxisY), giVector3(giAxisZ)};
    }
    void slide(giVector3coDynArr const & directions) {
        turn = no_turn;
        shifts = directions;
        shifts.shrink(n, 0);
    }
    void turn_about(giVector3 const & unit_vector) {
        turn = axis_turn;
        axis = unit_vector;
        giVector3 orts[most_orts];
        sqPointsToPlanes::linear_step_fixed_axis_orts(n, axis, orts);
        for (int k = 0; k < std::min(n - 1, most_orts); ++k) shifts.append(orts[k]);
    }

    // Writes the n coefficients, and gives the deviation as it stands, both not weighted.
    double write(sqPlaneAndPoint const & record, double * row) const {
        giVector3 const u = 1.0 / record.weight * record.normal;
        giVector3 const p = record.point - pivot, q = record.plane_point - nominal_pivot, c = p.cross(u);
        std::fill_n(row, n, 0.0);
        for (int k = 0; k < shifts.size(); ++k) row[k] = u.dot(shifts[k]);
        if (turn == free_turn) write_turn(scale, c, row + 3);
        if (turn == axis_turn) row[n - 1] = scale * c.dot(axis);
        if (turn == point_turn && n == 3) write_turn(1.0, c, row);
        return (p - q).dot(u);
    }

private:
    static void write_turn(double scale, giVector3 const & c, double * row) {
        row[0] = scale * c.x();
        row[1] = scale * c.y();
        row[2] = scale * c.z();
    }
};

}  // namespace

void sqPointsToPlanes::constraint_coefs(int n) {
    band_row form(n, rotation_scale_);
    if (n == 6) {
        form.be_free();
    } else if (shift_directions_.size() > 0) {  // before the axis, as a step chooses its form
        form.slide(shift_directions_);
    } else if (locked_from_.size() > 0) {
        form.turn_about(locked_from_.read(0).unit());
    }
    if (n != 6 && shift_directions_.size() == 0 && positioning_.size() > 0) {
        form.pivot = positioning_.read(0).point;
        form.nominal_pivot = positioning_.read(0).plane_point;
    }

    band_ends counting(overdetermined_);
    for (int i = 0; i < bestfit_.size(); ++i) {
        counting.next_lower(bestfit_.read(i).lower);
        counting.next_upper(bestfit_.read(i).upper);
    }
    int const rows = counting.kept();
    constraint_matrix_.become(rows, n);
    constraint_values_.become(mlVectorDim, rows);
    constraint_priorities_.become(mlVectorDim, rows);

    int r = 0;
    band_ends ends(overdetermined_);
    for (int i = 0; i < bestfit_.size(); ++i) {
        sqPlaneAndPoint const & record = bestfit_.read(i);
        bool const keeps_lower = ends.next_lower(record.lower), keeps_upper = ends.next_upper(record.upper);
        if (!keeps_lower && !keeps_upper) continue;
        double * const row = constraint_matrix_.row_data(r);
        double const deviation = form.write(record, row);
        if (keeps_lower && keeps_upper) std::copy_n(row, n, constraint_matrix_.row_data(r + 1));
        if (keeps_lower) {
            constraint_values_[r] = record.lower - deviation;
            constraint_priorities_[r++] = record.weight;
        }
        if (keeps_upper) {
            double * const upper = constraint_matrix_.row_data(r);
            std::transform(upper, upper + n, upper, [](double x) { return -x; });
            constraint_values_[r] = deviation - record.upper;
            constraint_priorities_[r++] = record.weight;
        }
    }
}
