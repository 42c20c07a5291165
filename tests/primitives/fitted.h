#pragma once

#include <datumfit/datumfit.h>

using evaluator = sqLeastSquareEvaluator;

/// Where fits leave their results: values that none of them gives, to tell what was left alone.
struct fitted {
    giPoint2 point2 = giPoint2(5.0, 6.0);
    giPoint3 point = giPoint3(5.0, 6.0, 7.0);
    giUnitVec2 direction2 = giUnitVec2(0.0, 1.0);
    giUnitVec3 direction = giUnitVec3(giAxisY);
    double radius = 8.0, deviation = 9.0;

    bool untouched() const {
        return point2.x() == 5.0 && point2.y() == 6.0 && point.y() == 6.0 && point.z() == 7.0 &&
               direction2.y() == 1.0 && direction.y() == 1.0 && radius == 8.0 && deviation == 9.0;
    }
};
