#include <datumfit/align3d/points_to_planes/amoeba_points_to_planes_direct_shift.h>
#include <datumfit/align3d/points_to_planes/points_to_planes.h>
#include <datumfit/align3d/points_to_planes/rotation_about_origin.h>
#include <datumfit/foundation/maths/band_ends.h>
#include <datumfit/foundation/maths/singular_value_decomposition.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

using datumfit::internal::unbounded;

namespace {

constexpr double rotation_unit = 0.1;  // radians
constexpr double band_stiffness = 1000000.0;
constexpr double tiny = sqPointsToPlanes::TINY_DOUBLE;

giVector3 const no_shift(0.0, 0.0, 0.0);

double square(double x) {
    return x * x;
}

// The square of the part of e across n, which has any length.
double square_across(giVector3 const & e, giVector3 const & n) {
    giVector3 const across = e - (e.dot(n) / n.dot(n)) * n;
    return across.dot(across);
}

// A deviation without the weight of the normal; as it is, when that is 0.
double plain(double r, giVector3 const & n) {
    double const length = n.length();
    return length > 0.0 ? r / length : r;
}

void add_square(double (&b)[3][3], double factor, giVector3 const & v) {
    double const c[] = {v.x(), v.y(), v.z()};
    for (int j = 0; j < 3; ++j) {
        for (int k = 0; k < 3; ++k) b[j][k] += factor * c[j] * c[k];
    }
}

void add_to_diagonal(double (&b)[3][3], double x) {
    for (int j = 0; j < 3; ++j) b[j][j] += x;
}

}  // namespace

sqAmoebaPointsToPlanesDirectShift::sqAmoebaPointsToPlanesDirectShift(sqPlaneAndPointcoDynArr const & pairs,
                                                                     balance_list const & balance,
                                                                     giVector3coDynArr const & axis,
                                                                     giVector3coDynArr const & shift_directions,
                                                                     double attraction, int min_max)
    : mlFunctionN1(get_dimension(axis.size() > 0, shift_directions, min_max)), records_(pairs), balance_(balance),
      shift_directions_(shift_directions), has_axis_(axis.size() > 0), lock_matrix_(giXformIdentity),
      flip_matrix_(giXformIdentity), attraction_(attraction), min_max_(min_max), matrix_(giXformIdentity),
      full_matrix_(giXformIdentity), shift_(no_shift) {
    if (has_axis_) {
        axis_ = axis[1];
        sqPointsToPlanes::find_lock_matrix(axis[0], axis[1], lock_matrix_);
        sqPointsToPlanes::find_flip_matrix(axis[1], flip_matrix_);
        for (int i = 0; i < records_.size(); ++i) records_[i].point = lock_matrix_ * records_[i].point;
    }
    auto const is_bestfit = [](sqPlaneAndPoint const & r) { return std::abs(r.normal.length() - r.weight) < tiny; };
    while (positioning_count_ < records_.size() && !is_bestfit(records_.read(positioning_count_))) {
        ++positioning_count_;
    }
    prepare_passes();
    shift_solver_ = mlSingularValueDecomposition(shift_equations()).inverse(tiny);
}

int sqAmoebaPointsToPlanesDirectShift::get_dimension(int has_axis, giVector3coDynArr const & shift_directions,
                                                     int min_max) {
    int const shifts = shift_directions.size();
    int const searched = has_axis ? 1 : shifts > 0 ? shifts : 3;
    return searched + (min_max && shifts == 0 ? 3 : 0);
}

sqAmoebaPointsToPlanesDirectShift::unit sqAmoebaPointsToPlanesDirectShift::unit_at(int i) const {
    std::size_t const k = static_cast<std::size_t>(i);
    if (k + 1 >= balance_.size() || balance_[k].first == -1 || i + 1 >= records_.size()) return {i, false, 1.0, 0.0};
    return {i, true, balance_[k].second, balance_[k + 1].second};
}

// Visits the units that begin in [first, last).
template <class Visit>
void sqAmoebaPointsToPlanesDirectShift::for_units(int first, int last, Visit const & visit) const {
    for (int i = first; i < last;) {
        unit const u = unit_at(i);
        visit(u);
        i = u.next();
    }
}

giVector3 sqAmoebaPointsToPlanesDirectShift::combined_normal(unit const & u) const {
    giVector3 const & n = records_[u.first].normal;
    return u.paired ? u.factor1 * n + u.factor2 * records_[u.first + 1].normal : n;
}

void sqAmoebaPointsToPlanesDirectShift::prepare_passes() {
    for_units(0, records_.size(), [this](unit const & u) {
        sqPlaneAndPoint const & record = records_.read(u.first);
        bool const is_bestfit = u.first >= positioning_count_;
        if (u.paired) {
            partners_.push_back(u);
        } else {
            (is_bestfit ? bestfit_ : positioning_).add(record);
        }
        if (min_max_ && is_bestfit && (record.lower != -unbounded || record.upper != unbounded)) banded_.push_back(u);
    });
}

