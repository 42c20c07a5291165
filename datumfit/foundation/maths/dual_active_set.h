#pragma once

#include <datumfit/foundation/maths/convex_quadratic.h>
#include <datumfit/foundation/maths/half_spaces.h>
#include <datumfit/foundation/maths/matrix.h>
#include <datumfit/foundation/maths/vector.h>

#include <vector>

namespace datumfit {
namespace internal {

/// Minimises a convex quadratic over half spaces by the dual method of Goldfarb & Idnani 1983.
///
/// It starts at the free minimum and takes in, one after the other, the row that is violated most, letting go of rows
/// whose multipliers would turn negative. The minimum over the rows taken in rises with each of them, so vertices in
/// which many rows meet cause no cycles, and rows that are parallel or repeated never are active together. A row that
/// depends on active ones, none of which can leave for it, is in conflict with them (Farkas).
///
/// The end is polished: the active rows are met to rounding and the slope along them vanishes to rounding, also where
/// the road to it led through far places. With H in the place of A, the method finds a minimum of the function itself
/// that moves little in idle directions, if rows and slope do not ask for more.
class dual_active_set {
public:
    enum outcome { solved, infeasible, stalled };

    /// From the free minimum of f under all the rows; both must outlive this.
    dual_active_set(half_spaces const & rows, convex_quadratic const & f);

    /// Takes a row out of force, or back into force. The next run goes on from where the last one ended.
    void leave_out(int row);
    void take_back(int row) { values_.data()[row] = rows_.values().data()[row]; }

    /// Goes to the minimum over the rows in force. infeasible: conflict() tells why. stalled: there is no minimum, or
    /// it lies beyond the range of doubles.
    outcome run();

    /// The minimum, when solved.
    mlVector const & x() const { return x_; }

    /// Rows that cannot be met together, ascending, when infeasible: at most one more than the unknowns.
    std::vector<int> const & conflict() const { return conflict_; }

private:
    enum admission { active, relaxed, conflicting };

    double size() const;
    admission admit(int row);
    void resolve();
    bool depends() const;
    int first_to_leave() const;
    admission meet_conflict(int row, double violation);
    void push(int row, double multiplier);
    void drop(int k);
    bool settle();
    void return_to_rows();
    void descend();
    void read_multipliers();
    bool descended() const;

    half_spaces const & rows_;
    convex_quadratic const & f_;
    int n_;
    std::vector<double> values_;  // of the rows: -infinity while a row is active or out of force
    std::vector<int> conflict_;
    double reach_ = 0.0;     // the greatest |x| so far
    double lenience_ = 1.0;  // by what factor more than rounding a multiplier may be negative

    // The active rows: how many, and of each its number, value and multiplier.
    int active_ = 0;
    std::vector<int> row_;
    mlVector bound_, multiplier_;

    // Rows J_k with sum J_kᵀ J_k = H⁻¹, and unit normals N_k of the active rows, so that J_i · N_k = R_ik, a triangle:
    // the first rows of J move x off the active rows, the others along them.
    mlMatrix J_, R_, N_;
    mlVector x_, gradient_;
    mlVector normal_;  // of a row to be taken in,
    mlVector image_;   // J_k · normal,
    mlVector step_;    // the move of x for a unit of its multiplier,
    mlVector share_;   // and the part of it that each active row gives
};

}  // namespace internal
}  // namespace datumfit
