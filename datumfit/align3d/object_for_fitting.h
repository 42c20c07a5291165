#pragma once

#include <datumfit/align3d/projector_for_fitting3.h>

/// A nominal object that a host can copy, move and align points to. This one has no geometry.
class sqObjectForFitting {
public:
    /// A new object of the same kind and geometry, which can be moved by itself and which the caller owns; null without
    /// memory.
    virtual sqObjectForFitting * copy() const;

    /// A new projector to this object as it is now. The object must outlive the projector and must not be moved
    /// meanwhile. This one finds no projections.
    virtual sqProjectorForFitting3coPrf create_projector() const;

    /// Moves the object. This one has nothing to move.
    virtual void transform(giXform3 const & x);

    virtual ~sqObjectForFitting();
};
