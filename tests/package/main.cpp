// A host program: fits a sphere to six points of one and looks at the result.

#include <datumfit/datumfit.h>

#include <cmath>
#include <cstdio>

int main() {
    giPoint3coDynArr points;
    for (double const sign : {-1.0, 1.0}) {
        points.append(giPoint3(10.0 + 2.0 * sign, 20.0, 30.0));
        points.append(giPoint3(10.0, 20.0 + 2.0 * sign, 30.0));
        points.append(giPoint3(10.0, 20.0, 30.0 + 2.0 * sign));
    }
    giPoint3 centre;
    double radius = 0.0, deviation = 0.0;
    int const fitted = sqLeastSquareEvaluator::evaluate_sphere(points, centre, radius, deviation);
    std::printf("centre %g %g %g, radius %g, deviation %g\n", centre.x(), centre.y(), centre.z(), radius, deviation);
    return fitted == 1 && std::abs(centre.z() - 30.0) < 1e-9 && std::abs(radius - 2.0) < 1e-9 ? 0 : 1;
}
