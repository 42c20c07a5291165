#pragma once

#include <datumfit/align3d/plane_and_point.h>
#include <datumfit/align3d/points_to_planes/amoeba_points_to_planes_direct_shift.h>
#include <datumfit/align3d/rps_data.h>
#include <datumfit/foundation/geometry/workplane3.h>
#include <datumfit/foundation/geometry/xform3.h>
#include <datumfit/foundation/maths/matrix.h>
#include <datumfit/foundation/maths/vector.h>

#include <utility>
#include <vector>

/// Brings measured points onto nominal planes by a rigid transform, under locks and deviation bands.
///
/// Records of three kinds, each a measured point p, a point q of the nominal plane and its normal n times a weight:
/// - best-fit records, whose deviations (p - q) . n are minimised in the least-squares sense and may have a band;
/// - positioning records, the points of a reference point system, each of which must lie on its plane;
/// - balance records, pairs of best-fit records of which only factor1 deviation1 + factor2 deviation2 counts.
///
/// What the transform may do is restricted by lock_direction(), which leaves the turn about a direction and shifts, or
/// by lock_rotations(), which leaves shifts only; use one of them. In a linear step positioning records act as a lock
/// too, see single_linear_step().
///
/// A linear step minimises, over small motions p -> p + t + r x p, the sum over the best-fit records of
/// (deviation)^2 + 0.01 |p - q|^2 (Chen & Medioni 1992, with a share of the distance of the points, without weight,
/// that settles what the normals leave open). Balance records count as plain ones there.
///
/// An engine belongs to one thread at a time. The same records give the same bits on every call and machine.
class sqPointsToPlanes {
public:
    static constexpr double POSITIONING_TOLERANCE = 1e-5;  ///< a greater deviation of a positioning record is not met
    static constexpr double POSITIONING_WEIGHT = 1000.0;   ///< of the normals of positioning records in a global search
    static constexpr double TINY_DOUBLE = 1e-7;            ///< a smaller turn, or difference of directions, is none

    /// What positioning records say of the transform.
    enum POSITIONING_STATE {
        POSITIONING_UNDETERMINED = 0,   ///< they leave it free, or there are none
        POSITIONING_DETERMINED = 1,     ///< they have just one solution
        POSITIONING_OVERDETERMINED = 2  ///< no transform meets them all within POSITIONING_TOLERANCE
    };

    /// What becomes of the plane across an axis of a workplane.
    enum PLANE_STATE {
        PLANE_LOCKED = 0,   ///< a positioning record of weight 1
        PLANE_WEAK = 1,     ///< a positioning record of weight 0.001: in a global search as a best-fit one of weight 1
        PLANE_IGNORED = 2,  ///< none
        PLANE_RESERVE = 3   ///< a record of weight 1, to be used when the positioning ones leave the transform free
    };

    /// Adds a best-fit record; none when the weight is exactly 0. A negative weight turns the normal round.
    ///
    /// @param normal        of unit length
    /// @param lower, upper  the ends of the band of (p - q) . normal, not weighted; -DBL_MAX and DBL_MAX for no bound
    void add_bestfit(giPoint3 const & point, giPoint3 const & plane_point, giVector3 const & normal, double lower,
                     double upper, double weight);

    /// Adds a pair of best-fit records without bands, of which factor1 deviation1 + factor2 deviation2 counts; none
    /// when the weight is exactly 0.
    void add_balance(giPoint3 const & point1, giPoint3 const & plane_point1, giVector3 const & normal1, double factor1,
                     giPoint3 const & point2, giPoint3 const & plane_point2, giVector3 const & normal2, double factor2,
                     double weight);

    /// Adds a positioning record. `located` is not 0 when plane_point is the nominal place of the point itself.
    void add_positioning(giPoint3 const & point, giPoint3 const & plane_point, giVector3 const & normal, int located);

    /// The same for the planes through plane_point across the axes u, v and w of the workplane, as their states say.
    void add_positioning(giPoint3 const & point, giWorkplane3 const & workplane, giPoint3 const & plane_point,
                         PLANE_STATE state1, PLANE_STATE state2, PLANE_STATE state3, int located);

    /// Makes room for n best-fit records.
    void reserve_bestfit(int n);

    /// Drops best-fit and balance records and the list of bands given up. That there were bands is not forgotten.
    void clear_bestfit_data();

