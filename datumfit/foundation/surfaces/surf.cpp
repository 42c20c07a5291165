#include <datumfit/foundation/surfaces/surf.h>

sknSurf::~sknSurf() = default;

void sknSurf::transform(sknSurfPtr & surface, giXform3 const & x) {
    if (surface.pointer()) (*surface).apply(x);
}
