#include <datumfit/foundation/surfaces/cylinder_surf.h>
#include <datumfit/foundation/surfaces/shape_edges.h>

#include <new>

using namespace datumfit::internal;

sknCylinderSurf::sknCylinderSurf(giPoint3 const & axis_point, giUnitVec3 const & axis_dir, double radius, double from,
                                 double to)
    : placed_surf(quadric_shape(quadric_shape::cylinder, from, to), axis_point,
                  shape_edges(axis_dir, radius, 1.0).edges) {}

sknCylinderSurf::~sknCylinderSurf() = default;

void sknCylinderSurf::clone(sknSurfPtr & copy) const {
    copy = new (std::nothrow) sknCylinderSurf(*this);
}
