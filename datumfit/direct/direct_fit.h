#pragma once

#include <datumfit/direct/direct_fit_status.h>
#include <datumfit/foundation/geometry/point2.h>
#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/workplane3.h>

/// The base of the direct fits, which need no start value and do not iterate: the constructor does the work, and status
/// and results are read afterwards. It keeps the points in the plane, those in space as projections on their best
/// plane.
///
/// Results hold a value at status sqDirectFitSuccess only. Nothing throws, and no NaN is made of finite coordinates.
class sqDirectFit {
public:
    explicit sqDirectFit(giPoint2coDynArr const & points);
    explicit sqDirectFit(giPoint3coDynArr const & points);

    sqDirectFitStatus status() const { return status_; }

protected:
    /// Sets the workplane and the points within it. Two points lie on the plane's v axis, on both sides of its origin;
    /// more give their least-squares plane. The status tells when there is none.
    void find_embedding_plane(giPoint3coDynArr const & points);

    giWorkplane3 workplane_;  // unset for points in the plane
    giPoint2coDynArr points_;
    sqDirectFitStatus status_;
    double tolerance_ = 1e-6;
};
