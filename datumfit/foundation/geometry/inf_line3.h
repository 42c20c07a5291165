#pragma once

#include <datumfit/foundation/geometry/angle.h>
#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/unit_vec3.h>
#include <datumfit/foundation/utilities/tags.h>

/// An infinite line in space: a point of it, from which its parameter counts, and its direction.
class giInfLine3 {
public:
    /// An invalid line: neither its centre nor its direction is set.
    giInfLine3() = default;
    giInfLine3(giPoint3 const & centre, giUnitVec3 const & direction) : centre_(centre), direction_(direction) {}

    /// The line from a through b, with a as its centre; without a direction when the two are equal.
    giInfLine3(giPoint3 const & a, giPoint3 const & b) : centre_(a), direction_(b - a) {}

    void become(utCopyTag, giInfLine3 const & other) { *this = other; }

    giPoint3 const & centre() const { return centre_; }
    giUnitVec3 const & direction() const { return direction_; }

    /// The point at parameter t, a length along the direction.
    giPoint3 interpolate(double t) const { return centre_ + t * direction_; }

    /// The distance of p, never negative.
    double distance_of_point(giPoint3 const & p) const { return direction_.cross(p - centre_).length(); }

private:
    giPoint3 centre_;
    giUnitVec3 direction_;
};

enum giLineIntersectStatus { giLineIntersectFound = 0, giLineIntersectParallel = 1 };

/// Finds the parameters of the points in which two lines come closest: a.interpolate(s) and b.interpolate(t).
///
/// Lines at an angle below tol, whichever way they point, count as parallel, as do lines that are parallel exactly: the
/// status then says so, and s and t are as they were.
void closest_points(giInfLine3 const & a, giInfLine3 const & b, giAngle const & tol, double & s, double & t,
                    giLineIntersectStatus & status);
