#pragma once

#include <datumfit/foundation/geometry/unit_vec3.h>

/// Derivatives of the unit vector w = v / |v| of a vector v that depends on some parameter.
class sknUnitVectorDifferentiator3 {
public:
    /// A null vector has no direction: unit() is then invalid and all derivatives are null.
    explicit sknUnitVectorDifferentiator3(giVector3 const & v) : unit_(v), length_(v.length()) {}

    giUnitVec3 const & unit() const { return unit_; }

    /// Of the derivative dv of v, writes that of w: the part of dv across w, over |v|.
    void first_derivative(giVector3 const & dv, giVector3 & dw) const {
        dw = unit_.invalid() ? giVector3(0.0, 0.0, 0.0) : 1.0 / length_.value() * unit_.project_normal(dv);
    }

private:
    giUnitVec3 unit_;
    giLength length_;
};
