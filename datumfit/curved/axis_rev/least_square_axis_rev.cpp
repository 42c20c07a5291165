#include <datumfit/curved/axis_rev/least_square_axis_rev.h>

#include <datumfit/curved/axis_rev/axis_rev_kernel.h>
#include <datumfit/foundation/maths/levenberg_marquardt.h>
#include <datumfit/foundation/surfaces/unit_vector_differentiator3.h>
#include <datumfit/foundation/utilities/math.h>
#include <datumfit/primitives/point_sums.h>

#include <algorithm>
#include <cmath>
#include <vector>

using namespace datumfit::internal;

namespace {

// Below this mean square a search looks no further.
constexpr double good_enough = 0.01;

// The normal of point i; null where there is none.
giVector3 normal_of(giUnitVec3coDynArr const & normals, int i) {
    bool const given = i < normals.size() && !normals[i].invalid();
    return given ? static_cast<giVector3 const &>(normals[i]) : giVector3(0.0, 0.0, 0.0);
}

// Points and normals side by side, seen from the mean of the points. The normals are as long as the points go from it,
// or a little shorter, so that what six numbers reach is what the points do; a power of two leaves them their digits.
struct normal_lines {
    normal_lines(giPoint3coDynArr const & points, giUnitVec3coDynArr const & normals) {
        int const n = points.size();
        if (n > 0) mean_of_points(plain(points), 3, n, origin);
        double reach = 0.0;
        for (int i = 0; i < 3 * n; ++i) reach = std::max(reach, std::abs(plain(points)[i] - origin[i % 3]));
        double const length = reach > 0.0 && std::isfinite(reach) ? std::ldexp(1.0, std::ilogb(reach)) : 1.0;
        for (int i = 0; i < n; ++i) {
            giVector3 const along = length * normal_of(normals, i);
            giPoint3 const & p = points[i];
            numbers.insert(numbers.end(), {p.x(), p.y(), p.z(), along.x(), along.y(), along.z()});
        }
    }

    double origin[6] = {};
    std::vector<double> numbers;
};

class axis_rev_passes : private normal_lines, public lane_model<axis_rev_kernel> {
public:
    axis_rev_passes(giPoint3coDynArr const & points, giUnitVec3coDynArr const & normals)
        : normal_lines(points, normals), lane_model<axis_rev_kernel>(numbers.data(), nullptr, points.size(), origin) {}
};

}  // namespace

sqLeastSquareAxisRev::sqLeastSquareAxisRev(giPoint3coDynArr const & points, giUnitVec3coDynArr const & normals)
    : sqLeastSquareDistance3(axis_rev_kernel::parameters, points), normals_(&normals) {
    offer_all_points(std::make_unique<axis_rev_passes>(points, normals), typeid(sqLeastSquareAxisRev));
}

sqLeastSquareAxisRev::~sqLeastSquareAxisRev() = default;

void sqLeastSquareAxisRev::normalize_parameters(mlVector & p) const {
    for (int k = p.dimension(); k < axis_rev_kernel::parameters; ++k) p[k] = 0.0;
    axis_frame::normalize(p);
}

// n × a, null for a line along the axis.
giVector3 sqLeastSquareAxisRev::normal_across(int i) const {
    mlVector const & p = parameters();
    giVector3 const c = normal_of(*normals_, i).cross(giVector3(p[3], p[4], p[5]));
    return c.length() > axis_rev_kernel::parallel ? c : giVector3(0.0, 0.0, 0.0);
}

giVector3 sqLeastSquareAxisRev::from_axis_point(int i) const {
    mlVector const & p = parameters();
    return points()[i] - giPoint3(p[0], p[1], p[2]);
}

void sqLeastSquareAxisRev::get_distance(double & d, int i) const {
    giUnitVec3 const w(normal_across(i));
    d = w.invalid() ? 0.0 : w.dot(from_axis_point(i));
    remember_distance(d);
}

void sqLeastSquareAxisRev::get_distance_and_gradient(double & d, mlVector & gradient, int i) const {
    sknUnitVectorDifferentiator3 const across(normal_across(i));
    giUnitVec3 const & w = across.unit();
    giVector3 const v = from_axis_point(i), n = normal_of(*normals_, i);
    d = w.invalid() ? 0.0 : w.dot(v);
    remember_distance(d);
    double const by_point[] = {-w.x(), -w.y(), -w.z()};
    for (int k = 0; k < 3; ++k) {
        giVector3 dw;
        across.first_derivative(n.cross(giVector3(gi_Axis(k))), dw);
        gradient[k] = w.invalid() ? 0.0 : by_point[k];
        gradient[3 + k] = dw.dot(v);
    }
}

int sqLeastSquareAxisRev::n_independent_parameters() const {
    return axis_rev_kernel::unknowns;
}

void sqLeastSquareAxisRev::parameter_scales(mlVector & scales) const {
    double largest = 0.0;
    for (int i = 0; i < n_points(); ++i) largest = std::max(largest, from_axis_point(i).length().value());
    scales.clear(0);
    for (int k = 0; k < axis_rev_kernel::parameters; ++k) scales[k] = k < 3 ? 1.0 : largest;
}

void sqLeastSquareAxisRev::solve(mlLevenbergMarquardt & solver, giPoint3 & point, giUnitVec3 & direction,
                                 double & square) {
    if (point.invalid()) point = centroid();
    double const start[] = {point.x(), point.y(), point.z(), direction.x(), direction.y(), direction.z()};
    mlVector p;
    square = solver.fit(mlVector(utConvert, start, 6), p);
    point = giPoint3(p[0], p[1], p[2]);
    direction = giUnitVec3(p[3], p[4], p[5]);
}

void sqLeastSquareAxisRev::evaluate_with_guess(giPoint3 & point, giUnitVec3 & direction, double & square) {
    mlLevenbergMarquardt solver(*this);
    solve(solver, point, direction, square);
}

void sqLeastSquareAxisRev::evaluate(giPoint3 & point, giUnitVec3 & direction, double & square) {
    mlLevenbergMarquardt solver(*this);
    giPoint3 const start = point.invalid() ? centroid() : point;
    square = utMath::max_double();
    for (int i = 0; i < num_guess_directions(); ++i) {
        giPoint3 q = start;
        giUnitVec3 a = guess_direction(i);
        double s;
        solve(solver, q, a, s);
        if (!(s < square)) continue;
        point = q;
        direction = a;
        square = s;
        if (square <= good_enough) return;
    }
}
