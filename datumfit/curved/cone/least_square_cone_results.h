#pragma once

#include <datumfit/foundation/geometry/angle.h>
#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/unit_vec3.h>
#include <datumfit/foundation/maths/vector.h>
#include <datumfit/foundation/utilities/math.h>
#include <datumfit/foundation/utilities/observer_ptr.h>

/// The best solutions of a search for a cone: proper or non-physical (see cone_tolerance.h), within the limits of the
/// search or whatever they are.
///
/// A figure is a mean square distance, the largest double for a solution that was not found.
class sqLeastSquareConeResults {
public:
    /// The limits are those of sqLeastSquareCone::are_normals_in_limit(); points and normals are referred to. `range`
    /// is the size of the part, the tolerance in radians.
    sqLeastSquareConeResults(utObserverPtr<giPoint3coDynArr const> points,
                             utObserverPtr<giUnitVec3coDynArr const> normals, giUnitVec3 const & preferred_dir,
                             giAngle const & dir_limit, double range, double non_physical_tolerance);

    /// Keeps a solution, parameters as sqLeastSquareCone has them, where it is better than those of its kind.
    void add(double square, mlVector & parameters);

    /// The figure of the best proper cone within the limits.
    double constrained_deviation() const { return proper_limited_.square; }

    /// The best solution of all. One within the limits stands unless one beyond them has a root mean square lower by
    /// more than a 1000th of the range. A non-physical one displaces a proper one when its figure is a hundred times
    /// lower; or lower at all, where the proper cone is within twice the tolerance of being non-physical too. The
    /// parameters of a solution that was not found are 0.
    void get_best(double & square, mlVector & parameters) const;

private:
    struct solution {
        double square = utMath::max_double();
        mlVector parameters = mlVector(mlVectorZero, 8);

        void take(double other_square, mlVector const & other);
    };

    solution const & better(solution const & limited, solution const & any) const;

    solution proper_limited_, flat_limited_, proper_any_, flat_any_;
    utObserverPtr<giPoint3coDynArr const> points_;
    utObserverPtr<giUnitVec3coDynArr const> normals_;
    giUnitVec3 preferred_dir_;
    giAngle dir_limit_;
    double range_;
    double non_physical_tolerance_;
};
