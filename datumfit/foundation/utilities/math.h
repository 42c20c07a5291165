#pragma once

#include <cmath>
#include <limits>

/// Small functions of plain numbers.
class utMath {
public:
    static double abs(double x) { return std::abs(x); }
    static double sqrt(double x) { return std::sqrt(x); }
    static double square(double x) { return x * x; }
    static double sin(double x) { return std::sin(x); }
    static double cos(double x) { return std::cos(x); }
    static double atan(double x) { return std::atan(x); }
    static double atan2(double y, double x) { return std::atan2(y, x); }
    static double acos(double x) { return std::acos(x); }

    /// The first when it is strictly the smaller, else the second; so the second when either is a NaN.
    static double min(double a, double b) { return a < b ? a : b; }
    static int min(int a, int b) { return a < b ? a : b; }

    /// The first when it is strictly the greater, else the second; so the second when either is a NaN.
    static double max(double a, double b) { return a > b ? a : b; }
    static int max(int a, int b) { return a > b ? a : b; }

    /// -1, 0 or 1; 0 for zeros of either sign and for a NaN.
    static int sign(double x) { return (x > 0.0 ? 1 : 0) - (x < 0.0 ? 1 : 0); }

    /// The nearest int not above x; the last int on that side where no int is so far out, and 0 for a NaN.
    static int floor(double x) {
        int const t = truncated(x);
        return t > x && t > std::numeric_limits<int>::min() ? t - 1 : t;
    }

    /// The nearest int not below x; the last int on that side where no int is so far out, and 0 for a NaN.
    static int ceiling(double x) {
        int const t = truncated(x);
        return t < x && t < std::numeric_limits<int>::max() ? t + 1 : t;
    }

    static constexpr double pi() { return 3.141592653589793; }
    static constexpr double max_double() { return std::numeric_limits<double>::max(); }
    static constexpr float max_float() { return std::numeric_limits<float>::max(); }

    /// The remainder of a on division by b, from 0 to below b; for b below 0, from 0 down to above b; for b 0, a
    /// itself. So remd(angle, pi()) brings an angle into the half turn from 0, whatever its sign.
    static double remd(double a, double b) {
        if (b == 0.0) {
            return a;
        }
        double const r = std::fmod(a, b);  // exact, with the sign of a
        bool const other_side = (r < 0.0 && b > 0.0) || (r > 0.0 && b < 0.0);
        double const shifted = other_side ? r + b : r;
        // A remainder just short of 0 may round to b itself; and a zero is given without a sign.
        return shifted == b ? 0.0 : shifted + 0.0;
    }

private:
    static int truncated(double x) {
        if (!(std::abs(x) < 2147483648.0)) {
            return x > 0.0 ? std::numeric_limits<int>::max() : x < 0.0 ? std::numeric_limits<int>::min() : 0;
        }
        return static_cast<int>(x);
    }
};
