#pragma once

#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/maths/all_points_model.h>
#include <datumfit/foundation/maths/lanes.h>

#include <limits>
#include <vector>

namespace datumfit {
namespace internal {

/// Nearer to the axis than 2^-23 a point has no direction away from it. The next smaller number, as only distances
/// below count as such.
constexpr double on_fixed_axis = 0x1.fffffffffffffp-24;

/// The line z = q + k r of least squares through the profile of points about an axis, and how it follows the axis.
///
/// With r, z and the direction (u, v) towards the axis from their means, k = sum(r z) / sum(r r). As dr = u dx + v dy,
/// dk/dx = (sum(u z) - 2 k sum(u r)) / sum(r r); and q = -k mean(r), from the mean height.
struct profile_line {
    /// Sums over all points: the distance from the axis less some number not far from its mean, the height z from the
    /// exact mean.
    enum sum { r, rr, rz, u, ru, zu, v, rv, zv, sums };

    double slope = 0.0;
    double d_slope[2] = {};
    double mean_radius = 0.0;
    double mean_unit[2] = {};
    bool exists = false;

    /// For n points, with distances less `origin`. There is no line through points of one distance.
    void fit(double const * s, double n, double origin) {
        *this = profile_line();
        double const mean_r = s[r] / n;
        double const spread = s[rr] - mean_r * s[r];
        exists = n * spread >= 0x1p-23 && n * spread <= std::numeric_limits<double>::max();
        if (!exists) return;
        mean_radius = origin + mean_r;
        slope = s[rz] / spread;
        for (int m = 0; m < 2; ++m) {
            double const * const along = s + 3 * m;
            mean_unit[m] = along[u] / n;
            d_slope[m] = (along[zu] - 2.0 * slope * (along[ru] - mean_r * along[u])) / spread;
        }
    }

    /// q, from the mean height, and its derivatives.
    double offset() const { return -slope * mean_radius; }
    double d_offset(int m) const { return -slope * mean_unit[m] - mean_radius * d_slope[m]; }
};

/// Adds one point to them; Real is double or lanes.
template <class Real>
DATUMFIT_INLINE void add_to_profile(Real const & r, Real const & z, Real const & u, Real const & v,
                                    Real (&s)[profile_line::sums]) {
    Real const e[2] = {u, v};
    s[profile_line::r] += r;
    s[profile_line::rr] += r * r;
    s[profile_line::rz] += r * z;
    for (int m = 0; m < 2; ++m) {
        s[profile_line::u + 3 * m] += e[m];
        s[profile_line::ru + 3 * m] += r * e[m];
        s[profile_line::zu + 3 * m] += z * e[m];
    }
}

/// The solver's form of sqLeastSquareConeFixedAxis: x is the place of the axis from the mean of the points.
///
/// Two passes over the points a step, the first for the line and the second for the products of the rows. From the mean
/// line and the mean direction both the residuals and the rows keep their digits, wherever the points lie:
/// d = z - k r and, by x, -k u - r dk/dx.
class fixed_axis_passes : public all_points_model {
public:
    explicit fixed_axis_passes(giPoint3coDynArr const & points);

    /// Sees the points in another frame of three perpendicular unit vectors.
    void set_frame(giVector3 const & x_dir, giVector3 const & y_dir, giVector3 const & axis);

    void from_parameters(mlVector const & p, mlVector & x) const override;
    void to_parameters(mlVector const & x, mlVector & p) const override;
    void place(mlVector & x) override;
    int unknowns() const override { return 2; }
    void move(mlVector const & x, mlVector const & step, mlVector & to) const override;
    void difference(mlVector const & from, mlVector const & to, mlVector & step) const override;
    void scales(mlVector & s) const override;
    double sum_of_squares(double bound) override;
    void distances(double * d) override;
    bool gram(double * upper) override;
    int rows(int first, int count, double * columns, int stride) override;
    double resolution() const override;

    /// The passes in lanes of one kind or the other give the same bits; a test says so.
    void use_wide_lanes(bool wide) { wide_ = wide && has_wide_lanes(); }

private:
    template <int Sums, class Pass>
    void add_up(Pass const & pass, double (&sums)[Sums]) const;
    void find_line();

    giPoint3coDynArr const & points_;
    int n_;
    bool wide_;
    double mean_[3];
    std::vector<double> x_, y_, z_;  // the points in the frame, from their mean
    std::vector<double> r_, u_, v_;  // their distances from the axis and the directions towards it
    double centre_[2] = {};          // the mean in the frame
    double height_ = 0.0;            // the mean height
    double mean_square_ = 0.0;       // of x and y
    double reach_ = 0.0;             // the greatest of all coordinates
    double at_[2] = {};              // the place of the axis
    bool found_ = false;             // the line belongs to it
    profile_line line_;
    double level_ = 0.0;  // what heights count from where there is no line
};

}  // namespace internal
}  // namespace datumfit
