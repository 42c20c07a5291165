#include <datumfit/align2d/probed_point2.h>
#include <datumfit/align2d/projector_for_fitting2.h>

sqProbedPoint2::~sqProbedPoint2() = default;

void sqProbedPoint2::initial_projection(sqProjectedPoint2 & result, sqFitPointProjector2 const * projector) const {
    project_from_position(giXformIdentity, result, projector);
}

void sqProbedPoint2::project_from_position(giXform2 const & x, sqProjectedPoint2 & result,
                                           sqFitPointProjector2 const * projector) const {
    if (auto const * const asked = dynamic_cast<sqProjectorForFitting2 const *>(projector)) {
        asked->rotate_and_project(x, this, result);
    } else {
        result = sqProjectedPoint2();
    }
}

giPoint2 const & sqProbedPoint2::measured_point() const {
    return measured_point_;
}

giUnitVec2 const & sqProbedPoint2::approximate_normal() const {
    return approximate_normal_;
}

double sqProbedPoint2::radius() const {
    return radius_;
}
