#pragma once

/// A cone whose half angle is within this of 0 or of pi / 2, in radians, is non-physical: nearly a cylinder or nearly a
/// plane. Solvers rank such a solution behind proper cones. Each sets its tolerance, for all later fits of the process,
/// and gives the one before; 0.05 at first. Not to be called while a fit runs.
double sqSetLeastSquareConeNonPhysicalTolerance(double radians);
double sqSetLeastSquareProbedConeNonPhysicalTolerance(double radians);

namespace datumfit {
namespace internal {

double cone_non_physical_tolerance();
double probed_cone_non_physical_tolerance();

}  // namespace internal
}  // namespace datumfit
