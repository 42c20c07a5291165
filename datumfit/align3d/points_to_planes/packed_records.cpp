#include <datumfit/align3d/points_to_planes/packed_records.h>
#include <datumfit/align3d/points_to_planes/record_pass.h>
#include <datumfit/foundation/maths/point_pass.h>

#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wpsabi"  // no vector crosses a call: all that hold one are inlined into the pass
#endif

namespace datumfit {
namespace internal {

namespace {

constexpr int record_size = 9;

// A transform as its rows, which a pass keeps in registers.
struct rows {
    triple<double> x, y, z, t;

    rows(giMatrix4 const & m, giVector3 const & shift)
        : x(m(0, 0), m(0, 1), m(0, 2)), y(m(1, 0), m(1, 1), m(1, 2)), z(m(2, 0), m(2, 1), m(2, 2)),
          t(m(0, 3) + shift.x(), m(1, 3) + shift.y(), m(2, 3) + shift.z()) {}

    template <class Real>
    DATUMFIT_INLINE triple<Real> from_plane_point(Real const (&q)[record_size]) const {
        triple<Real> const p(q[0], q[1], q[2]);
        return triple<Real>(p.dot(triple<Real>(Real(x.x), Real(x.y), Real(x.z))) + Real(t.x) - q[3],
                            p.dot(triple<Real>(Real(y.x), Real(y.y), Real(y.z))) + Real(t.y) - q[4],
                            p.dot(triple<Real>(Real(z.x), Real(z.y), Real(z.z))) + Real(t.z) - q[5]);
    }
};

template <class Real>
DATUMFIT_INLINE triple<Real> normal_of(Real const (&q)[record_size]) {
    return triple<Real>(q[6], q[7], q[8]);
}

struct add_pull {
    rows x;
    double share;

    template <class Real>
    DATUMFIT_INLINE void operator()(Real const (&q)[record_size], Real (&s)[3]) const {
        triple<Real> const d = x.from_plane_point(q), n = normal_of(q);
        Real const along = Real(1.0 - share) * d.dot(n);
        s[0] += along * n.x + Real(share) * d.x;
        s[1] += along * n.y + Real(share) * d.y;
        s[2] += along * n.z + Real(share) * d.z;
    }
};

struct add_square {
    rows x;
    double share;

    template <class Real>
    DATUMFIT_INLINE void operator()(Real const (&q)[record_size], Real (&s)[1]) const {
        triple<Real> const e = x.from_plane_point(q);
        Real const r = e.dot(normal_of(q));
        s[0] += Real(1.0 - share) * (r * r) + Real(share) * e.dot(e);
    }
};

}  // namespace

void packed_records::add(sqPlaneAndPoint const & r) {
    numbers_.insert(numbers_.end(), {r.point.x(), r.point.y(), r.point.z(), r.plane_point.x(), r.plane_point.y(),
                                     r.plane_point.z(), r.normal.x(), r.normal.y(), r.normal.z()});
}

int packed_records::size() const {
    return static_cast<int>(numbers_.size() / record_size);
}

giVector3 packed_records::sum_of_pulls(giXform3 const & x, double share) const {
    double sum[3] = {};
    add_pull const add{rows(x.matrix(), giVector3(0.0, 0.0, 0.0)), share};
    sum_over_points<record_size>(numbers_.data(), size(), add, sum);
    return giVector3(sum[0], sum[1], sum[2]);
}

double packed_records::sum_of_squares(giXform3 const & x, giVector3 const & shift, double share) const {
    double sum[1] = {};
    sum_over_points<record_size>(numbers_.data(), size(), add_square{rows(x.matrix(), shift), share}, sum);
    return sum[0];
}

}  // namespace internal
}  // namespace datumfit
