#include <datumfit/foundation/geometry/xform2.h>
#include <datumfit/foundation/geometry/xform3.h>
#include <datumfit/foundation/maths/point_pass.h>
#include <datumfit/foundation/maths/singular_value_decomposition.h>
#include <datumfit/matching/points_to_points.h>

#include <algorithm>
#include <cmath>

#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wpsabi"  // no vector crosses a call: all that hold one are inlined into the pass
#endif

namespace {

// Adds the moments of a pair, then the coordinates of its first and its second point.
template <int d>
struct add_moments {
    static constexpr int sums = d * d + 2 * d;

    template <class Real>
    DATUMFIT_INLINE void operator()(Real const (&pair)[2 * d], Real (&s)[sums]) const {
        for (int j = 0; j < d; ++j) {
            for (int i = 0; i < d; ++i) s[d * j + i] += pair[i] * pair[d + j];
        }
        for (int i = 0; i < 2 * d; ++i) s[d * d + i] += pair[i];
    }
};

constexpr double most_stretched = 1e10;  // the points lie on a line when they spread this much more along than across

double determinant(double const (&w)[2][2]) {
    return w[0][0] * w[1][1] - w[0][1] * w[1][0];
}

double determinant(double const (&w)[3][3]) {
    return w[0][0] * (w[1][1] * w[2][2] - w[1][2] * w[2][1]) - w[0][1] * (w[1][0] * w[2][2] - w[1][2] * w[2][0]) +
           w[0][2] * (w[1][0] * w[2][1] - w[1][1] * w[2][0]);
}

// V U^T, the last column of V times a sign.
template <int d>
void multiply_factors(mlMatrix const & v, mlMatrix const & u, double sign, double (&w)[d][d]) {
    for (int i = 0; i < d; ++i) {
        for (int j = 0; j < d; ++j) {
            w[i][j] = 0.0;
            for (int k = 0; k < d; ++k) w[i][j] += (k == d - 1 ? sign : 1.0) * v(i, k) * u(j, k);
        }
    }
}

}  // namespace

void sqPointsToPoints::initialise_matrix() {
    std::fill_n(moments_, dimension_ * dimension_, 0.0);
    std::fill_n(sum_first_, dimension_, 0.0);
    std::fill_n(sum_second_, dimension_, 0.0);
}

void sqPointsToPoints::begin(double const * first, double const * second) {
    initialise_matrix();
    std::copy_n(first, dimension_, origin_first_);
    std::copy_n(second, dimension_, origin_second_);
}

void sqPointsToPoints::sum_up(int pairs) {
    if (dimension_ == 3) {
        sum_up_in<3>(pairs);
    } else {
        sum_up_in<2>(pairs);
    }
}

template <int d>
void sqPointsToPoints::sum_up_in(int pairs) {
    double sums[add_moments<d>::sums] = {};
    datumfit::internal::sum_over_points<2 * d>(waiting_, pairs, add_moments<d>(), sums);
    for (int k = 0; k < d * d; ++k) moments_[k] += sums[k];
    for (int i = 0; i < d; ++i) {
        sum_first_[i] += sums[d * d + i];
        sum_second_[i] += sums[d * d + d + i];
    }
}

// Finds the rotation, as rows, and the point that goes to the origin.
template <int d>
bool sqPointsToPoints::solve(double (&w)[d][d], double (&origin)[d]) {
    sum_up(count_ & (block_size - 1));
    double const f = 1.0 / count_;
    for (int j = 0; j < d; ++j) {
        for (int i = 0; i < d; ++i) moments_[d * j + i] -= f * sum_second_[j] * sum_first_[i];
    }
    for (int i = 0; i < d; ++i) {
        sum_first_[i] = sum_first_[i] * f + origin_first_[i];
        sum_second_[i] = sum_second_[i] * f + origin_second_[i];
    }
    mlSingularValueDecomposition const svd(mlMatrix(utConvert, moments_, d, d));
    multiply_factors(svd.V(), svd.U(), 1.0, w);
    if (determinant(w) < 0.0) multiply_factors(svd.V(), svd.U(), -1.0, w);
    for (int i = 0; i < d; ++i) {
        origin[i] = sum_second_[i];
        for (int k = 0; k < d; ++k) origin[i] -= w[k][i] * sum_first_[k];
    }
    return std::abs(svd.diagonal()[0]) <= most_stretched * std::abs(svd.diagonal()[1]);
}

bool sqPointsToPoints::get_xform(giXform2 & transform) {
    if (dimension_ != 2) return false;
    double w[2][2], origin[2];
    bool const determined = solve(w, origin);
    transform.become(giXformLocal, giPoint2(origin[0], origin[1]), giUnitVec2(w[0][0], w[0][1]));
    return determined;
}

bool sqPointsToPoints::get_xform(giXform3 & transform) {
    if (dimension_ != 3) return false;
    double w[3][3], origin[3];
    bool const determined = solve(w, origin);
    transform.become(giXformLocal, giPoint3(origin[0], origin[1], origin[2]), giUnitVec3(w[2][0], w[2][1], w[2][2]),
                     giUnitVec3(w[1][0], w[1][1], w[1][2]));
    return determined;
}
