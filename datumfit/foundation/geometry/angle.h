#pragma once

#include <datumfit/foundation/geometry/unit_vec3.h>

/// The unit of an angle, also as the tag of its constructor.
enum giAngleType { giAngleRadians = 0, giAngleDegrees = 1 };
enum giAngleCosineTag { giAngleCosine };
enum giAngleTangent2Tag { giAngleTangent2 };
enum giAngle0Tag { giAngle0 };
enum giAngle90Tag { giAngle90 };
enum giAngle180Tag { giAngle180 };

/// Whether a tangent exists.
enum giAngleStatus { giAngleDefined = 0, giAngleUndefined = 1 };

/// An angle, held as its sine and cosine, so without its whole turns: its value is in (-180, 180] degrees.
///
/// Multiples of 30 and 45 degrees are exact: their sine and cosine are the nearest doubles to the true ones, and
/// angle(giAngleDegrees) gives the degrees back.
class giAngle {
public:
    /// The zero angle.
    giAngle() : giAngle(0.0, 1.0) {}

    giAngle(giAngleType unit, double value);

    /// The angle in [0, 180] degrees of a cosine, which is clamped to [-1, 1].
    giAngle(giAngleCosineTag, double cosine);

    /// The angle of an arc tangent of two: sine and cosine times any positive factor. The zero angle when both are 0.
    giAngle(giAngleTangent2Tag, double sine_side, double cosine_side);

    giAngle(giAngle0Tag) : giAngle(0.0, 1.0) {}
    giAngle(giAngle90Tag) : giAngle(1.0, 0.0) {}
    giAngle(giAngle180Tag) : giAngle(0.0, -1.0) {}

    double sin() const { return sine_; }
    double cos() const { return cosine_; }

    /// The value, above -180 and up to 180 degrees.
    double angle(giAngleType unit) const;

    /// The tangent; 0 with status giAngleUndefined at a right angle.
    double tan(giAngleStatus & status) const;

    bool operator<(giAngle const & b) const { return angle(giAngleRadians) < b.angle(giAngleRadians); }
    bool operator>(giAngle const & b) const { return b < *this; }

    /// Whether the two differ by at most tol, on the shorter way round. A negative tol finds none.
    bool coincident(giAngle const & b, giAngle const & tol) const;

private:
    // A sine of -0.0 would turn half a turn into minus half a turn.
    giAngle(double sine, double cosine) : sine_(sine + 0.0), cosine_(cosine) {}

    double sine_, cosine_;
};

/// The angle between two directions, from 0 to 180 degrees, with all its digits also near either end.
giAngle unsigned_angle(giUnitVec3 const & a, giUnitVec3 const & b);
