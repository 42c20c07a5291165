#include <datumfit/align3d/object_for_fitting.h>

#include <new>

sqObjectForFitting::~sqObjectForFitting() = default;

sqObjectForFitting * sqObjectForFitting::copy() const {
    return new (std::nothrow) sqObjectForFitting;
}

sqProjectorForFitting3coPrf sqObjectForFitting::create_projector() const {
    return new (std::nothrow) sqProjectorForFitting3;
}

void sqObjectForFitting::transform(giXform3 const &) {}
