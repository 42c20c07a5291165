#pragma once

#include <datumfit/foundation/containers/dyn_arr.h>
#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/vector3.h>

/// A direction in space: a vector of unit length, read as a giVector3 without a copy.
///
/// What it is made from is scaled to unit length; a vector without direction (null, or not finite) gives an invalid
/// one, as does the default constructor. Copies are exact.
class giUnitVec3 {
public:
    giUnitVec3() = default;
    giUnitVec3(double x, double y, double z) : giUnitVec3(giVector3(x, y, z)) {}
    giUnitVec3(giVector3 const & v) : vector_(v) { vector_.unitize(); }
    giUnitVec3(gi_Axis axis) : vector_(axis) {}

    void become(double x, double y, double z) { *this = giUnitVec3(x, y, z); }

    operator giVector3 const &() const { return vector_; }

    double x() const { return vector_.x(); }
    double y() const { return vector_.y(); }
    double z() const { return vector_.z(); }
    double i() const { return vector_.i(); }
    double j() const { return vector_.j(); }
    double k() const { return vector_.k(); }
    giLength const & length() const { return vector_.length(); }

    bool invalid() const { return vector_.invalid(); }
    void set_invalid() { vector_.set_invalid(); }

    /// The opposite direction, exactly; of an invalid one, an invalid one.
    giUnitVec3 operator-() const {
        giUnitVec3 opposite = *this;
        if (!invalid()) opposite.vector_ = -vector_;
        return opposite;
    }

    double dot(giVector3 const & b) const { return vector_.dot(b); }
    giVector3 cross(giVector3 const & b) const { return vector_.cross(b); }

    /// The part of v across this direction.
    giVector3 project_normal(giVector3 const & v) const { return v - dot(v) * vector_; }

    /// Some direction perpendicular to this one, the same on every call.
    giUnitVec3 any_normal() const;

    giPoint3 anchor() const { return vector_.anchor(); }

private:
    giVector3 vector_;
};

using giUnitVec3coDynArr = coDynArr<giUnitVec3>;

inline giUnitVec3 giVector3::unit() const {
    return giUnitVec3(*this);
}
