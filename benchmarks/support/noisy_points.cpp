#include <benchmarks/support/noisy_points.h>

#include <cmath>
#include <random>

namespace datumfit::benchmarks {

namespace {

constexpr double size = 40.0;  // radius of round parts, half the length of flat ones
giPoint2 const centre2(311.7, -142.3);
giPoint3 const centre3(311.7, -142.3, 207.9);

// Uniform numbers from a generator whose sequence the standard fixes.
class Uniform {
public:
    double operator()(double lo, double hi) { return lo + (hi - lo) * static_cast<double>(engine_() >> 11) * 0x1p-53; }
    double turn() { return (*this)(0.0, 2.0 * utMath::pi()); }
    double error() { return (*this)(-form_error * size, form_error * size); }

private:
    std::mt19937_64 engine_{20240229};
};

template <class Array, class Make>
Array make_points(int n, Make make) {
    Array points(n, 1);
    Uniform uniform;
    for (int i = 0; i < n; ++i) points.append(make(uniform));
    return points;
}

giVector3 across(Frame const & frame) {
    return frame.normal.cross(frame.along);
}

// A surface of revolution about the normal of the general frame, which narrows along it by the half angle.
giPoint3coDynArr noisy_taper(int n, double half_angle) {
    Frame const frame = general_frame();
    giVector3 const side = across(frame);
    double const slope = std::tan(half_angle);
    return make_points<giPoint3coDynArr>(n, [&](Uniform & uniform) {
        double const height = uniform(-size, size), turn = uniform.turn();
        double const radius = size - slope * height + uniform.error() / std::cos(half_angle);
        giVector3 const along = radius * std::cos(turn) * frame.along;
        giVector3 const aside = radius * std::sin(turn) * side;
        return frame.origin + along + aside + height * frame.normal;
    });
}

}  // namespace

Frame general_frame() {
    giUnitVec3 const normal(0.36, -0.48, 0.8);
    return {centre3, normal, normal.any_normal()};
}

giPoint2coDynArr noisy_line2(int n) {
    giUnitVec2 const along(0.8, 0.6);
    giVector2 const & direction = along;
    return make_points<giPoint2coDynArr>(n, [&](Uniform & uniform) {
        return centre2 + uniform(-size, size) * direction + uniform.error() * direction.orthogonal();
    });
}

giPoint2coDynArr noisy_circle2(int n) {
    return make_points<giPoint2coDynArr>(n, [](Uniform & uniform) {
        double const turn = uniform.turn(), radius = size + uniform.error();
        return centre2 + giVector2(radius * std::cos(turn), radius * std::sin(turn));
    });
}

giPoint3coDynArr noisy_line3(int n) {
    Frame const frame = general_frame();
    giVector3 const side = across(frame);
    return make_points<giPoint3coDynArr>(n, [&](Uniform & uniform) {
        giVector3 const along = uniform(-size, size) * frame.along;
        giVector3 const aside = uniform.error() * side;
        return frame.origin + along + aside + uniform.error() * frame.normal;
    });
}

giPoint3coDynArr noisy_plane(int n) {
    Frame const frame = general_frame();
    giVector3 const side = across(frame);
    return make_points<giPoint3coDynArr>(n, [&](Uniform & uniform) {
        giVector3 const along = uniform(-size, size) * frame.along;
        giVector3 const aside = uniform(-0.7 * size, 0.7 * size) * side;
        return frame.origin + along + aside + uniform.error() * frame.normal;
    });
}

giPoint3coDynArr noisy_circle3(int n) {
    Frame const frame = general_frame();
    giVector3 const side = across(frame);
    return make_points<giPoint3coDynArr>(n, [&](Uniform & uniform) {
        double const turn = uniform.turn(), radius = size + uniform.error();
        giVector3 const along = radius * std::cos(turn) * frame.along;
        giVector3 const aside = radius * std::sin(turn) * side;
        return frame.origin + along + aside + uniform.error() * frame.normal;
    });
}

giPoint3coDynArr noisy_sphere(int n) {
    return make_points<giPoint3coDynArr>(n, [](Uniform & uniform) {
        double const height = uniform(-1.0, 1.0), turn = uniform.turn(), radius = size + uniform.error();
        double const parallel = std::sqrt(1.0 - height * height);
        return centre3 + radius * giVector3(parallel * std::cos(turn), parallel * std::sin(turn), height);
    });
}

giPoint3coDynArr noisy_cylinder(int n) {
    return noisy_taper(n, 0.0);
}

giPoint3coDynArr noisy_cone(int n) {
    return noisy_taper(n, 0.35);
}

giPoint3coDynArr noisy_torus(int n) {
    Frame const frame = general_frame();
    giVector3 const side = across(frame);
    return make_points<giPoint3coDynArr>(n, [&](Uniform & uniform) {
        double const turn = uniform.turn(), around = uniform.turn(), minor = 0.3 * size + uniform.error();
        giVector3 const away = std::cos(turn) * frame.along + std::sin(turn) * side;
        return frame.origin + (size + minor * std::cos(around)) * away + minor * std::sin(around) * frame.normal;
    });
}

doublecoDynArr probe_radii(int n) {
    doublecoDynArr radii(n, 1);
    for (int i = 0; i < n; ++i) radii.append(1.5);
    return radii;
}

}  // namespace datumfit::benchmarks