// The matrix of what the pulls change by when the points are shifted, along the shift directions if there are any.
mlMatrix sqAmoebaPointsToPlanesDirectShift::shift_equations() const {
    double b[3][3] = {};
    for_units(0, records_.size(), [&](unit const & u) {
        add_square(b, u.first < positioning_count_ ? 1.0 : 1.0 - attraction_, combined_normal(u));
    });
    add_to_diagonal(b, (records_.size() - positioning_count_) * attraction_);
    int const balanced = std::min(records_.size(), static_cast<int>(balance_.size()));
    for (int i = positioning_count_; i < balanced; ++i) {
        if (balance_[static_cast<std::size_t>(i)].first == -1) continue;
        giVector3 const & n = records_[i].normal;  // attracted across it only
        add_square(b, -attraction_, n);
        add_to_diagonal(b, (n.dot(n) - 1.0) * attraction_);
    }
    mlMatrix const all(utConvert, b[0], 3, 3);
    int const shifts = shift_directions_.size();
    if (shifts == 0) return all;
    mlMatrix directions(3, shifts);
    for (int k = 0; k < shifts; ++k) {
        giVector3 const & d = shift_directions_[k];
        directions(0, k) = d.x();
        directions(1, k) = d.y();
        directions(2, k) = d.z();
    }
    return mlMatrix(mlMatrixProduct, all, directions);
}

double sqAmoebaPointsToPlanesDirectShift::function(mlSlice const & x) const {
    set_rotation(x);
    set_shift(x);
    double total = positioning_.sum_of_squares(matrix_, shift_, 0.0);
    total += bestfit_.sum_of_squares(matrix_, shift_, attraction_);
    for (unit const & u : partners_) total += square_of_partners(u);
    for (unit const & u : banded_) total += band_penalty(u);
    return total;
}

void sqAmoebaPointsToPlanesDirectShift::set_rotation(mlSlice const & x) const {
    if (rotations_locked()) return;
    giUnitVec3 axis;
    double angle;
    if (has_axis_) {
        axis = flipped_ ? -axis_ : axis_;
        angle = x[0];
    } else {
        giVector3 const turn(x[0], x[1], x[2]);
        angle = turn.length();
        axis = angle > tiny ? turn.unit() : giUnitVec3(1.0, turn.y(), turn.z());
    }
    matrix_.become(giXformIdentity);
    if (axis.invalid()) return;
    matrix_ = datumfit::internal::rotation_about_origin(axis, giAngle(giAngleRadians, rotation_unit * angle));
    if (flipped_) matrix_.postmultiply(flip_matrix_);
}

void sqAmoebaPointsToPlanesDirectShift::set_shift(mlSlice const & x) const {
    int const n = x.dimension(), shifts = shift_directions_.size();
    if (min_max_ && shifts == 0) {
        shift_ = giVector3(x[n - 3], x[n - 2], x[n - 1]);
        return;
    }
    shift_ = no_shift;
    if (min_max_) {
        for (int k = 0; k < std::min(n, shifts); ++k) shift_ += x[k] * shift_directions_.read(k);
        return;
    }
    giVector3 pull = positioning_.sum_of_pulls(matrix_, 0.0) + bestfit_.sum_of_pulls(matrix_, attraction_);
    for (unit const & u : partners_) pull += pull_of_partners(u);
    auto const against = [&](int k) {
        double const * const row = shift_solver_.row_data(k);
        return -giVector3(row[0], row[1], row[2]).dot(pull);
    };
    if (shifts == 0) shift_ = giVector3(against(0), against(1), against(2));
    for (int k = 0; k < shifts; ++k) shift_ += against(k) * shift_directions_.read(k);
}

giVector3 sqAmoebaPointsToPlanesDirectShift::pull_of_partners(unit const & u) const {
    sqPlaneAndPoint const &r1 = records_[u.first], &r2 = records_[u.first + 1];
    giVector3 const d1 = matrix_ * r1.point - r1.plane_point, d2 = matrix_ * r2.point - r2.plane_point;
    giVector3 const c = (u.factor1 * d1.dot(r1.normal) + u.factor2 * d2.dot(r2.normal)) * combined_normal(u);
    if (u.first < positioning_count_) return c;
    return (1.0 - attraction_) * c + attraction_ * r1.normal.cross(d1.cross(r1.normal)) +
           attraction_ * r2.normal.cross(d2.cross(r2.normal));
}

