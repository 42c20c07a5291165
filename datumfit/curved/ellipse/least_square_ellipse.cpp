#include <datumfit/curved/ellipse/least_square_ellipse.h>

#include <datumfit/curved/ellipse/ellipse_kernel.h>
#include <datumfit/primitives/point_sums.h>

#include <cmath>
#include <memory>

using namespace datumfit::internal;

namespace {

constexpr double on_an_axis = 1e-10;

// Nearer to the ellipse than this, a point within the evolute has no direction to its feet.
constexpr double lost_direction = 1e-7;

// From the mean of the points, which lies near the centre.
std::unique_ptr<all_points_model> passes_over(giPoint2coDynArr const & points) {
    double mean[2] = {};
    if (points.size() > 0) mean_of_points(plain(points), 2, points.size(), mean);
    return std::make_unique<lane_model<ellipse_kernel>>(plain(points), nullptr, points.size(), mean);
}

// The foot of a point u along one axis, p long; the other one is q long. Along and across that axis; whether there are
// two feet, with the one on the positive side taken.
bool foot_from_axis(double u, double p, double q, double & along, double & across) {
    bool const in_evolute = q < p && std::abs(u) < p - q * q / p;
    along = in_evolute ? u * p * p / ((p - q) * (p + q)) : u < 0.0 ? -p : p;
    across = in_evolute ? q * std::sqrt(std::abs(1.0 - along / p * (along / p))) : 0.0;
    return in_evolute;
}

double square_of(double x) {
    return x * x;
}

}  // namespace

sqLeastSquareEllipse::sqLeastSquareEllipse(giPoint2coDynArr const & points)
    : sqLeastSquareEllipse(points, typeid(sqLeastSquareEllipse)) {}

sqLeastSquareEllipse::sqLeastSquareEllipse(giPoint2coDynArr const & points, std::type_info const & of_class)
    : sqLeastSquareDistance2(ellipse_kernel::parameters, points) {
    offer_all_points(passes_over(points), of_class);
}

sqLeastSquareEllipse::~sqLeastSquareEllipse() = default;

void sqLeastSquareEllipse::normalize_parameters(mlVector &) const {}

// Writes the coordinates of point i in the ellipse's axes.
void sqLeastSquareEllipse::see(int i) const {
    mlVector const & p = parameters();
    if (p[4] != angle_) {
        angle_ = p[4];
        cosine_ = std::cos(angle_);
        sine_ = std::sin(angle_);
    }
    double const dx = points()[i].x() - p[2], dy = points()[i].y() - p[3];
    foot_.x = dx * cosine_ + dy * sine_;
    foot_.y = dy * cosine_ - dx * sine_;
}

void sqLeastSquareEllipse::get_distance(double & d, int i) const {
    see(i);
    find_foot();
    d = foot_.distance;
    remember_distance(d);
}

void sqLeastSquareEllipse::find_foot() const {
    double const a = std::abs(parameters()[0]), b = std::abs(parameters()[1]);
    foot & f = foot_;
    f.from = !(std::abs(f.x) > on_an_axis)   ? foot::axis_of_b
             : !(std::abs(f.y) > on_an_axis) ? foot::axis_of_a
                                             : foot::general;
    if (f.from == foot::general) {
        bool const swapped = a < b;
        ellipse_foot ellipse;
        ellipse.take(swapped ? b : a, swapped ? a : b);
        auto const found = swapped ? ellipse.find(f.y, f.x) : ellipse.find(f.x, f.y);
        f.nx = swapped ? found.ny : found.nx;
        f.ny = swapped ? found.nx : found.ny;
        f.over_h = found.over_h;
        f.x0 = a * a * f.nx * f.over_h;
        f.y0 = b * b * f.ny * f.over_h;
        f.distance = found.distance;
        return;
    }
    double const side = square_of(f.x / a) + square_of(f.y / b) >= 1.0 ? 1.0 : -1.0;
    bool const along_a = f.from == foot::axis_of_a;
    f.in_evolute = along_a ? foot_from_axis(f.x, a, b, f.x0, f.y0) : foot_from_axis(f.y, b, a, f.y0, f.x0);
    double const along = along_a ? f.x0 - f.x : f.y0 - f.y, across = along_a ? f.y0 : f.x0;
    f.distance = side * (f.in_evolute ? std::sqrt(along * along + across * across) : std::abs(along));
}

void sqLeastSquareEllipse::get_distance_and_gradient(double & d, mlVector & gradient, int i) const {
    get_distance(d, i);
    if (foot_.from == foot::general) {
        general_gradient(gradient);
    } else if (foot_.in_evolute) {
        evolute_gradient(gradient);
    } else {
        end_gradient(gradient);
    }
}

// With n at the foot, d = n · p - h is stationary in n: its derivatives are those with n held fast. The point's own
// coordinates change by (-c, s) with the centre's x, (-s, -c) with its y and (y, -x) with the angle.
void sqLeastSquareEllipse::general_gradient(mlVector & g) const {
    foot const & f = foot_;
    double const a = parameters()[0], b = parameters()[1];
    giVector2 const n = turned(f.nx, f.ny);
    g[0] = -a * f.nx * f.nx * f.over_h;
    g[1] = -b * f.ny * f.ny * f.over_h;
    g[2] = -n.x();
    g[3] = -n.y();
    g[4] = -(a - b) * (a + b) * f.nx * f.ny * f.over_h;  // n × p = n × foot
}

// The foot's coordinate along the axis is u times the square of the semi-axis. Across it the two feet cancel.
void sqLeastSquareEllipse::evolute_gradient(mlVector & g) const {
    foot const & f = foot_;
    double const d = f.distance;
    if (!(std::abs(d) > lost_direction)) {
        for (int k = 0; k < 4; ++k) g[k] = 0.0;
        return;
    }
    bool const along_a = f.from == foot::axis_of_a;
    double const p = parameters()[along_a ? 0 : 1], q = parameters()[along_a ? 1 : 0];
    double const u = (along_a ? f.x : f.y) / ((p - q) * (p + q));
    double const push = q * q * u / d;  // minus the part of n along the axis
    giVector2 const centre = along_a ? turned(push, 0.0) : turned(0.0, push);
    g[along_a ? 0 : 1] = p * u * push;
    g[along_a ? 1 : 0] = d / q - q * u * push;
    g[2] = centre.x();
    g[3] = centre.y();
    g[4] = along_a ? -f.y * push : f.x * push;
}

void sqLeastSquareEllipse::end_gradient(mlVector & g) const {
    foot const & f = foot_;
    bool const along_a = f.from == foot::axis_of_a;
    double const outwards = (along_a ? f.x : f.y) < 0.0 ? -1.0 : 1.0;
    giVector2 const n = along_a ? turned(outwards, 0.0) : turned(0.0, outwards);
    g[along_a ? 0 : 1] = parameters()[along_a ? 0 : 1] < 0.0 ? 1.0 : -1.0;
    g[along_a ? 1 : 0] = 0.0;
    g[2] = -n.x();
    g[3] = -n.y();
    g[4] = 0.0;
}

void sqLeastSquareEllipse::parameter_scales(mlVector & scales) const {
    double const a = parameters()[0], b = parameters()[1];
    scales.clear(0);
    for (int k = 0; k < 4; ++k) scales[k] = 1.0;
    scales[4] = std::sqrt(a * a + b * b);
}

giVector2 sqLeastSquareEllipse::turned(double x, double y) const {
    return giVector2(x * cosine_ - y * sine_, y * cosine_ + x * sine_);
}
