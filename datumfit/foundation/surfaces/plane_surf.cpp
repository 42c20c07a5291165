#include <datumfit/foundation/surfaces/plane_surf.h>
#include <datumfit/foundation/surfaces/shape_edges.h>

#include <limits>
#include <new>

using namespace datumfit::internal;

sknPlaneSurf::sknPlaneSurf(giPlane const & plane)
    : placed_surf(plane_shape(std::numeric_limits<double>::infinity()), plane.point(),
                  shape_edges(plane.normal(), 1.0, 1.0).edges) {}

sknPlaneSurf::sknPlaneSurf(giPoint3 const & centre, giVector3 const & half_u, giVector3 const & half_v)
    : placed_surf(plane_shape(1.0), centre, shape_edges(half_u, half_v).edges) {}

sknPlaneSurf::~sknPlaneSurf() = default;

void sknPlaneSurf::clone(sknSurfPtr & copy) const {
    copy = new (std::nothrow) sknPlaneSurf(*this);
}
