#pragma once

#include <datumfit/foundation/geometry/angle.h>
#include <datumfit/foundation/geometry/unit_vec3.h>

/// The narrowest circular cone with its apex at the origin that contains a set of directions: what the smallest
/// enclosing circle is on the sphere.
///
/// One to three directions, the support, lie on the rim of the cone and define it. Directions are visited in a random
/// order of a fixed seed; one outside makes the narrowest cone about itself and the support, and when that one is
/// wider the visit starts anew (Welzl 1991, with restarts in the place of recursion). Only cones of less than a right
/// angle are found.
///
/// Half angles are from 0 to 90 degrees. A full turn stands for no cone yet, and counts as wider than all: its sine is
/// just below 0, which that of a half angle never is.
class sqContainmentCone {
public:
    /// Copies the directions, which must be valid.
    explicit sqContainmentCone(giUnitVec3coDynArr const & directions) : directions_(directions) {}

    /// Finds the cone.
    ///
    /// @param[out] axis   of the cone; untouched without directions
    /// @param[out] angle  its half angle; 0 for one direction, a full turn without any
    /// @return 1; or 0, with the last cone accepted, when there is none: for opposite directions, for half angles of
    ///         a right angle less 1e-7 and above, and where rounding leaves no cone about the support that holds it
    ///         to 1e-7
    ///
    /// Directions within a chord of 0.00316 of a support direction are passed over: the cone may miss them by as much.
    /// The directions are left in another order.
    int solve(giUnitVec3 & axis, giAngle & angle);

    /// The same by trying all triples, for tests. It takes time of the fourth power of the number of directions.
    int solve_slow_and_simple_for_utest(giUnitVec3 & axis, giAngle & angle);

protected:
    /// The cone of one direction.
    static void exact_cone1(giUnitVec3 const & a, giUnitVec3 & axis, giAngle & angle);

    /// The narrowest cone with two directions on its rim. When they are opposite the status becomes 0, and the results
    /// stay.
    void exact_cone2(giUnitVec3 const & a, giUnitVec3 const & b, giUnitVec3 & axis, giAngle & angle);

    /// The cone with three directions on its rim. Where two of them coincide it is no cone; where all three nearly do,
    /// the status becomes 0 as well, and also for a cone that is no narrower than a right angle.
    void exact_cone3(giUnitVec3 const & a, giUnitVec3 const & b, giUnitVec3 const & c, giUnitVec3 & axis,
                     giAngle & angle);

    /// 1 when a direction lies in a cone or on its rim, else 0; `excess` is how far outside it is, in radians.
    static int inside_cone(giUnitVec3 const & direction, giUnitVec3 const & axis, giAngle const & angle,
                           double & excess);

    /// 1 when the direction of this number coincides with one of the support, else 0.
    int in_support(int index);

    /// Makes the narrowest cone about the support and the direction of this number, which joins the support in the
    /// place of those no longer needed. The status becomes 0 when there is none.
    void update_support(int index, giUnitVec3 & axis, giAngle & angle);
    /// The same for a support of one, of two and of three directions.
    void update_support1(int index, giUnitVec3 & axis, giAngle & angle);
    void update_support2(int index, giUnitVec3 & axis, giAngle & angle);
    void update_support3(int index, giUnitVec3 & axis, giAngle & angle);

private:
    struct cone;

    void shuffle();
    giUnitVec3 const & supporting(int s) const { return directions_[support_[s]]; }
    cone cone_about(giUnitVec3 a, giUnitVec3 b, giUnitVec3 c);
    double greatest_excess(cone const & candidate, int i, int j, int k) const;

    giUnitVec3coDynArr directions_;
    int support_count_ = 0;
    int support_[3] = {0, 0, 0};  // indices into the directions
    int status_ = 1;              // 0 once a search has failed
};
