#pragma once

#include <datumfit/foundation/maths/levenberg_marquardt.h>
#include <datumfit/primitives/least_square_probed_circle2.h>

namespace datumfit {
namespace internal {

/// Fits a circle to the points that a problem and its solver are bound to, from their centroid and the mean distance
/// from it. Writes the parameters and gives the mean square distance. Nothing is allocated when the solver has run
/// before and `circle` has three entries.
double fit_circle(sqLeastSquareCircle2 & problem, mlLevenbergMarquardt & solver, giPoint2coDynArr const & points,
                  mlVector & circle);

/// The same of probe centres, as the best from ten starts about there, drawn within the greatest of the radii. Gives
/// the root mean square distance, the largest double when no start led to a number; `circle` is then as it was.
double fit_probed_circle(sqLeastSquareProbedCircle2 & problem, mlLevenbergMarquardt & solver,
                         giPoint2coDynArr const & points, doublecoDynArr const & radii, mlVector & scratch,
                         mlVector & circle);

}  // namespace internal
}  // namespace datumfit
