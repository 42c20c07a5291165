#pragma once

#include <datumfit/foundation/geometry/point2.h>

/// The least rectangle along the axes that holds all points merged into it.
///
/// Both corners of an empty box are invalid points. An invalid point has no place and leaves a box as it was.
class giBox2 {
public:
    giBox2()
        : min_(datumfit::internal::not_set, datumfit::internal::not_set),
          max_(-datumfit::internal::not_set, -datumfit::internal::not_set) {}

    void merge(giPoint2 const & p) {
        if (p.invalid()) return;
        min_ = giPoint2(p.x() < min_.x() ? p.x() : min_.x(), p.y() < min_.y() ? p.y() : min_.y());
        max_ = giPoint2(p.x() > max_.x() ? p.x() : max_.x(), p.y() > max_.y() ? p.y() : max_.y());
    }

    giPoint2 const & min() const { return min_; }
    giPoint2 const & max() const { return max_; }

private:
    giPoint2 min_, max_;
};
