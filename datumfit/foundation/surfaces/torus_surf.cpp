#include <datumfit/foundation/surfaces/shape_edges.h>
#include <datumfit/foundation/surfaces/torus_surf.h>

#include <new>

using namespace datumfit::internal;

// The canonical torus has the major radius 1.
sknTorusSurf::sknTorusSurf(giPoint3 const & centre, giUnitVec3 const & axis_dir, double major, double minor)
    : placed_surf(torus_shape(1.0, minor / major), centre,
                  shape_edges(axis_dir, minor > 0.0 && minor < major ? major : 0.0, major).edges) {}

sknTorusSurf::~sknTorusSurf() = default;

void sknTorusSurf::clone(sknSurfPtr & copy) const {
    copy = new (std::nothrow) sknTorusSurf(*this);
}
