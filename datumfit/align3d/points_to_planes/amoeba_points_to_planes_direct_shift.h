#pragma once

#include <datumfit/align3d/plane_and_point.h>
#include <datumfit/align3d/points_to_planes/packed_records.h>
#include <datumfit/foundation/geometry/xform3.h>
#include <datumfit/foundation/maths/function_n1.h>
#include <datumfit/foundation/maths/matrix.h>
#include <datumfit/foundation/maths/vector.h>

#include <utility>
#include <vector>

/// The sum of squares that a global search of sqPointsToPlanes minimises over rotations: for each one the best shift
/// has a closed form.
///
/// Records at the head of which the normal is not as long as their weight are positioning ones: their normals carry a
/// further factor, and their deviations from the planes count alone. Of each other record the square of the deviation
/// counts, of which the squared distance of its points takes the place by the attraction. Of two partners, records
/// that follow each other, the combined deviation factor1 deviation1 + factor2 deviation2 counts, and the attraction
/// works across their normals.
///
/// In min-max mode the shift is among the unknowns, and deviations, with the weight in them, that leave their bands
/// add a million times the square of the excess.
///
/// The unknowns, rotations in tenths of a radian:
///
/// | Lock              | Least squares                      | Min-max                          |
/// |-------------------|------------------------------------|----------------------------------|
/// | none              | a rotation vector                  | a rotation vector, then a shift  |
/// | locked direction  | the angle about it                 | the angle, then a shift          |
/// | n shift directions| n numbers that are not looked at   | the shifts along the directions  |
///
/// A working object for one thread: the transform of the last evaluation stays in it. An evaluation allocates nothing.
class sqAmoebaPointsToPlanesDirectShift : public mlFunctionN1 {
public:
    using balance_list = std::vector<std::pair<int, double>>;

    /// Copies the records.
    ///
    /// @param balance           for each record, up to the last pair, its partner and its factor, or -1 and 0
    /// @param axis              empty, or the measured and the nominal locked direction; one that has no direction
    ///                          leaves no turn
    /// @param shift_directions  empty, or the directions of the only shifts allowed, without turns
    /// @param attraction        0 to 1
    /// @param min_max           not 0 for the min-max mode
    sqAmoebaPointsToPlanesDirectShift(sqPlaneAndPointcoDynArr const & pairs, balance_list const & balance,
                                      giVector3coDynArr const & axis, giVector3coDynArr const & shift_directions,
                                      double attraction, int min_max);

    /// The number of unknowns.
    static int get_dimension(int has_axis, giVector3coDynArr const & shift_directions, int min_max);

    /// The sum of squares at x, whose transform is then that of get_matrix() and get_shift().
    double function(mlSlice const & x) const override;

    /// The transform of the last evaluation: first the matrix, a rotation about the origin, with a locked direction
    /// after the turn to its nominal one, then the shift.
    giXform3 const & get_matrix() const;
    giVector3 const & get_shift() const { return shift_; }

    int rotations_locked() const { return shift_directions_.size() > 0; }

    /// Not 0: the locked direction is taken reversed.
    void flip_locked_axis(int flipped) { flipped_ = flipped; }

    /// Whether the last evaluation leaves each located positioning point on the side of the other planes on which its
    /// nominal place lies. A solution that does not is a wrong one, however small its deviations.
    ///
    /// @param[out] mean_square  of the distances of located positioning points from their places; 0 without any
    int check_transformation(double & mean_square) const;

    /// The largest deviations at x, without weights: that of the positioning records or, in min-max mode, the largest
    /// excess over a band if that is more; and that of the others, points counting by the attraction.
    void get_max_deviations(mlVector const & x, double & positioning_deviation, double & fit_deviation) const;

    /// Writes the unknowns of the min-max mode that stand for those of the least-squares mode at x.
    void convert_to_min_max_parameter(mlSlice const & x, mlVector & result) const;

private:
    // A record, or the first of two partners.
    struct unit {
        int first;
        bool paired;
        double factor1, factor2;
        int next() const { return first + 1 + paired; }
    };

    unit unit_at(int i) const;
    template <class Visit>
    void for_units(int first, int last, Visit const & visit) const;
    giVector3 combined_normal(unit const & u) const;

    void prepare_passes();
    mlMatrix shift_equations() const;
    void set_rotation(mlSlice const & x) const;
    void set_shift(mlSlice const & x) const;
    giVector3 pull_of_partners(unit const & u) const;
    giVector3 difference(int i) const;  // of the moved point from the plane point, in the last evaluation
    double deviation(unit const & u) const;
    double square_of_partners(unit const & u) const;
    double band_penalty(unit const & u) const;
    double excess(unit const & u, double r) const;

    sqPlaneAndPointcoDynArr records_;  // points carried by lock_matrix_
    balance_list balance_;
    giVector3coDynArr shift_directions_;
    int has_axis_;
    giUnitVec3 axis_;
    giXform3 lock_matrix_, flip_matrix_;
    double attraction_;
    int min_max_;
    int positioning_count_ = 0;
    datumfit::internal::packed_records positioning_, bestfit_;  // those without partner, for the passes
    std::vector<unit> partners_, banded_;                       // what the passes leave out
    mlMatrix shift_solver_;                                     // gives the shift from the pulls of a rotation
    int flipped_ = 0;
    mutable giXform3 matrix_, full_matrix_;
    mutable giVector3 shift_;
};
