#include <datumfit/datumfit.h>

#include <cstdio>

int main() {
    giPoint2coDynArr const points{{1, 7}, {2, 6}, {5, 8}, {7, 7}, {9, 5}, {3, 7}};
    giPoint2 centre;
    double radius = 0.0, deviation = 0.0;
    if (sqLeastSquareEvaluator::evaluate_circle(points, centre, radius, deviation) == 0) return 1;
    std::printf("centre %.4f, %.4f  radius %.4f  deviation %.4f\n", centre.x(), centre.y(), radius, deviation);
}
