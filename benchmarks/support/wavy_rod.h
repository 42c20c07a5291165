#pragma once

#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/vector3.h>
#include <datumfit/foundation/surfaces/triangle.h>
#include <datumfit/foundation/utilities/math.h>

#include <cmath>

namespace datumfit::benchmarks {

struct triangles {
    giPoint3coDynArr vertices;
    sknTrianglecoDynArr corners;
};

inline giPoint3 rod_with_waves(double u, double v) {
    double const radius = 40.0 + 5.0 * std::cos(3.0 * u) * std::sin(5.0 * v);
    return giPoint3(300.0 + radius * std::cos(u), radius * std::sin(u) - 200.0, 150.0 * v);
}

// A closed band of about n triangles, bent both ways, of some 90 by 90 by 150, hundreds from the origin.
inline triangles make_triangles(int n) {
    int const around = static_cast<int>(std::sqrt(0.5 * n)), along = n / (2 * around);
    triangles t;
    t.vertices.reserve(around * (along + 1));
    t.corners.reserve(2 * around * along);
    for (int j = 0; j <= along; ++j) {
        for (int i = 0; i < around; ++i) {
            t.vertices.append(rod_with_waves(2.0 * utMath::pi() * i / around, 1.0 * j / along));
        }
    }
    for (int j = 0; j < along; ++j) {
        for (int i = 0; i < around; ++i) {
            int const a = around * j + i, b = around * j + (i + 1) % around;
            t.corners.append({a, b, b + around});
            t.corners.append({a, b + around, a + around});
        }
    }
    return t;
}

}  // namespace datumfit::benchmarks
