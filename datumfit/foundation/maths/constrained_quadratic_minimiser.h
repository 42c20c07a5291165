#pragma once

#include <datumfit/foundation/containers/dyn_arr.h>
#include <datumfit/foundation/maths/half_spaces.h>
#include <datumfit/foundation/maths/matrix.h>
#include <datumfit/foundation/maths/vector.h>

#include <vector>

/// Minimises ½ xᵀ A x + gᵀ x under rows of linear constraints K x >= d, for few unknowns and up to thousands of rows.
///
/// Stage 1 finds a feasible point, stage 2 the minimum. Rows may be parallel, repeated and in any number at a vertex:
/// - A row is met when K x falls short of d by no more than 1e-14 of |row| |x|; the scale of a row does not matter.
/// - Rows whose directions are within 1e-10 of dependent are dependent. Where such rows contradict each other by less
///   than 1e-12 in the unit of x, as bands of no width do by rounding, each gives way by as much.
/// - A row shorter than 1e-14 of the longest one counts as zero: met by every x, or with d above 1e-12 by none.
/// - A row with d below -1e100 |row| is met by every x, one with d above 1e100 |row| by none.
///
/// Rows that cannot be met together are in conflict, and some may be given up, if `drop` is not 0:
/// - As few as possible, and of equally few the later ones: the first row given up comes as late as can be, then the
///   second, and so on. Where conflicts are many and entangled, at any rate none that can be met beside those left.
/// - Rows named to keep() stay, and others go in their stead. When none are named, and stage 1 starts from an x that
///   is not 0, it keeps the rows that this x meets.
///
/// Both stages are the dual active-set method of Goldfarb & Idnani 1983, stage 1 for the least distance from its start.
class mlConstrainedQuadraticMinimiser {
public:
    /// Copies the constraints. Data that are not valid let every stage fail.
    mlConstrainedQuadraticMinimiser(mlMatrix const & K, mlVector const & d, int drop);

    /// 0 when there are not as many values as rows, when rows have no columns, or when a number or the squared length
    /// of a row is not finite. Without rows all data are valid.
    static int are_valid(mlMatrix const & K, mlVector const & d);

    /// The row of this number is not to be given up for one that is not kept.
    void keep(int row);

    /// Moves x to the nearest point that meets all rows; an x that meets them stays as it is. 1, or 0 when there is
    /// none: with drop 0 x is untouched then. Otherwise the rows to give up are now listed in
    /// overdetermined_constraints(), and x moves to the nearest point that meets all others. 0 with x untouched also
    /// when x does not fit the constraints.
    int stage1(mlVector & x);

    /// Removes the rows that the last stage 1 listed.
    void delete_overdetermined_constraints();

    /// Moves x, which meets the rows, to the minimum under those that have not been removed. A is symmetric and
    /// positive semidefinite. In directions in which it does not curve (eigenvalues up to 1e-12 of the greatest) x
    /// moves only as far as rows ask for it, unless g has a slope there of more than 1e-6 of its terms, which rounding
    /// does not explain. 1, or 0 with x untouched when nothing stops such a slope, when the rows cannot be met, sizes
    /// disagree or numbers are not finite.
    int stage2(mlMatrix const & A, mlVector const & g, mlVector & x);

    /// Both stages, from an x that is zero on entry, with the removal of rows in between when there is need and drop is
    /// not 0. 1, or 0 with x untouched when there is no minimum to be had.
    int solve(mlMatrix const & A, mlVector const & g, mlVector & x);

    /// The numbers of the rows that are removed, or listed by the last stage 1 to be removed: those of K, ascending.
    intcoDynArr const & overdetermined_constraints() const { return overdetermined_; }

    /// Adds `indices` to a list of constraints given up, ascending without repeats, which stays so. The minimiser that
    /// they come from had no rows for the constraints already on the list: row i was the i-th of those not on it. Its
    /// number among all constraints is what goes on the list.
    static void append_constraint_indices(intcoDynArr & list, intcoDynArr const & indices);

private:
    bool fits(mlVector const & x) const;
    std::vector<int> rows_to_keep(mlVector const & x) const;

    int valid_;
    datumfit::internal::half_spaces rows_;
    int drop_;
    std::vector<int> kept_;  // for each row, 1 when it was named to keep()
    bool keeps_named_ = false;
    std::vector<int> removed_;  // ascending
    intcoDynArr overdetermined_;
};
