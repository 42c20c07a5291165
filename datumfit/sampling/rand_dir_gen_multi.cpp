#include <datumfit/sampling/rand_dir_gen_multi.h>

sqRandDirGenMulti::sqRandDirGenMulti(double bias, giUnitVec3coDynArr const & axes, giAngle const & bias_angle,
                                     double bias_decay)
    : sqRandDirGenerator(bias, giAxisX, bias_angle, bias_decay, axes.size()), axes_(axes) {}

sqRandDirGenMulti::sqRandDirGenMulti() = default;

sqRandDirGenMulti::~sqRandDirGenMulti() = default;

int sqRandDirGenMulti::invalid() const {
    return sqRandDirGenerator::invalid();
}

giUnitVec3 sqRandDirGenMulti::direction() {
    if (next_axis_ < axes_.size()) return axes_.read(next_axis_++);
    return sqRandDirGenerator::direction();
}

giUnitVec3 sqRandDirGenMulti::rand_vec_bias_region() const {
    if (axes_.size() == 0) return giUnitVec3();
    return rand_vec_about(axes_[rand() % axes_.size()]);
}
