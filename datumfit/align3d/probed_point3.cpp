#include <datumfit/align3d/probed_point3.h>
#include <datumfit/align3d/projector_for_fitting3.h>

sqProbedPoint3::~sqProbedPoint3() = default;

void sqProbedPoint3::initial_projection(sqProjectedPoint3 & result, sqFitPointProjector3 const * projector) const {
    project_from_position(giXformIdentity, result, projector);
}

void sqProbedPoint3::project_from_position(giXform3 const & x, sqProjectedPoint3 & result,
                                           sqFitPointProjector3 const * projector) const {
    if (projector == nullptr) {
        result = sqProjectedPoint3();
        return;
    }
    static_cast<sqProjectorForFitting3 const *>(projector)->rotate_and_project(x, this, result);
}

giPoint3 const & sqProbedPoint3::measured_point() const {
    return measured_point_;
}

giUnitVec3 const & sqProbedPoint3::approximate_normal() const {
    return approximate_normal_;
}

double sqProbedPoint3::radius() const {
    return radius_;
}
