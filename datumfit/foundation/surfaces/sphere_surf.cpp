#include <datumfit/foundation/surfaces/shape_edges.h>
#include <datumfit/foundation/surfaces/sphere_surf.h>

#include <new>

using namespace datumfit::internal;

sknSphereSurf::sknSphereSurf(giPoint3 const & centre, double radius)
    : placed_surf(quadric_shape(quadric_shape::sphere, -1.0, 1.0), centre, shape_edges(giAxisZ, radius, radius).edges) {
}

sknSphereSurf::~sknSphereSurf() = default;

void sknSphereSurf::clone(sknSurfPtr & copy) const {
    copy = new (std::nothrow) sknSphereSurf(*this);
}