    /// Lets the measured direction `from` fall on the nominal one, `to`. Of several calls the first directions count,
    /// and the last flag. With flip_allowed not 0 a global search may also turn the direction round.
    void lock_direction(giVector3 const & from, giVector3 const & to, int flip_allowed);

    /// Leaves only shifts along these directions, which are taken as orthogonal; d2 and d3 count unless they are
    /// invalid. A direction without length leaves no shift.
    void lock_rotations(giVector3 const & d1, giVector3 const & d2, giVector3 const & d3);

    /// Not 0, as at first: a global search tries on after a first acceptable result, and starts at random at once.
    void multiple_guesses(int use) { use_multiple_guesses_ = use; }

    /// Lets the next global search make 240 starts in the place of 60.
    void increase_num_guesses() { num_guesses_ = 240; }

    /// Up to which deviation a global search may hold two solutions that are far apart for equally good; 0.5 at first.
    void set_fit_dev_limit_for_ambiguity(double limit) { ambiguity_limit_ = limit; }

    /// The share, 0 to 1 and 0 at first, with which distances of points count beside deviations in a global search.
    void set_fitting_points_attraction(double share) { attraction_ = share; }

    /// Lets a linear step fail when bands contradict each other, where weights are equal, instead of giving up some.
    void disable_overdetermined_resolution() { no_overdetermined_resolution_ = 1; }

    /// The positioning records as they stand, in the order in which they came: what repairs have left of them.
    sqPlaneAndPointcoDynArr const & positioning() const { return positioning_; }

    /// 1 when there are positioning records or a locked direction, else 0.
    int have_constraints() const;

    /// 1 when there are records, beside reserve ones, or a locked direction, else 0.
    int have_enough_data() const;

    /// The numbers of the ends of bands given up by linear steps, ascending. Finite ends are numbered from 0 through
    /// the best-fit records in their order, the lower end of a record before the upper one.
    intcoDynArr const & overdetermined_constraints() const { return overdetermined_; }

    /// The sum of the squared deviations of the best-fit records under a transform, not weighted; of a balance pair the
    /// combined deviation is taken, once.
    double best_fit_deviation_with_transform(giXform3 const & x) const;

    /// The root of the mean squared deviation of the positioning records under a transform of their source data, not
    /// weighted; 0 without any.
    double standard_deviation_of_nominals(giXform3 const & x);

    /// Places the points of the positioning and reserve records, and the measured locked directions, at x times their
    /// source data: those as they were before the first such call, however many there are. Records added after it make
    /// the counts differ, and all present data are then taken as further source data.
    void transform_rps_data(giXform3 const & x);

    /// Searches all rotations for the transform of the best-fit, positioning and balance records with the least sum of
    /// squares; see sqAmoebaPointsToPlanesDirectShift. Positioning records count a million times (weak ones as best-fit
    /// ones do), so that they are met where they can be, and best-fit records decide on what is left. Where there are
    /// bands, a second search minimises with them as penalties, from the result of the first or, without
    /// multiple_guesses(), from the identity.
    ///
    /// The search starts at the same random rotations on every call, and ends when the result is within the tolerance,
    /// leaves the located positioning points on the right sides of each other's planes, and turns no locked direction
    /// round.
    ///
    /// @param[out] positioning_deviation  the largest deviation of a positioning record, or excess over a band if that
    ///                                    is more; may be null, and is left as it is when there are no records
    /// @return the largest deviation of the best-fit records, without bands also of the positioning ones; 0, and the
    ///         identity, when there are no records
    double fit(giXform3 & transform, double tolerance, double * positioning_deviation) const;

    /// Makes the records of a global search: the positioning ones, with POSITIONING_WEIGHT in their normals, and unless
    /// positioning_only the best-fit ones with their balance, of which entries are appended to pair_balance.
    void data_for_downhill(sqPlaneAndPointcoDynArr & pairs, std::vector<std::pair<int, double>> & pair_balance,
                           int positioning_only, int forget_located) const;

    /// Minimises the function by a downhill simplex from random rotations. Of equally good results it prefers one that
    /// keeps the located positioning points on their sides, and of those one that moves them least.
    ///
    /// Results are equally good when their deviations differ by 1e-5 at most, or both are small, or both are below
    /// set_fit_dev_limit_for_ambiguity() while the points are left at very different distances.
    ///
    /// @param[out] positioning_deviation, solution  may be null; the solution holds the unknowns found
    /// @return the largest deviation of all
    double fit_pairs_downhill(sqAmoebaPointsToPlanesDirectShift & function, giXform3 & transform, double tolerance,
                              double * positioning_deviation, mlVector * solution) const;

