#include <datumfit/align3d/projector_for_fitting3.h>

sqProjectorForFitting3::~sqProjectorForFitting3() = default;

void sqProjectorForFitting3::rotate_and_project(giXform3 const &, sqProbedPoint3 const *, sqProjectedPoint3 &) const {}
