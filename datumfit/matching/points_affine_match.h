#pragma once

#include <datumfit/foundation/containers/page_arr.h>
#include <datumfit/foundation/geometry/xform3.h>
#include <datumfit/matching/affine_match_xform_type.h>

/// Carries the second point of each pair onto the first one, by the transform of a family with the least sum of squared
/// distances. All pairs count alike.
///
/// A linear least-squares problem, solved by its normal equations with one step of refinement. Whether the pairs
/// determine it is judged by these equations, so it depends on the unit and the origin: with the shift in a family, the
/// ratio of the singular values falls with the square of the size of a part, and with the fourth power of its distance
/// from the origin. Take points as seen from their middle, in a unit in which they reach from 0.1 to 1000, or lower
/// eps.
///
/// The pairs are kept, and xform() changes nothing: it may be asked for several families, also by several threads at
/// once while no pair is added and nothing is set.
class sqPointsAffineMatch {
public:
    /// Adds a pair, which is taken as it is: points are to be valid. Nothing is added without memory for it.
    void add_pair(giPoint3 const & first, giPoint3 const & second);

    /// sqAffineMatchFull at first.
    void set_transform_type(sqAffineMatchXformType type) { transform_type_ = type; }

    /// The least ratio of the singular values of the normal equations, 1e-7 at first: at or below it they count as
    /// singular.
    void set_eps(double eps) { eps_ = eps; }
    double eps() const { return eps_; }

    /// Gives the transform from second to first points.
    ///
    /// @return 1; or 0, with the transform as it was, when the pairs do not determine it (too few, in a plane, on a
    ///         line, ...) or the family is unknown
    int xform(giXform3 & transform) const;

private:
    giPoint3coPageArr second_points_, first_points_;
    sqAffineMatchXformType transform_type_ = sqAffineMatchFull;
    double eps_ = 1e-7;
};
