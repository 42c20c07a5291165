#include <datumfit/align2d/fit_point_projector2.h>

sqFitPointProjector2::~sqFitPointProjector2() = default;
