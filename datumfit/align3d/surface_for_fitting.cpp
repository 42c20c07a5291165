#include <datumfit/align3d/surf_projector_for_fitting3.h>
#include <datumfit/align3d/surface_for_fitting.h>

#include <new>

sqSurfaceForFitting::~sqSurfaceForFitting() = default;

sqObjectForFitting * sqSurfaceForFitting::copy() const {
    sknSurfPtr clone;
    if (surface_.pointer()) (*surface_).clone(clone);
    return new (std::nothrow) sqSurfaceForFitting(clone);
}

sqProjectorForFitting3coPrf sqSurfaceForFitting::create_projector() const {
    if (!surface_.pointer()) return sqObjectForFitting::create_projector();
    return new (std::nothrow) sqSurfProjectorForFitting3(*surface_);
}

void sqSurfaceForFitting::transform(giXform3 const & x) {
    sknSurf::transform(surface_, x);
}
