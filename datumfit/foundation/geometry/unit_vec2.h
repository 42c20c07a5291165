#pragma once

#include <datumfit/foundation/containers/dyn_arr.h>
#include <datumfit/foundation/geometry/point2.h>
#include <datumfit/foundation/geometry/vector2.h>

/// A direction in the plane: a vector of unit length, read as a giVector2 without a copy.
///
/// What it is made from is scaled to unit length; a vector without direction (null, or not finite) gives an invalid
/// one, as does the default constructor. Copies are exact.
class giUnitVec2 {
public:
    giUnitVec2() = default;
    giUnitVec2(double x, double y) : giUnitVec2(giVector2(x, y)) {}
    giUnitVec2(giVector2 const & v) : vector_(v) { vector_.unitize(); }

    operator giVector2 const &() const { return vector_; }

    double x() const { return vector_.x(); }
    double y() const { return vector_.y(); }
    double i() const { return vector_.i(); }
    double j() const { return vector_.j(); }
    giLength const & length() const { return vector_.length(); }

    bool invalid() const { return vector_.invalid(); }
    void set_invalid() { vector_.set_invalid(); }

    /// The opposite direction, exactly; of an invalid one, an invalid one.
    giUnitVec2 operator-() const {
        giUnitVec2 opposite = *this;
        if (!invalid()) opposite.vector_ = -vector_;
        return opposite;
    }

    double dot(giVector2 const & b) const { return vector_.dot(b); }
    double cross(giVector2 const & b) const { return vector_.cross(b); }

    giPoint2 anchor() const { return vector_.anchor(); }

private:
    giVector2 vector_;
};

using giUnitVec2coDynArr = coDynArr<giUnitVec2>;

inline giUnitVec2 giVector2::unit() const {
    return giUnitVec2(*this);
}
