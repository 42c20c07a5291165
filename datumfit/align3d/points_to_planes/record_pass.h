#pragma once

#include <datumfit/align3d/plane_and_point.h>
#include <datumfit/foundation/maths/point_pass.h>

#include <cstddef>

#if !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpsabi"  // no vector crosses a call: all that hold one are inlined into the pass
#endif

namespace datumfit {
namespace internal {

/// A vector, or those of four records side by side.
template <class Real>
struct triple {
    Real x, y, z;

    DATUMFIT_INLINE triple(Real const & x0, Real const & y0, Real const & z0) : x(x0), y(y0), z(z0) {}
    template <class Vector>
    DATUMFIT_INLINE triple(Vector const & v) : x(v.x()), y(v.y()), z(v.z()) {}  // implicit: one vector for all

    friend DATUMFIT_INLINE triple operator-(triple const & a, triple const & b) {
        return triple(a.x - b.x, a.y - b.y, a.z - b.z);
    }
    DATUMFIT_INLINE Real dot(triple const & b) const { return x * b.x + y * b.y + z * b.z; }
    DATUMFIT_INLINE triple cross(triple const & b) const {
        return triple(y * b.z - z * b.y, z * b.x - x * b.z, x * b.y - y * b.x);
    }
};

/// What a pass reads of a record, or of four side by side: the measured point, and the point and normal of the plane.
template <class Real>
struct lane_record {
    triple<Real> p, q, n;
};

constexpr int record_doubles = static_cast<int>(sizeof(sqPlaneAndPoint) / sizeof(double));
constexpr int plane_point_place = static_cast<int>(offsetof(sqPlaneAndPoint, plane_point) / sizeof(double));
constexpr int normal_place = static_cast<int>(offsetof(sqPlaneAndPoint, normal) / sizeof(double));
constexpr int point_place = static_cast<int>(offsetof(sqPlaneAndPoint, point) / sizeof(double));

/// Hands the records of a pass to a kernel. The numbers between points and normal are not looked at, so they are not
/// loaded either.
template <class Kernel>
struct for_record {
    Kernel const & kernel;

    template <class Real>
    DATUMFIT_INLINE void operator()(Real const (&q)[record_doubles], Real (&s)[Kernel::sums]) const {
        auto const vector_at = [&](int k) { return triple<Real>(q[k], q[k + 1], q[k + 2]); };
        kernel.add(lane_record<Real>{vector_at(point_place), vector_at(plane_point_place), vector_at(normal_place)}, s);
    }
};

/// One pass over the records: kernel.add(record, s), always inlined, adds what is summed of a lane_record to the
/// Kernel::sums numbers at s. The same bits on every machine.
template <class Kernel>
void sum_over_records(sqPlaneAndPointcoDynArr const & records, Kernel const & kernel, double (&total)[Kernel::sums]) {
    sum_over_points<record_doubles>(reinterpret_cast<double const *>(records.data()), records.size(),
                                    for_record<Kernel>{kernel}, total);
}

}  // namespace internal
}  // namespace datumfit

#if !defined(__clang__)
#pragma GCC diagnostic pop
#endif
