#include <datumfit/direct/direct_fit.h>

#include <datumfit/primitives/evaluator/least_square_evaluator.h>

sqDirectFit::sqDirectFit(giPoint2coDynArr const & points)
    : points_(points), status_(points.size() < 2 ? sqDirectFitTooFewPoints : sqDirectFitUnfitted) {}

sqDirectFit::sqDirectFit(giPoint3coDynArr const & points)
    : status_(points.size() < 2 ? sqDirectFitTooFewPoints : sqDirectFitUnfitted) {
    if (status_ == sqDirectFitUnfitted) find_embedding_plane(points);
}

void sqDirectFit::find_embedding_plane(giPoint3coDynArr const & points) {
    giPoint3 origin;
    giUnitVec3 v, w;
    if (points.size() == 2) {
        giVector3 const d = points[0] - points[1];
        if (!d.is_zero(tolerance_)) {
            origin = points[0].interpolate(points[1], 0.5);
            v = giUnitVec3(d);
            w = v.any_normal();
        }
    } else {
        double deviation;
        if (sqLeastSquareEvaluator::evaluate_plane(points, origin, w, deviation)) v = w.any_normal();
    }
    if (v.invalid() || w.invalid()) {  // too near each other, or not finite
        status_ = sqDirectFitNoPlane;
        return;
    }
    workplane_.become(origin, v, w);
    if (!points_.expand(points.size())) return;
    giPoint2 * const flat = points_.data();
    for (int i = 0; i < points.size(); ++i) flat[i] = workplane_.to_work(points[i]).xy();
}
