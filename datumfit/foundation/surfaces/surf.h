#pragma once

#include <datumfit/foundation/containers/prf.h>
#include <datumfit/foundation/geometry/angle.h>
#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/unit_vec3.h>
#include <datumfit/foundation/geometry/xform3.h>
#include <datumfit/foundation/surfaces/surf_point.h>

class sknSurf;
using sknSurfcoPrf = coPrf<sknSurf>;
using sknSurfPtr = sknSurfcoPrf;

/// A nominal surface, as far as alignment asks it: where a point may belong on it, and its normal there.
///
/// A host derives its own surfaces from this class, or takes the ready ones beside it. Projection is asked from const
/// objects only: a surface that is shared between threads keeps no scratch values.
class sknSurf {
public:
    virtual ~sknSurf();

    /// Appends one entry for each candidate foot of a point: the places where the distance from the point is
    /// stationary, or at least those that are a nearest point of their neighbourhood. status becomes 0 when at least
    /// one was found, else 1. What the list holds already stays.
    virtual void project_point(giPoint3 const & point, sknSurfPointList & feet, int & status) const = 0;

    /// The unit normal at a point that project_point() gave; its sign is the surface's own. An invalid one where the
    /// surface has none. The tolerances say how far from the place and how far from the direction the answer may be;
    /// surfaces that answer exactly don't look at them.
    virtual giUnitVec3 normal_at(sknSurfPoint const & at, double length_tolerance,
                                 giAngle const & angle_tolerance) const = 0;

    /// Makes `copy` a handle on a surface of the same shape, which may be transformed by itself.
    virtual void clone(sknSurfPtr & copy) const = 0;

    /// Moves the surface that the handle refers to, for all that share it. Nothing happens to an empty handle.
    static void transform(sknSurfPtr & surface, giXform3 const & x);

protected:
    /// Moves this surface. x is affine: it may scale the axes unequally.
    virtual void apply(giXform3 const & x) = 0;
};
