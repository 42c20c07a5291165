#include <datumfit/direct/sphere_fit.h>

#include <datumfit/foundation/maths/point_pass.h>
#include <datumfit/primitives/point_sums.h>

#include <algorithm>
#include <cmath>

#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wpsabi"  // no vector crosses a call: all that hold one are inlined into the pass
#endif

using namespace datumfit::internal;

namespace {

// An element up to this counts as 0.
constexpr double least_element = 1e-20;

// The sums of x, y, z, of xx, yy, zz, of xy, xz, yz, and of r²x, r²y, r²z.
struct add_moments {
    template <class Real>
    DATUMFIT_INLINE void operator()(Real const (&q)[3], Real (&s)[12]) const {
        Real const xx = q[0] * q[0], yy = q[1] * q[1], zz = q[2] * q[2], square = xx + yy + zz;
        for (int k = 0; k < 3; ++k) {
            s[k] += q[k];
            s[9 + k] += square * q[k];
        }
        s[3] += xx;
        s[4] += yy;
        s[5] += zz;
        s[6] += q[0] * q[1];
        s[7] += q[0] * q[2];
        s[8] += q[1] * q[2];
    }
};

int pivot_row(double const * m, int rows, int cols, int c) {
    int pivot = c;
    for (int r = c + 1; r < rows; ++r) {
        if (std::abs(m[r * cols + c]) > std::abs(m[c * cols + c])) pivot = r;
    }
    return pivot;
}

}  // namespace

sqSphereFit::sqSphereFit(giPoint3coDynArr const & points) : points_(&points) {
    do_fit();
}

void sqSphereFit::do_fit() {
    int const n = points_->size();
    if (n < 4) {
        status_ = sqDirectFitTooFewPoints;
        return;
    }
    double s[12] = {};
    sum_over_points<3>(plain(*points_), n, add_moments(), s);
    double m[] = {
        s[3], s[6], s[7], s[0],      -s[9],                  //
        s[6], s[4], s[8], s[1],      -s[10],                 //
        s[7], s[8], s[5], s[2],      -s[11],                 //
        s[0], s[1], s[2], double(n), -(s[3] + s[4] + s[5]),  //
    };
    matrix_rowred(m, 4, 5);
    centre_ = giPoint3(-0.5 * m[4], -0.5 * m[9], -0.5 * m[14]);
    radius_ = std::sqrt(centre_.release().dot(centre_.release()) - m[19]);
    status_ = sqDirectFitSuccess;
}

double sqSphereFit::chi() const {
    double sum[1] = {};
    square_from_round<3> const add = {{centre_.x(), centre_.y(), centre_.z()}, radius_};
    sum_over_points<3>(plain(*points_), points_->size(), add, sum);
    return std::sqrt(sum[0] / points_->size());
}

int sqSphereFit::fit(giPoint3coDynArr const & points, giPoint3 & centre, double & radius) {
    sqSphereFit const sphere(points);
    if (sphere.status_ != sqDirectFitSuccess) return 0;
    centre = sphere.centre_;
    radius = sphere.radius_;
    return 1;
}

void sqSphereFit::matrix_rowred(double * m, int rows, int cols) {
    int const order = std::min(rows, cols);
    for (int c = 0; c < order; ++c) {
        double * const row = m + c * cols;
        if (c + 1 < order) {
            int const pivot = pivot_row(m, rows, cols, c);
            if (pivot != c) std::swap_ranges(row, row + cols, m + pivot * cols);
        }
        if (!(std::abs(row[c]) > least_element)) continue;
        for (int r = 0; r < rows; ++r) {
            double * const other = m + r * cols;
            if (r == c || !(std::abs(other[c]) > least_element)) continue;
            double const factor = other[c] / row[c];
            for (int k = c; k < cols; ++k) other[k] -= factor * row[k];
        }
    }
    for (int r = 0; r < order; ++r) {
        double * const row = m + r * cols;
        if (!(std::abs(row[r]) > least_element)) continue;
        for (int k = cols - 1; k >= r; --k) row[k] /= row[r];
    }
}
