#pragma once

#include <datumfit/align3d/object_for_fitting.h>
#include <datumfit/foundation/surfaces/surf.h>

#include <utility>

/// A nominal surface as an object to align to.
///
/// The surface is shared with whoever else holds a handle to it, and so is its movement; copy() makes it independent.
/// With an empty handle the object behaves as its base, which has no geometry.
class sqSurfaceForFitting : public sqObjectForFitting {
public:
    explicit sqSurfaceForFitting(sknSurfPtr surface) : surface_(std::move(surface)) {}

    sknSurfPtr get_surface() const { return surface_; }

    /// An object with a clone of the surface.
    sqObjectForFitting * copy() const override;

    /// A projector to the surface in the handle, which must outlive it.
    sqProjectorForFitting3coPrf create_projector() const override;

    /// Moves the surface, for all that share it.
    void transform(giXform3 const & x) override;

    ~sqSurfaceForFitting() override;

private:
    sknSurfPtr surface_;
};
