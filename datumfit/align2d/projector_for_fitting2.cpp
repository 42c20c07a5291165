#include <datumfit/align2d/projector_for_fitting2.h>

sqProjectorForFitting2::~sqProjectorForFitting2() = default;
