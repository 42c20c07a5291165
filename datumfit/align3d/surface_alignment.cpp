#include <datumfit/align3d/surface_alignment.h>

#include <datumfit/foundation/geometry/box3.h>

namespace datumfit {
namespace internal {

namespace {

// A part is far from the origin when that is this many times as far away as the part reaches. A turn by t about the
// origin, linearised, misses by t²/2 of the distance: more than a step gains, from there on.
constexpr double far_away = 10.0;

giVector3 base_of(sqProjectedPoint3coDynArr const & cloud) {
    giVector3 const origin(0.0, 0.0, 0.0);
    giBox3 box;
    for (int i = 0; i < cloud.size(); ++i) box.merge(cloud.read(i).measured_point());
    if (box.min().invalid()) return origin;
    giPoint3 const middle = interpolate(box.min(), box.max(), 0.5);
    double const reach = 0.5 * box.min().distance(box.max());
    bool const is_far = reach > 0.0 && middle.release().length() > far_away * reach;
    return is_far ? middle.release() : origin;
}

}  // namespace

void surface_alignment::set_projector(sqFitPointProjector3 const * projector) {
    projector_ = projector;
    projection_due_ = true;
}

void surface_alignment::add(sqFitPoint3coPrf const & point) {
    points_.append(point);
    projection_due_ = true;
}

void surface_alignment::reproject(giXform3 const & x, sqProjectedPoint3coDynArr & cloud) const {
    // Records of an earlier pass must not show where a projector leaves them alone.
    cloud.clear(0);
    cloud.expand(points_.size());
    for (int i = 0; i < cloud.size(); ++i) cloud[i] = sqProjectedPoint3();
    if (projector_ == nullptr) return;

    auto const point = [this](int i) -> sqFitPoint3 const & { return *points_.read(i); };
    auto const record = [&cloud](int i) -> sqProjectedPoint3 & { return cloud[i]; };
    if (way_ == in_batch) {
        projector_->project_batch(point, record, cloud.size(), initial_, x);
    } else {
        projector_->sqFitPointProjector3::project_batch(point, record, cloud.size(), initial_, x);
    }
    initial_ = false;
}

void surface_alignment::prepare() {
    if (transformation_.invalid()) {
        restart();
    } else if (projection_due_) {
        project();
    }
}

void surface_alignment::restart() {
    if (!projection_due_ && equal(transformation_, giXformIdentity, 0.0)) return;
    transformation_ = giXformIdentity;
    project();
}

void surface_alignment::return_to(giXform3 const & x) {
    initial_ = initial_ || x.identity();
    transformation_ = x;
    project();
}

void surface_alignment::apply(giXform3 const & step) {
    transformation_.premultiply(step);
    project();
    locks_.rebase();
}

void surface_alignment::project() {
    reproject(transformation_, cloud_);
    base_ = base_of(cloud_);
    projection_due_ = false;
}

giXform3 surface_alignment::from_base(giXform3 const & step) const {
    if (base_.is_zero(0.0)) return step;
    giXform3 const there(giXformTranslate, base_), back(giXformTranslate, -base_);
    return giXform3(giXformProduct, there, giXform3(giXformProduct, step, back));
}

}  // namespace internal
}  // namespace datumfit
