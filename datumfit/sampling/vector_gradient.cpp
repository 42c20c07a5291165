#include <datumfit/sampling/vector_gradient.h>

#include <datumfit/foundation/utilities/math.h>

#include <algorithm>
#include <cmath>
#include <limits>

sqVectorGradient::sqVectorGradient(giVector3 const & centre, double range, int rings) : z_axis_(centre), range_(range) {
    if (!z_axis_.invalid()) {
        // Of the two axes, the one farther from the centre; the x axis where they are equally far.
        giVector3 const reference(std::abs(z_axis_.x()) > std::abs(z_axis_.y()) ? giAxisY : giAxisX);
        x_axis_ = reference.cross(z_axis_);
        y_axis_ = z_axis_.cross(x_axis_);
    }
    ring_table_.expand(std::max(rings, 1));
    for (int k = 0; k < this->rings(); ++k) ring_table_[k] = ring_at(k);
}

sqVectorGradient::~sqVectorGradient() = default;

double sqVectorGradient::step_angle() const {
    return range_ / (2.0 * std::max(rings() - 1, 1));
}

double sqVectorGradient::spot_radius() const {
    return std::tan(step_angle() / 2.0);
}

int sqVectorGradient::total_steps() const {
    long long total = 0;
    for (int k = 0; k < rings(); ++k) total += ring_table_[k].steps;
    return static_cast<int>(std::min<long long>(total, std::numeric_limits<int>::max()));
}

sqVectorGradientIterator sqVectorGradient::iterator() const {
    return sqVectorGradientIterator(this);
}

sqVectorGradientRing sqVectorGradient::ring_at(int index) const {
    sqVectorGradientRing ring;
    ring.angle = index * step_angle();
    ring.sin_angle = std::sin(ring.angle);
    double const spot = spot_radius();
    // A spot on the ring spans twice this angle of azimuth. Spots without a size would never fill a ring.
    bool const is_filled = index > 0 && spot > 0.0;
    ring.steps = is_filled ? utMath::ceiling(utMath::pi() / std::atan2(spot, ring.sin_angle)) : 1;
    return ring;
}

giVector3 sqVectorGradient::direction(sqVectorGradientRing const & ring, int step) const {
    if (z_axis_.invalid()) return giVector3();
    // The azimuth is from the y axis towards the x axis, and the last step of a ring is on the y side.
    double const phi = (step + 1) * 2.0 * utMath::pi() / ring.steps;
    double const x = std::sin(phi) * std::sin(ring.angle);
    double const y = std::cos(phi) * std::sin(ring.angle);
    double const z = std::cos(ring.angle);
    return z * z_axis_ + (y * y_axis_ + x * x_axis_);
}

int sqVectorGradientIterator::operator++(int) {
    if (step_index_ + 1 < ring_.steps) {
        ++step_index_;
    } else {
        if (ring_index_ + 1 >= gradient_->rings()) return 0;
        ++ring_index_;
        step_index_ = 0;
        ring_ = gradient_->ring_table_.read(ring_index_);
    }
    current_ = gradient_->direction(ring_, step_index_);
    return 1;
}
