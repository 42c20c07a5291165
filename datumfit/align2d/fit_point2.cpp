#include <datumfit/align2d/fit_point2.h>

sqFitPoint2::~sqFitPoint2() = default;
