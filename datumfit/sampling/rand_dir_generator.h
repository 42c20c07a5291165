#pragma once

#include <datumfit/foundation/geometry/angle.h>
#include <datumfit/foundation/geometry/unit_vec3.h>
#include <datumfit/foundation/maths/random.h>

/// Draws random directions that at first prefer a cone about an axis, less so with each draw.
///
/// Within the cone (the bias region) directions are `bias` times as dense as outside, evenly over the area of either
/// part. Each draw shrinks bias - 1 by the factor `bias_decay`; at bias 1 the density is even over the whole sphere.
/// A generator starts from a fixed seed: two that are made alike, and asked alike, give the same directions.
class sqRandDirGenerator {
public:
    /// bias_angle is half the apex angle of the cone about bias_axis. Where it covers the whole sphere nothing is
    /// preferred.
    sqRandDirGenerator(double bias, giUnitVec3 const & bias_axis, giAngle const & bias_angle, double bias_decay);

    /// A generator to be assigned: its directions are invalid.
    sqRandDirGenerator();

    /// 1 for a generator made by default, else 0.
    virtual int invalid() const;

    /// The next direction.
    virtual giUnitVec3 direction();

    /// A direction of the bias region, evenly over its area; the density stays. Of an invalid axis, invalid.
    virtual giUnitVec3 rand_vec_bias_region() const;

    virtual ~sqRandDirGenerator();

    /// A direction of the whole sphere, evenly over its area; the density stays.
    giUnitVec3 rand_vec() const;

    /// The share of draws to be taken from the bias region alone, beside those of the whole sphere that fall into it,
    /// for the present density. It is below 0 where the region is to be avoided.
    double probability_bias_region_only() const;

    /// What each draw does to the density.
    void update_bias();

protected:
    /// With the area of that many regions, taken as disjoint.
    sqRandDirGenerator(double bias, giUnitVec3 const & bias_axis, giAngle const & bias_angle, double bias_decay,
                       int regions);

    /// A direction of the cone of bias_angle about that axis, as rand_vec_bias_region() gives it.
    giUnitVec3 rand_vec_about(giUnitVec3 const & axis) const;

    /// The next number of the stream that all draws take from, from 0 to 32767.
    int rand() const { return random_.rand(); }

private:
    int unset_;
    double bias_;  // the density in the region over that outside
    giUnitVec3 bias_axis_;
    giAngle bias_angle_;
    double outside_ratio_;    // the area outside the region over that of the region
    double region_fraction_;  // the area of the region over that of the sphere
    double bias_decay_;
    mutable mlRandom random_{1};
};