giVector3 sqAmoebaPointsToPlanesDirectShift::difference(int i) const {
    return matrix_ * records_[i].point + shift_ - records_[i].plane_point;
}

double sqAmoebaPointsToPlanesDirectShift::deviation(unit const & u) const {
    double const r = difference(u.first).dot(records_[u.first].normal);
    if (!u.paired) return r;
    return u.factor1 * r + u.factor2 * difference(u.first + 1).dot(records_[u.first + 1].normal);
}

double sqAmoebaPointsToPlanesDirectShift::square_of_partners(unit const & u) const {
    double const of_planes = square(deviation(u));
    if (u.first < positioning_count_ || attraction_ == 0.0) return of_planes;
    double const of_points = square_across(difference(u.first), records_[u.first].normal) +
                             square_across(difference(u.first + 1), records_[u.first + 1].normal);
    return (1.0 - attraction_) * of_planes + attraction_ * of_points;
}

// A band whose ends are the wrong way round is left on both sides.
double sqAmoebaPointsToPlanesDirectShift::band_penalty(unit const & u) const {
    sqPlaneAndPoint const & record = records_[u.first];
    double const r = deviation(u);
    double penalty = 0.0;
    if (record.lower != -unbounded && r < record.lower) penalty += band_stiffness * square(r - record.lower);
    if (record.upper != unbounded && r > record.upper) penalty += band_stiffness * square(r - record.upper);
    return penalty;
}

// By how much the deviation r, with the weight in it, leaves the band.
double sqAmoebaPointsToPlanesDirectShift::excess(unit const & u, double r) const {
    sqPlaneAndPoint const & record = records_[u.first];
    if (record.upper != unbounded && r > record.upper) return r - record.upper;
    return record.lower != -unbounded && r < record.lower ? record.lower - r : 0.0;
}

giXform3 const & sqAmoebaPointsToPlanesDirectShift::get_matrix() const {
    full_matrix_ = matrix_;
    return has_axis_ ? full_matrix_.postmultiply(lock_matrix_) : full_matrix_;
}

int sqAmoebaPointsToPlanesDirectShift::check_transformation(double & mean_square) const {
    mean_square = 0.0;
    int ok = 1, located = 0;
    for (int i = 0; i < positioning_count_; ++i) {
        sqPlaneAndPoint const & record = records_[i];
        if (!record.located) continue;
        giVector3 const off = difference(i);
        mean_square += off.dot(off);
        ++located;
        for (int j = 0; ok && j < positioning_count_; ++j) {
            sqPlaneAndPoint const & plane = records_[j];
            giVector3 const nominal = record.plane_point - plane.plane_point;
            if (j == i || nominal.length() < tiny) continue;
            double const told = nominal.dot(plane.normal), found = (nominal + off).dot(plane.normal);
            ok = !(std::abs(found) >= tiny && std::abs(told) >= tiny && found * told < 0.0);
        }
    }
    if (located > 0) mean_square /= located;
    return ok;
}

void sqAmoebaPointsToPlanesDirectShift::get_max_deviations(mlVector const & x, double & positioning_deviation,
                                                           double & fit_deviation) const {
    function(x);
    positioning_deviation = 0.0;
    for_units(0, positioning_count_, [&](unit const & u) {
        double const r = plain(deviation(u), records_[u.first].normal);
        positioning_deviation = std::max(positioning_deviation, std::abs(r));
    });
    double worst = 0.0;
    for_units(positioning_count_, records_.size(), [&](unit const & u) {
        double const r = deviation(u);
        giVector3 const e = difference(u.first);
        giVector3 const & n = records_[u.first].normal;
        double const of_points =
            !u.paired
                ? e.dot(e)
                : std::max(square_across(e, n), square_across(difference(u.first + 1), records_[u.first + 1].normal));
        worst = std::max(worst, (1.0 - attraction_) * square(plain(r, n)) + attraction_ * of_points);
        if (min_max_ && !u.paired) positioning_deviation = std::max(positioning_deviation, excess(u, r));
    });
    fit_deviation = std::sqrt(worst);
}

void sqAmoebaPointsToPlanesDirectShift::convert_to_min_max_parameter(mlSlice const & x, mlVector & result) const {
    function(x);
    int const shifts = shift_directions_.size();
    int const n = get_dimension(has_axis_, shift_directions_, 1);
    mlVector unknowns(mlVectorZero, n);
    for (int k = 0; k < std::min(n, shifts); ++k) unknowns[k] = shift_directions_.read(k).dot(shift_);
    if (shifts == 0) {
        for (int k = 0; k < n - 3; ++k) unknowns[k] = x[k];
        unknowns[n - 3] = shift_.x();
        unknowns[n - 2] = shift_.y();
        unknowns[n - 1] = shift_.z();
    }
    result = unknowns;
}
