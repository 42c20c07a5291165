#include <datumfit/align3d/points_to_planes/interpolated_square_dists_sum_free.h>

#include <datumfit/align3d/points_to_planes/record_pass.h>
#include <datumfit/align3d/points_to_planes/tangent_turn.h>

#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wpsabi"  // no vector crosses a call: all that hold one are inlined into the pass
#endif

namespace {

using namespace datumfit::internal;

// The squares of one record under a transform.
struct squares {
    giXform3 const & xform;
    double point_weight;
    static constexpr int sums = 1;

    template <class Real>
    DATUMFIT_INLINE void add(lane_record<Real> const & r, Real (&s)[1]) const {
        triple<Real> const d = triple<Real>(moved(0, r.p), moved(1, r.p), moved(2, r.p)) - r.q;
        Real const deviation = d.dot(r.n);
        s[0] += deviation * deviation + Real(point_weight) * d.dot(d);
    }

    template <class Real>
    DATUMFIT_INLINE Real moved(int row, triple<Real> const & p) const {
        giMatrix4 const & m = xform.matrix();
        return Real(m(row, 0)) * p.x + Real(m(row, 1)) * p.y + Real(m(row, 2)) * p.z + Real(m(row, 3));
    }
};

}  // namespace

sqInterpolatedSquareDistsSumFree::sqInterpolatedSquareDistsSumFree(sqPlaneAndPointcoDynArr const & pairs,
                                                                   mlVector const & start, mlVector const & end,
                                                                   double rotation_scale, double point_weight,
                                                                   double tiny_angle)
    : pairs_(pairs), start_(start), end_(end), rotation_scale_(rotation_scale), point_weight_(point_weight),
      tiny_angle_(tiny_angle) {}

sqInterpolatedSquareDistsSumFree::~sqInterpolatedSquareDistsSumFree() = default;

giXform3 const & sqInterpolatedSquareDistsSumFree::interpolate_xform(double t) const {
    double u[6];
    for (int k = 0; k < 6; ++k) u[k] = (1.0 - t) * start_[k] + t * end_[k];
    giVector3 const r(rotation_scale_ * u[3], rotation_scale_ * u[4], rotation_scale_ * u[5]);
    xform_.become(giXformProduct, giXform3(giXformTranslate, giVector3(u[0], u[1], u[2])),
                  tangent_turn(giPoint3(giOrigin), r, tiny_angle_));
    return xform_;
}

double sqInterpolatedSquareDistsSumFree::function(double t) const {
    double sum[1] = {};
    sum_over_records(pairs_, squares{interpolate_xform(t), point_weight_}, sum);
    return sum[0];
}
