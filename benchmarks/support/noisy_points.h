#pragma once

#include <datumfit/datumfit.h>

/// Points as a probe takes them, the same on every call: of parts some hundred units from the origin, in no special
/// direction, with uniform form errors of up to 1e-3 of the part's size across the surface.
namespace datumfit::benchmarks {

constexpr double form_error = 1e-3;

/// A plane in general position, that of the plane shapes below, and a direction within it.
struct Frame {
    giPoint3 origin;
    giUnitVec3 normal, along;
};
Frame general_frame();

giPoint2coDynArr noisy_line2(int n);
giPoint2coDynArr noisy_circle2(int n);

giPoint3coDynArr noisy_line3(int n);
giPoint3coDynArr noisy_plane(int n);
giPoint3coDynArr noisy_circle3(int n);
giPoint3coDynArr noisy_sphere(int n);
giPoint3coDynArr noisy_cylinder(int n);  // as long as it is wide
giPoint3coDynArr noisy_cone(int n);      // of half angle 0.35 radians, as long as it is wide in the middle
giPoint3coDynArr noisy_torus(int n);     // whole, of a minor radius of 0.3 major ones

/// The radii of points that one stylus took; with them the points above are probe centres.
doublecoDynArr probe_radii(int n);

}  // namespace datumfit::benchmarks