    /// Tells whether the positioning records and the locks pin the part down: first by the number and the places of
    /// different points, which must be three that are not on a line (with a locked direction two, not along it), then
    /// by whether it falls back to one place from five random ones. With lock_rotations() the latter says nothing, as
    /// no shift undoes a turn: such points then determine the part whatever their planes.
    ///
    /// @param keep_located    0: no point counts as located
    /// @param[out] transform  one that meets the records; as it was when they contradict each other or there are none
    POSITIONING_STATE test_positioning(int keep_located, giXform3 & transform) const;

    /// Drops positioning records, the last ones first, until the others can be met, and takes back those that go with
    /// them. What stays out is in no list any more. Multiple guesses are on afterwards, and the list of bands given up
    /// is empty.
    ///
    /// @param[out] transform  one that meets the positioning records that are left; the identity when there are none
    void fix_overdetermined_positioning(giXform3 & transform);

    /// Moves reserve records, in their order, to the positioning ones unless they contradict these, until these
    /// determine the transform.
    ///
    /// @param[out] transform  as test_positioning() writes it
    /// @return 1 when they do, else 0
    int fix_undetermined_positioning(giXform3 & transform);

    /// Takes the last positioning record, with its source point, out of the engine; nothing happens without any.
    void pop_back_rps(sqRPSData & record);

    /// Puts it back.
    void undo_pop_back_rps(sqRPSData const & record);

    /// The rotation about the origin that turns `from` onto `to`; of opposite directions, half a turn. The identity
    /// when either has no direction.
    static void find_lock_matrix(giVector3 from, giVector3 to, giXform3 & matrix);

    /// Half a turn about the origin that reverses the direction; the identity when it has none.
    static void find_flip_matrix(giVector3 direction, giXform3 & matrix);

    /// Takes one step towards the least sum of squares: a transform of the best-fit points as they stand. With
    /// 1. lock_rotations(): a shift;
    /// 2. lock_direction(): the turn of the locked direction to its nominal one, then a turn about it and a shift. Each
    ///    positioning record takes one freedom of the shift: by one the first record's point stays in the plane across
    ///    the axis through its nominal point, by two on the line along the axis, by three or more it falls on that
    ///    point;
    /// 3. positioning records: a turn about the first one's point, which falls on its nominal point;
    /// 4. neither: a turn and a shift.
    /// The first of these cases counts. Of positioning records only the first one's points and their number are read.
    ///
    /// Bands hold for the linearised motion. When they cannot be met together, ends of bands are given up and join
    /// overdetermined_constraints(); heavier records keep theirs. Later steps leave these ends out.
    ///
    /// @return 1; or 0, with `step` as it was, when bands are not finite in some way, or contradict each other after
    ///         disable_overdetermined_resolution()
    ///
    /// Directions that the records leave open get no movement. In case 2, unless the locked directions agree to 1e-7,
    /// the turn is also carried out on the best-fit, positioning and reserve points and the measured direction, for
    /// good, also when 0 is returned.
    int single_linear_step(giXform3 & step);

    /// The cases of single_linear_step(). Those that a lock or a positioning record governs return 0 without one, and
    /// also when the first locked direction has no length.
    int single_linear_step_free(giXform3 & step);
    int single_linear_step_locked_axis(giXform3 & step);
    int single_linear_step_locked_point(giXform3 & step);
    int single_linear_step_translates(giXform3 & step);

