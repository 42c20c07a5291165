#include <datumfit/sampling/scan_range.h>

sqScanRange::sqScanRange(double lower, double upper, double min_step)
    : lower_(lower), upper_(upper), min_step_(min_step), step_(upper - lower), next_value_(lower + step_ / 2.0) {}

int sqScanRange::next(double & value) {
    switch (phase_) {
        case at_lower:
            value = lower_;
            phase_ = at_upper;
            return 1;
        case at_upper:
            value = upper_;
            phase_ = inside;
            return 1;
        case inside:
            break;
    }
    if (!(upper_ > next_value_)) return 0;
    value = next_value_;
    next_value_ += step_;
    if (next_value_ == value) next_value_ = upper_;
    return 1;
}

int sqScanRange::reduce_step() {
    double const half = step_ / 2.0;
    if (!(half > min_step_)) return 0;
    step_ = half;
    next_value_ = lower_ + half / 2.0;
    return 1;
}

void sqScanRange::reset_step() {
    if (step_ == upper_ - lower_) phase_ = at_lower;
    next_value_ = lower_ + step_ / 2.0;
}
