#pragma once

#include <datumfit/foundation/geometry/point2.h>

/// The mean of points of the plane, gathered as their number and the sums of their coordinates.
class giPointAverage2 {
public:
    giPointAverage2() : giPointAverage2(0.0, 0.0, 0.0) {}
    giPointAverage2(giPoint2 const & p) : giPointAverage2(1.0, p.x(), p.y()) {}

    void accumulate(giPoint2 const & p) { *this = *this + p; }
    giPointAverage2 operator+(giPointAverage2 const & b) const {
        return giPointAverage2(count_ + b.count_, x_ + b.x_, y_ + b.y_);
    }

    /// The mean; of no points, an invalid point.
    giPoint2 average() const { return count_ > 0.0 ? giPoint2(x_ / count_, y_ / count_) : giPoint2(); }

private:
    giPointAverage2(double count, double x, double y) : count_(count), x_(x), y_(y) {}

    double count_, x_, y_;
};
