#include <datumfit/sampling/rand_dir_generator.h>

#include <datumfit/foundation/geometry/xform3.h>
#include <datumfit/foundation/utilities/math.h>

#include <algorithm>
#include <cmath>

namespace {

// A draw this near to the axis gives no good normal to turn the axis about.
constexpr double along_axis = 1e-5;

}  // namespace

sqRandDirGenerator::sqRandDirGenerator(double bias, giUnitVec3 const & bias_axis, giAngle const & bias_angle,
                                       double bias_decay)
    : sqRandDirGenerator(bias, bias_axis, bias_angle, bias_decay, 1) {}

sqRandDirGenerator::sqRandDirGenerator()
    : unset_(1), bias_(-utMath::max_double()), outside_ratio_(-utMath::max_double()),
      region_fraction_(-utMath::max_double()), bias_decay_(-utMath::max_double()) {}

// The cap of half angle a has the share (1 - cos a) / 2 of the sphere's area.
sqRandDirGenerator::sqRandDirGenerator(double bias, giUnitVec3 const & bias_axis, giAngle const & bias_angle,
                                       double bias_decay, int regions)
    : unset_(0), bias_(bias), bias_axis_(bias_axis), bias_angle_(bias_angle),
      outside_ratio_(2.0 / ((1.0 - bias_angle.cos()) * regions) - 1.0),
      region_fraction_(regions * (1.0 - bias_angle.cos()) / 2.0), bias_decay_(bias_decay) {}

sqRandDirGenerator::~sqRandDirGenerator() = default;

int sqRandDirGenerator::invalid() const {
    return unset_;
}

giUnitVec3 sqRandDirGenerator::direction() {
    if (unset_) return giUnitVec3();
    double const p = probability_bias_region_only();
    double const u = random_.zero_one();
    giUnitVec3 const drawn = p > u ? rand_vec_bias_region() : rand_vec();
    update_bias();
    return drawn;
}

// From a point (a, b) of the unit disc, evenly over the sphere (Marsaglia 1972).
giUnitVec3 sqRandDirGenerator::rand_vec() const {
    double a, b, s;
    do {
        a = random_.minus_one_one();
        b = random_.minus_one_one();
        s = a * a + b * b;
    } while (!(s < 1.0));
    double const r = std::sqrt(1.0 - s);
    return giUnitVec3(2.0 * a * r, 2.0 * b * r, 2.0 * s - 1.0);
}

giUnitVec3 sqRandDirGenerator::rand_vec_bias_region() const {
    return rand_vec_about(bias_axis_);
}

giUnitVec3 sqRandDirGenerator::rand_vec_about(giUnitVec3 const & axis) const {
    if (axis.invalid()) return giUnitVec3();
    giVector3 n;
    do {
        n = axis.cross(rand_vec());
    } while (n.length() < along_axis);

    // An even cosine is even over the area of the cap (Archimedes).
    double const least = bias_angle_.cos();
    double const cosine = random_.zero_one() * (1.0 - least) + least;
    giXform3 const turn(giXformRotate, giOrigin, giUnitVec3(n), giAngle(giAngleCosine, cosine));
    return giUnitVec3(turn * axis);
}

double sqRandDirGenerator::probability_bias_region_only() const {
    // With nothing outside, an even density over the sphere is that of the region, whatever the bias.
    if (outside_ratio_ == 0.0) return 0.0;
    double const wanted = bias_ / (bias_ + outside_ratio_);
    return (wanted - region_fraction_) / (1.0 - region_fraction_);
}

void sqRandDirGenerator::update_bias() {
    double const next = 1.0 + (bias_ - 1.0) * bias_decay_;
    // A decay above 1 lets the bias grow, and an infinite one would have no share.
    bias_ = std::clamp(next, -utMath::max_double(), utMath::max_double());
}
