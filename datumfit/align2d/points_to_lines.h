#pragma once

#include <datumfit/align2d/line_and_point.h>
#include <datumfit/align2d/line_equations.h>
#include <datumfit/align2d/line_locks.h>
#include <datumfit/foundation/geometry/xform2.h>
#include <datumfit/foundation/maths/matrix.h>
#include <datumfit/foundation/maths/vector.h>

/// Brings measured points of the plane onto nominal lines by a rigid transform, under locks and deviation bands.
///
/// Each step linearises the rotation and minimises the weighted sum of (deviation along the line's normal)², plus 0.01
/// of that of (distance from the line's point)² which keeps it definite where the normals leave a direction open. The
/// motion found is applied as an exact rotation and shift.
///
/// Fill it with add_bestfit(), set locks, then fit(). Data stay as they are, so that the same fit can be run again;
/// only the list of band ends given up grows. An object belongs to one thread at a time. All lengths are in the unit
/// of the coordinates. Nothing is refused: what has no information to be fitted by does not move.
class sqPointsToLines {
public:
    sqPointsToLines();
    ~sqPointsToLines();

    /// Makes room for n records; without memory for them nothing happens.
    void reserve_bestfit(int n);

    /// Adds a record with a band for its signed deviation, and a weight for its square.
    ///
    /// -DBL_MAX and DBL_MAX stand for an open end; an infinite end, or one that is no number, is open too. A record
    /// that is not set or not finite, or whose weight is not finite, keeps its number, but is emptied: its deviation
    /// is 0, without band and influence. Without memory nothing is added.
    void add_bestfit(sqLineAndPoint const & record, double lower, double upper, double weight);

    /// The measured direction `from` is to be turned onto the nominal one `to`; their lengths don't matter. It holds
    /// the rotation, and leaves the shift free, or with an origin locked as well, the slide along `to`. A lock with a
    /// null direction, or one not set, is none.
    void lock_axis(giVector2 const & from, giVector2 const & to);

    /// The measured point is to be carried onto the nominal one, which leaves the turn about it. With a point not set
    /// or not finite there is no lock.
    void lock_origin(giPoint2 const & measured, giPoint2 const & nominal);

    /// One linearised step, to be applied to the measured points as they are; the records stay.
    ///
    /// With a lock, the step brings its measured side onto the nominal one, and bands are not looked at. Without, the
    /// linearised deviations stay in their bands. Bands that can't be met together are given up, as few as possible
    /// (mlConstrainedQuadraticMinimiser), and for good.
    void single_linear_step(giXform2 & step);

    /// Takes steps from the measured points as given, until one moves no point by the tolerance; at most 10, and with
    /// a tolerance of 0 all of them.
    ///
    /// After the first step the measured side of a lock is taken to lie on the nominal one, where it has been brought,
    /// so that the fit converges to the locked pose. Records and locks come out as they went in.
    ///
    /// @param[out] transform  from measured to nominal coordinates
    /// @return the largest size of a deviation after the last step, not weighted; 0 without records
    double fit(giXform2 & transform, double tolerance);

    /// The sum of the squared deviations under a transform, not weighted.
    double best_fit_deviation_with_transform(giXform2 const & transform) const;

    /// The signed deviation of each record under a transform, in their order.
    void signed_deviations(giXform2 const & transform, doublecoDynArr & deviations) const;

    /// The numbers of the ends of bands that were given up, ascending. They count through the records in their order:
    /// for each its lower end if it has one, then its upper end.
    intcoDynArr const & overdetermined_constraints() const { return overdetermined_; }

protected:
    /// The forms of the step: without lock, with an origin alone, with an axis.
    void single_linear_step_free(giXform2 & step);
    void single_linear_step_locked_point(giXform2 & step);
    void single_linear_shift_direction_axis(giXform2 & step);

    /// Builders of normal equations. Each adds to a matrix and a vector that have the size of its unknowns: shift and
    /// turn about the origin (3); turn (1); shift along a unit direction, and for n = 2 along its right-hand normal.
    void linear_step_free_points_to_lines(mlMatrix & A, mlVector & b) const;
    void linear_step_free_points_to_points(mlMatrix & A, mlVector & b) const;
    void linear_step_locked_origin_points_to_lines(mlMatrix & A, mlVector & b) const;
    void linear_step_locked_origin_points_to_points(mlMatrix & A, mlVector & b) const;
    void linear_step_fixed_shift_direction_points_to_lines(int n, giVector2 const & direction, mlMatrix & A,
                                                           mlVector & b) const;
    void linear_step_fixed_shift_direction_points_to_points(int n, giVector2 const & direction, mlMatrix & A,
                                                            mlVector & b) const;

    /// Makes the rows of the bands, of as many ends as there are records each, for the unknowns of the free form. Ends
    /// given up are left out.
    void constraint_coefs_free(doublecoDynArr const & lower, doublecoDynArr const & upper);

private:
    struct carried {
        double movement, deviation;
    };
    carried carry(giXform2 const & step);

    void view_near_points();
    void free_equations(mlMatrix & A, mlVector & b) const;
    mlVector solution_under_bands(mlMatrix const & A, mlVector const & b);

    // One entry a record.
    sqLineAndPointcoDynArr records_;
    doublecoDynArr weights_, lower_, upper_;

    int has_bands_ = 0;
    datumfit::internal::line_locks locks_;
    datumfit::internal::line_view view_;  // of the step at hand
    mlMatrix constraint_matrix_;
    mlVector constraint_values_;
    intcoDynArr overdetermined_;
};
