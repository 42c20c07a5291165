#pragma once

#include <datumfit/foundation/containers/dyn_arr.h>
#include <datumfit/foundation/geometry/unit_vec3.h>
#include <datumfit/foundation/geometry/vector3.h>

/// The directions of a fan that have one angle from its centre.
struct sqVectorGradientRing {
    double angle = 0.0;  // from the centre, in radians
    double sin_angle = 0.0;
    int steps = 0;  // how many directions
};

class sqVectorGradientIterator;

/// A fan of directions, evenly dense over a cone about a central vector: the centre, then ring by ring outwards.
///
/// The rings are step_angle() apart, and as many directions stand on each as keep neighbours within the diameter of the
/// spot that a step covers. A range of pi covers one hemisphere, the rim included; with 20 rings that is 964
/// directions.
class sqVectorGradient {
public:
    /// A fan of `rings` rings about `centre`, of any length; range is the full apex angle in radians. Fewer than 2
    /// rings give the centre alone; a range of 0 or below gives one direction a ring. Of a null centre all directions
    /// are invalid.
    sqVectorGradient(giVector3 const & centre, double range, int rings);
    virtual ~sqVectorGradient();

    int rings() const { return ring_table_.size(); }

    /// The angle from ring to ring, in radians.
    double step_angle() const;

    /// The radius of the spot that a step covers on the unit sphere, as its tangent.
    double spot_radius() const;

    /// The number of directions; the largest int where there are more.
    int total_steps() const;

    /// An iterator before the first direction. It refers to this fan.
    sqVectorGradientIterator iterator() const;

private:
    friend class sqVectorGradientIterator;

    sqVectorGradientRing ring_at(int index) const;
    giVector3 direction(sqVectorGradientRing const & ring, int step) const;

    giUnitVec3 x_axis_, y_axis_, z_axis_;  // right-handed, z along the centre
    double range_;
    coDynArr<sqVectorGradientRing> ring_table_;
};

/// Walks the directions of a sqVectorGradient, which must outlive it and stay where it is.
///
///     for (sqVectorGradientIterator i = gradient.iterator(); i++;) try_direction(i.vector());
class sqVectorGradientIterator {
public:
    explicit sqVectorGradientIterator(sqVectorGradient const * gradient) : gradient_(gradient) {}

    /// Goes to the next direction, at first to the first one: 1, or 0 at the end, where it stays at the last direction.
    int operator++(int);

    /// The present direction, of unit length to rounding; invalid before the first.
    giVector3 const & vector() const { return current_; }

    /// The ring of the present direction; without steps before the first.
    sqVectorGradientRing const & ring() const { return ring_; }

private:
    sqVectorGradient const * gradient_;
    giVector3 current_;
    sqVectorGradientRing ring_;
    int ring_index_ = -1, step_index_ = -1;
};
