#include <datumfit/align3d/fit_point3.h>

sqFitPoint3::~sqFitPoint3() = default;
