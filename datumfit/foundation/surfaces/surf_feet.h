#pragma once

#include <cmath>
#include <limits>

namespace datumfit {
namespace internal {

/// The feet of one point on a surface, the nearest first, each once. Of equally near ones the first that was added
/// comes first; beyond the capacity the farthest are lost.
class surf_feet {
public:
    struct foot {
        double place[3];  // in local coordinates, as the point is
        double u, v;
        double square;  // of the distance
    };

    explicit surf_feet(double const (&point)[3]) : point_{point[0], point[1], point[2]} {}

    int size() const { return size_; }
    foot const & operator[](int i) const { return feet_[i]; }

    double square_distance(double const (&y)[3]) const {
        double const dx = y[0] - point_[0], dy = y[1] - point_[1], dz = y[2] - point_[2];
        return dx * dx + dy * dy + dz * dz;
    }

    void add(double const (&y)[3], double u, double v) {
        double const square = square_distance(y);
        int at = size_;
        for (int i = 0; i < size_; ++i) {
            if (same_place(feet_[i].place, y)) return;
            if (at == size_ && square < feet_[i].square) at = i;
        }
        if (at == capacity) return;
        if (size_ < capacity) ++size_;
        for (int i = size_ - 1; i > at; --i) feet_[i] = feet_[i - 1];
        feet_[at] = {{y[0], y[1], y[2]}, u, v, square};
    }

private:
    static constexpr int capacity = 16;

    // Feet that two roots gave and only rounding tells apart.
    static bool same_place(double const (&a)[3], double const (&b)[3]) {
        constexpr double rounding = 64.0 * std::numeric_limits<double>::epsilon();
        double const apart = std::abs(a[0] - b[0]) + std::abs(a[1] - b[1]) + std::abs(a[2] - b[2]);
        return apart <= rounding * (std::abs(b[0]) + std::abs(b[1]) + std::abs(b[2]));
    }

    double point_[3];
    int size_ = 0;
    foot feet_[capacity];
};

}  // namespace internal
}  // namespace datumfit
