#pragma once

/// Scans an interval in passes of halving steps, each of which gives only values between those given before.
///
/// The first pass gives both ends and the middle, each further one the middles of the cells so far, in ascending order:
/// of [0, 1] these are 0, 1, 0.5, then 0.25, 0.75, then 0.125, 0.375, 0.625, 0.875. An interval without length gives
/// its ends only.
class sqScanRange {
public:
    /// The closed interval, and a step that is not to be reached by halving.
    sqScanRange(double lower, double upper, double min_step);

    /// The next value of this pass: 1, or 0 at its end, and then the value is as it was. A pass also ends where the
    /// step is lost in the rounding of the values.
    int next(double & value);

    /// Halves the step and begins a pass: 1, or 0 when the half would not exceed min_step, and nothing changes.
    int reduce_step();

    /// Begins this pass again; only the first one gives the ends.
    void reset_step();

private:
    enum phase { at_lower, at_upper, inside };

    double lower_, upper_, min_step_;
    double step_;
    double next_value_;  // the next one inside
    phase phase_ = at_lower;
};
