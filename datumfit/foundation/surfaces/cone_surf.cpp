#include <datumfit/foundation/surfaces/cone_surf.h>
#include <datumfit/foundation/surfaces/shape_edges.h>

#include <new>

using namespace datumfit::internal;

// Of an angle beyond 90 degrees the tangent is negative.
sknConeSurf::sknConeSurf(giPoint3 const & apex, giUnitVec3 const & axis_dir, giAngle const & half_angle, double from,
                         double to)
    : placed_surf(
          quadric_shape(quadric_shape::cone, from, to), apex,
          shape_edges(-axis_dir, half_angle.sin() > 0.0 ? half_angle.sin() / half_angle.cos() : 0.0, 1.0).edges) {}

sknConeSurf::~sknConeSurf() = default;

void sknConeSurf::clone(sknSurfPtr & copy) const {
    copy = new (std::nothrow) sknConeSurf(*this);
}
