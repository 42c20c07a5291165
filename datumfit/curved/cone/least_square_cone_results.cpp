#include <datumfit/curved/cone/least_square_cone_results.h>

#include <datumfit/curved/cone/least_square_cone.h>

#include <cmath>

namespace {

// By how much, as a share of the part's size, a solution beyond the limits must be better than one within them.
constexpr double worth_a_limit = 0.001;

// The share of a proper cone's figure that a non-physical one must be below.
constexpr double far_better = 0.01;

// Both are strict: a half angle right at the tolerance is neither proper nor, at twice the tolerance, doubtful.
bool is_proper(double half_angle, double tolerance) {
    return half_angle > tolerance && half_angle < utMath::pi() / 2.0 - tolerance;
}
bool is_doubtful(double half_angle, double tolerance) {
    return half_angle < 2.0 * tolerance || half_angle > utMath::pi() / 2.0 - 2.0 * tolerance;
}

}  // namespace

sqLeastSquareConeResults::sqLeastSquareConeResults(utObserverPtr<giPoint3coDynArr const> points,
                                                   utObserverPtr<giUnitVec3coDynArr const> normals,
                                                   giUnitVec3 const & preferred_dir, giAngle const & dir_limit,
                                                   double range, double non_physical_tolerance)
    : points_(points), normals_(normals), preferred_dir_(preferred_dir), dir_limit_(dir_limit), range_(range),
      non_physical_tolerance_(non_physical_tolerance) {}

void sqLeastSquareConeResults::add(double square, mlVector & parameters) {
    int const limited =
        sqLeastSquareCone::are_normals_in_limit(*points_, dir_limit_, preferred_dir_, *normals_, parameters);
    bool const proper = is_proper(std::abs(parameters[7]), non_physical_tolerance_);
    if (limited != 0) (proper ? proper_limited_ : flat_limited_).take(square, parameters);
    (proper ? proper_any_ : flat_any_).take(square, parameters);
}

void sqLeastSquareConeResults::get_best(double & square, mlVector & parameters) const {
    solution const & proper = better(proper_limited_, proper_any_);
    solution const & flat = better(flat_limited_, flat_any_);
    bool const doubtful = is_doubtful(std::abs(proper.parameters[7]), non_physical_tolerance_);
    bool const displaced = far_better * proper.square > flat.square || (flat.square < proper.square && doubtful);
    solution const & best = displaced ? flat : proper;
    square = best.square;
    parameters = best.parameters;
}

void sqLeastSquareConeResults::solution::take(double other_square, mlVector const & other) {
    if (!(other_square < square)) return;
    square = other_square;
    parameters = other;
}

sqLeastSquareConeResults::solution const & sqLeastSquareConeResults::better(solution const & limited,
                                                                            solution const & any) const {
    return std::sqrt(limited.square) - std::sqrt(any.square) > worth_a_limit * range_ ? any : limited;
}
