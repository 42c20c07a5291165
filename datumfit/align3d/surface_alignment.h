#pragma once

#include <datumfit/align3d/fit_point_projector3.h>
#include <datumfit/align3d/surface_locks.h>

namespace datumfit {
namespace internal {

/// What the surface fits share: measured points, the transform that they have gone through so far, their projections
/// from there, and the locks.
class surface_alignment {
public:
    /// How the points are projected: all by one call of the projector, which may have a way of its own, or each by
    /// itself.
    enum projecting { in_batch, one_by_one };

    surface_alignment(sqFitPointProjector3 const * projector, projecting way) : projector_(projector), way_(way) {}

    void set_projector(sqFitPointProjector3 const * projector);

    /// 1 when there is room for n points, 0 without memory.
    int reserve(int n) { return points_.reserve(n); }
    int size() const { return points_.size(); }
    void add(sqFitPoint3coPrf const & point);
    sqFitPoint3 const * point(int i) const { return points_.read(i).pointer(); }

    giXform3 const & transformation() const { return transformation_; }
    sqProjectedPoint3coDynArr const & cloud() const { return cloud_; }
    surface_locks & locks() { return locks_; }
    surface_locks const & locks() const { return locks_; }

    /// Projects the points, moved by x, into a cloud with a record for each. Without a projector all are invalid.
    void reproject(giXform3 const & x, sqProjectedPoint3coDynArr & cloud) const;

    /// Lets the next projection be the points' initial one.
    void project_initially() { initial_ = true; }

    /// Makes sure that there is a transform, at first the identity, and that the cloud belongs to it.
    void prepare();

    /// Goes back to the points as measured.
    void restart();

    /// Goes back to an earlier transform. Where that is the very first one, the points' initial projection counts.
    void return_to(giXform3 const & x);

    /// Lets a step, taken with the locks, act after the transform.
    void apply(giXform3 const & step);

    /// From where steps see the coordinates: the origin, or the middle of a part that is far from it against its size.
    /// Turns are linearised about this place.
    giVector3 const & base() const { return base_; }

    /// A step of coordinates seen from the base, as one of coordinates seen from the origin.
    giXform3 from_base(giXform3 const & step) const;

private:
    void project();

    sqFitPoint3PtrcoPageArr points_;
    sqFitPointProjector3 const * projector_;
    projecting way_;
    surface_locks locks_;
    giXform3 transformation_;
    sqProjectedPoint3coDynArr cloud_;
    giVector3 base_ = giVector3(0.0, 0.0, 0.0);
    bool projection_due_ = true;   // points or the projector have changed since the last projection
    mutable bool initial_ = true;  // the next projection is the points' initial one
};

}  // namespace internal
}  // namespace datumfit
