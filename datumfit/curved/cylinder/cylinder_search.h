#pragma once

#include <datumfit/curved/cylinder/least_square_cylinder.h>
#include <datumfit/curved/cylinder/probe_set.h>
#include <datumfit/curved/cylinder/random_cylinders.h>
#include <datumfit/foundation/maths/levenberg_marquardt.h>
#include <datumfit/foundation/utilities/math.h>

namespace datumfit {
namespace internal {

/// The parameters of a cylinder model.
mlVector cylinder_parameters(giPoint3 const & point, giVector3 const & dir, double radius);

/// A solution as parameters and mean square; the largest double when there is none.
struct cylinder_solution {
    mlVector parameters;
    double square = utMath::max_double();

    void take(mlVector const & p, double s) {
        parameters = p;
        square = s;
    }
};

/// A search for one cylinder from many starts.
class cylinder_search {
public:
    /// A problem on the points of the set, and the limits that its solution should keep; all are referred to.
    cylinder_search(sqLeastSquareCylinder & problem, probe_set const & set, giUnitVec3 const & preferred_dir,
                    giAngle const & dir_limit, giUnitVec3coDynArr const & normals);

    /// The best solution within the limits, or of all where that is much better.
    cylinder_solution const & run();

private:
    void try_direct_starts();
    void fit_from_axis(giUnitVec3 const & axis);
    void try_random_axes();
    template <class Admitted>
    void try_batches(random_cylinders & cylinders, Admitted const & admitted);
    void solve(mlVector const & start, giAngle const & limit);

    probe_set set_;
    giUnitVec3 const & preferred_dir_;
    giAngle const & dir_limit_;
    giUnitVec3coDynArr const & normals_;
    mlLevenbergMarquardt solver_;
    double range_;
    cylinder_solution limited_, any_;
    mlVector start_, found_;
};

}  // namespace internal
}  // namespace datumfit
