#pragma once

#include <datumfit/foundation/geometry/point3.h>

/// The least box along the axes that holds all points merged into it.
///
/// Both corners of an empty box are invalid points. An invalid point has no place and leaves a box as it was.
class giBox3 {
public:
    giBox3()
        : min_(datumfit::internal::not_set, datumfit::internal::not_set, datumfit::internal::not_set),
          max_(-datumfit::internal::not_set, -datumfit::internal::not_set, -datumfit::internal::not_set) {}

    void merge(giPoint3 const & p) {
        if (p.invalid()) return;
        min_ = giPoint3(p.x() < min_.x() ? p.x() : min_.x(), p.y() < min_.y() ? p.y() : min_.y(),
                        p.z() < min_.z() ? p.z() : min_.z());
        max_ = giPoint3(p.x() > max_.x() ? p.x() : max_.x(), p.y() > max_.y() ? p.y() : max_.y(),
                        p.z() > max_.z() ? p.z() : max_.z());
    }

    giPoint3 const & min() const { return min_; }
    giPoint3 const & max() const { return max_; }

private:
    giPoint3 min_, max_;
};
