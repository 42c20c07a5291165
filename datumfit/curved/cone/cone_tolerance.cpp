#include <datumfit/curved/cone/cone_tolerance.h>

#include <utility>

namespace {
double of_free_cones = 0.05;
double of_probed_cones = 0.05;
}  // namespace

double sqSetLeastSquareConeNonPhysicalTolerance(double radians) {
    return std::exchange(of_free_cones, radians);
}

double sqSetLeastSquareProbedConeNonPhysicalTolerance(double radians) {
    return std::exchange(of_probed_cones, radians);
}

double datumfit::internal::cone_non_physical_tolerance() {
    return of_free_cones;
}

double datumfit::internal::probed_cone_non_physical_tolerance() {
    return of_probed_cones;
}
