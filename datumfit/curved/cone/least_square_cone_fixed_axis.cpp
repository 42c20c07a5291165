#include <datumfit/curved/cone/least_square_cone_fixed_axis.h>

#include <datumfit/curved/cone/fixed_axis_passes.h>

#include <cmath>
#include <memory>
#include <utility>

using namespace datumfit::internal;

sqLeastSquareConeFixedAxis::sqLeastSquareConeFixedAxis(giPoint3coDynArr const & points)
    : sqLeastSquareDistance3(2, points), offset_(0.0), slope_(0.0), d_offset_dx_(0.0), d_offset_dy_(0.0),
      d_slope_dx_(0.0), d_slope_dy_(0.0), mean_height_(0.0) {
    auto passes = std::make_unique<fixed_axis_passes>(points);
    passes_ = passes.get();
    offer_all_points(std::move(passes), typeid(sqLeastSquareConeFixedAxis));
    for (doublecoDynArr * const each : {&radial_, &unit_x_, &unit_y_}) each->expand(points.size());
    frame_points_.expand(points.size());
}

sqLeastSquareConeFixedAxis::~sqLeastSquareConeFixedAxis() = default;

void sqLeastSquareConeFixedAxis::set_axis(giVector3 const & axis) {
    giUnitVec3 unit(axis);
    if (unit.invalid()) unit = giUnitVec3(giAxisZ);
    axis_ = unit;
    x_dir_ = axis_.cross(giVector3(std::abs(axis_.y()) > std::abs(axis_.x()) ? giAxisX : giAxisY)).unitize();
    y_dir_ = axis_.cross(x_dir_);
    int const n = n_points();
    mean_height_ = 0.0;
    for (int i = 0; i < n; ++i) {
        giVector3 const p = points()[i].release();
        frame_points_[i] = giPoint3(p.dot(x_dir_), p.dot(y_dir_), p.dot(axis_));
        mean_height_ += frame_points_[i].z() / n;
    }
    passes_->set_frame(x_dir_, y_dir_, axis_);
}

void sqLeastSquareConeFixedAxis::set_parameters(mlVector const & p) {
    sqLeastSquareDistance3::set_parameters(p);
    double const x = p[0], y = p[1];
    double squares = 0.0;
    int const n = n_points();
    for (int i = 0; i < n; ++i) {
        double const dx = x - frame_points_[i].x(), dy = y - frame_points_[i].y();
        double const r = std::sqrt(dx * dx + dy * dy);
        radial_[i] = r;
        unit_x_[i] = r > on_fixed_axis ? dx / r : 0.0;
        unit_y_[i] = r > on_fixed_axis ? dy / r : 0.0;
        squares += r * r;
    }
    find_line(std::sqrt(squares / n));
}

// Distances from the axis count from the root of their mean square.
void sqLeastSquareConeFixedAxis::find_line(double origin) {
    double s[profile_line::sums] = {};
    for (int i = 0; i < n_points(); ++i) {
        add_to_profile(radial_[i] - origin, frame_points_[i].z() - mean_height_, unit_x_[i], unit_y_[i], s);
    }
    profile_line line;
    line.fit(s, n_points(), origin);
    slope_ = line.slope;
    d_slope_dx_ = line.d_slope[0];
    d_slope_dy_ = line.d_slope[1];
    offset_ = line.exists ? mean_height_ + line.offset() : 0.0;
    d_offset_dx_ = line.d_offset(0);
    d_offset_dy_ = line.d_offset(1);
}

void sqLeastSquareConeFixedAxis::normalize_parameters(mlVector &) const {}

void sqLeastSquareConeFixedAxis::get_distance_and_gradient(double & d, mlVector & gradient, int i) const {
    get_distance(d, i);
    double const r = radial_[i];
    bool const has_direction = r > on_fixed_axis;
    gradient[0] = has_direction ? -slope_ * unit_x_[i] - d_offset_dx_ - r * d_slope_dx_ : 0.0;
    gradient[1] = has_direction ? -slope_ * unit_y_[i] - d_offset_dy_ - r * d_slope_dy_ : 0.0;
}

void sqLeastSquareConeFixedAxis::get_distance(double & d, int i) const {
    d = frame_points_[i].z() - offset_ - slope_ * radial_[i];
    remember_distance(d);
}

void sqLeastSquareConeFixedAxis::full_fit_parameters(mlVector & p) const {
    giVector3 const apex = parameters()[0] * x_dir_ + parameters()[1] * y_dir_ + offset_ * axis_;
    double const towards_apex = slope_ < 0.0 ? 1.0 : -1.0;
    p.become(mlVectorZero, 8);
    for (int k = 0; k < 3; ++k) {
        p[k] = apex.coordinate(gi_Axis(k));
        p[3 + k] = towards_apex * axis_.coordinate(gi_Axis(k));
    }
    p[7] = std::atan2(1.0, std::abs(slope_));
}
