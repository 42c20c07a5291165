#pragma once

#include <datumfit/sampling/rand_dir_generator.h>

/// A sqRandDirGenerator that prefers cones about several axes, and gives those axes first.
///
/// The cones are of one angle and count as disjoint: where they overlap, or cover the sphere more than once, the
/// density is not what bias tells. Without axes the density is even from the first.
class sqRandDirGenMulti : public sqRandDirGenerator {
public:
    /// The axes are copied. See sqRandDirGenerator for the other arguments.
    sqRandDirGenMulti(double bias, giUnitVec3coDynArr const & axes, giAngle const & bias_angle, double bias_decay);

    /// A generator to be assigned: its directions are invalid.
    sqRandDirGenMulti();

    int invalid() const override;

    /// The next of the axes as they were given, without a draw and at an unchanged density; after them, random
    /// directions.
    giUnitVec3 direction() override;

    /// A direction of one of the cones, each of which is as likely; without axes, an invalid one.
    giUnitVec3 rand_vec_bias_region() const override;

    ~sqRandDirGenMulti() override;

private:
    giUnitVec3coDynArr axes_;
    int next_axis_ = 0;
};