    /// The normal equations A x = b of the steps: each function adds to A and b, of the right size and zero at first,
    /// those of its sum of squares over the best-fit records. With n the normal, c = p x n, e = q - p and s the scale
    /// of the rotation unknowns (the last one of a step), the row of a record against planes, of deviation e . n, is
    ///   free        (n, s c)
    ///   rotation    u x n, with u = p - pivot
    ///   translates  n . direction, for each direction of lock_rotations()
    ///   fixed axis  n . ort, for each of the m - 1 free directions, then s (u x n) . axis
    /// Where there is a pivot, q is taken relative to the nominal pivot as p is to the pivot. Against points a record
    /// gives the three rows of the motion of its point, with the deviations e.
    void linear_step_free_points_to_planes(mlMatrix & A, mlVector & b) const;
    void linear_step_free_points_to_points(mlMatrix & A, mlVector & b) const;
    void linear_step_rotation_points_to_planes(giPoint3 const & pivot, giPoint3 const & nominal_pivot, mlMatrix & A,
                                               mlVector & b) const;
    void linear_step_rotation_points_to_points(giPoint3 const & pivot, giPoint3 const & nominal_pivot, mlMatrix & A,
                                               mlVector & b) const;
    void linear_step_translates_points_to_planes(mlMatrix & A, mlVector & b) const;
    void linear_step_translates_points_to_points(mlMatrix & A, mlVector & b) const;
    void linear_step_fixed_axis_points_to_planes(int m, giPoint3 const & pivot, giPoint3 const & nominal_pivot,
                                                 giVector3 const & axis, mlMatrix & A, mlVector & b) const;
    void linear_step_fixed_axis_points_to_points(int m, giPoint3 const & pivot, giPoint3 const & nominal_pivot,
                                                 giVector3 const & axis, mlMatrix & A, mlVector & b) const;

    /// Writes the m - 1 directions in which a step of m unknowns may shift beside its turn about the unit vector
    /// `axis`: for m = 4 the coordinate axes, for 3 two across the axis, for 2 the axis, for 1 none.
    static void linear_step_fixed_axis_orts(int m, giVector3 const & axis, giVector3 * const orts);

    /// Makes the rows of the bands for a step of n unknowns, those given up left out: constraint_matrix() times x is at
    /// least constraint_values() when the deviations stay in their bands.
    void constraint_coefs(int n);
    mlMatrix const & constraint_matrix() const { return constraint_matrix_; }
    mlVector const & constraint_values() const { return constraint_values_; }
    mlVector const & constraint_priorities() const { return constraint_priorities_; }  ///< the weight of each row

    /// Solves A x = b for n unknowns under the bands.
    ///
    /// @param[out] start    a point that meets the bands that are kept; 0 without bands
    /// @param[out] minimum  without bands the pseudo-inverse solution, singular values up to 1e-7 counting as 0; with
    ///                      bands the minimum of x A x / 2 - b x under those that are kept. When numbers overflow, 0
    /// @return 1, or 0 as single_linear_step() says
    int search_constrained_minimum(mlMatrix const & A, mlVector const & b, int n, mlVector & start, mlVector & minimum);

protected:
    // Takes the present points and directions as source data, behind those there are.
    void append_source_data();

    // The first measured and nominal locked direction, or nothing.
    giVector3coDynArr locked_axis() const;

    // Makes the scale of the rotation unknowns the reciprocal of the root mean square of the lever arms.
    void set_rotation_scale(double square_sum_of_arms);

    // Turns the records with the first locked direction onto its nominal one, unless it is there, and gives the turn.
    giXform3 align_locked_direction();

    // The two ways of search_constrained_minimum() with bands: where all weights are equal, and where they are not.
    int minimise_with_equal_bands(mlMatrix const & A, mlVector const & gradient, mlVector & start, mlVector & minimum);
    int minimise_by_priority(mlMatrix const & A, mlVector const & gradient, mlVector & start, mlVector & minimum);

    sqPlaneAndPointcoDynArr positioning_;
    sqPlaneAndPointcoDynArr reserve_;
    sqPlaneAndPointcoDynArr bestfit_;              // with the balance records
    std::vector<std::pair<int, double>> balance_;  // for each best-fit record, up to the last pair, the number of its
                                                   // partner and its own factor, or -1 and 0
    giVector3coDynArr locked_from_;                // the first counts; as many as of locked_to_
    giVector3coDynArr locked_to_;
    giVector3coDynArr shift_directions_;  // of unit length, or zero
    int use_multiple_guesses_ = 1;
    double attraction_ = 0.0;
    giPoint3coDynArr source_points_;  // of the positioning records before transform_rps_data()
    giPoint3coDynArr source_reserve_points_;
    giVector3coDynArr source_directions_;  // of locked_from_
    int flip_allowed_ = 0;
    int no_overdetermined_resolution_ = 0;
    double rotation_scale_ = 1.0;  // radians in a unit of the rotation unknowns
    mlMatrix constraint_matrix_;
    mlVector constraint_values_;
    mlVector constraint_priorities_;
    int has_bands_ = 0;
    intcoDynArr overdetermined_;  // ascending
    double ambiguity_limit_ = 0.5;
    mutable int num_guesses_ = 60;
};
