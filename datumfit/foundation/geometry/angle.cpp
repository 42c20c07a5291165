#include <datumfit/foundation/geometry/angle.h>
#include <datumfit/foundation/geometry/vector2.h>
#include <datumfit/foundation/utilities/math.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace {

constexpr double radians_in_degree = utMath::pi() / 180.0;

struct sine_and_cosine {
    double sine, cosine;
};

// Of -45 to 45 degrees. The product by pi / 180 is rounded, which would cost 30 degrees and 45 degrees their sine.
sine_and_cosine of_half_quadrant(double degrees) {
    double const root_3_of_4 = std::sqrt(0.75), root_1_of_2 = std::sqrt(0.5);
    if (std::abs(degrees) == 30.0) return {std::copysign(0.5, degrees), root_3_of_4};
    if (std::abs(degrees) == 45.0) return {std::copysign(root_1_of_2, degrees), root_1_of_2};
    double const radians = degrees * radians_in_degree;
    return {std::sin(radians), std::cos(radians)};
}

sine_and_cosine of_degrees(double degrees) {
    int quarter_turns = 0;
    auto const [s, c] = of_half_quadrant(std::remquo(degrees, 90.0, &quarter_turns));  // the remainder is exact
    switch (quarter_turns & 3) {
        case 0:
            return {s, c};
        case 1:
            return {c, -s};
        case 2:
            return {-s, -c};
        default:
            return {-c, s};
    }
}

// The degrees of an angle of which tan = s / c, 0 <= s <= c: from 0 to 45.
double degrees_in_half_quadrant(double s, double c) {
    if (s == 0.5) return 30.0;
    return std::atan2(s, c) / radians_in_degree;
}

double to_degrees(double sine, double cosine) {
    double s = std::abs(sine), c = std::abs(cosine);
    bool const steep = s > c;
    if (steep) std::swap(s, c);
    double degrees = degrees_in_half_quadrant(s, c);
    if (steep) degrees = 90.0 - degrees;
    if (cosine < 0.0) degrees = 180.0 - degrees;
    return sine < 0.0 ? -degrees : degrees;
}

}  // namespace

giAngle::giAngle(giAngleType unit, double value) : giAngle() {
    sine_and_cosine const of_value =
        unit == giAngleDegrees ? of_degrees(value) : sine_and_cosine{std::sin(value), std::cos(value)};
    *this = giAngle(of_value.sine, of_value.cosine);
}

giAngle::giAngle(giAngleCosineTag, double cosine) : giAngle() {
    double const c = std::clamp(cosine, -1.0, 1.0);
    *this = giAngle(std::sqrt((1.0 - c) * (1.0 + c)), c);
}

giAngle::giAngle(giAngleTangent2Tag, double sine_side, double cosine_side) : giAngle() {
    giVector2 const direction = giVector2(cosine_side, sine_side).unitize();
    if (!direction.invalid()) *this = giAngle(direction.y(), direction.x());
}

double giAngle::angle(giAngleType unit) const {
    return unit == giAngleDegrees ? to_degrees(sine_, cosine_) : std::atan2(sine_, cosine_);
}

double giAngle::tan(giAngleStatus & status) const {
    bool const exists = std::abs(cosine_) >= std::numeric_limits<double>::min();  // below, the quotient may overflow
    status = exists ? giAngleDefined : giAngleUndefined;
    return exists ? sine_ / cosine_ : 0.0;
}

bool giAngle::coincident(giAngle const & b, giAngle const & tol) const {
    double const sine_of_difference = sine_ * b.cosine_ - cosine_ * b.sine_;
    double const cosine_of_difference = cosine_ * b.cosine_ + sine_ * b.sine_;
    return std::atan2(std::abs(sine_of_difference), cosine_of_difference) <= tol.angle(giAngleRadians);
}

giAngle unsigned_angle(giUnitVec3 const & a, giUnitVec3 const & b) {
    return giAngle(giAngleTangent2, a.cross(b).length(), a.dot(b));
}
