#pragma once

#include <datumfit/align3d/fit_point3.h>

#include <functional>

/// Knows the nominal object that measured points are projected to.
class sqFitPointProjector3 {
public:
    /// Projects points number 0 to count - 1, each once and in this order: with initial not 0 by their
    /// initial_projection(), else by project_from_position() with x.
    ///
    /// point(i) gives a point, result(i) the record to be written for it; neither function may be empty. A projector
    /// that can treat many points at once, say on a surface in many parts, replaces this.
    virtual void project_batch(std::function<sqFitPoint3 const &(int)> const & point,
                               std::function<sqProjectedPoint3 &(int)> const & result, int count, int initial,
                               giXform3 const & x) const;

    virtual ~sqFitPointProjector3();
};
