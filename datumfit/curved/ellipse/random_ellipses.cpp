#include <datumfit/curved/ellipse/random_ellipses.h>

#include <datumfit/curved/best_first.h>
#include <datumfit/foundation/utilities/math.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace datumfit {
namespace internal {

namespace {

constexpr int ellipses_a_size = 50;      // before the longest axis grows by the range again
constexpr double shortest_axis = 0.01;   // as a share of the range
constexpr double bound_rounding = 1e-9;  // more than rounding can put on a bound, as a share of the squares in it

}  // namespace

random_ellipses::random_ellipses(sqLeastSquareEllipse & problem, giPoint2coDynArr const & points)
    : problem_(problem), range_(problem.range()), centre_(problem.centroid()), sum_(1, 0.0), square_(1, 0.0),
      batch_(batch_size), parameters_(mlVectorZero, problem.n_parameters()) {
    int const n = points.size();
    for (int i = 0; i < n; ++i) {
        double const r = (points[i] - centre_).length().value();
        distance_.push_back(std::isfinite(r) ? r : 0.0);
    }
    std::sort(distance_.begin(), distance_.end());
    for (double const r : distance_) {
        sum_.push_back(sum_.back() + r);
        square_.push_back(square_.back() + r * r);
    }
    order_.reserve(batch_size);
}

void random_ellipses::best_of_next_batch(mlVector & ellipse) {
    order_.clear();
    for (int j = 0; j < batch_size; ++j) {
        double const longest = (j / ellipses_a_size + 1) * range_, shortest = shortest_axis * range_;
        candidate & c = batch_[static_cast<std::size_t>(j)];
        c.a = random_.rnd(shortest, longest);
        c.b = random_.rnd(shortest, longest);
        c.angle = 2.0 * utMath::pi() * random_.zero_one();
        c.bound = bound(std::max(c.a, c.b), std::min(c.a, c.b));
        order_.push_back(j);
    }
    best_ = utMath::max_double();
    auto const at = [&](int j) -> candidate const & { return batch_[static_cast<std::size_t>(j)]; };
    int const winner = least_scored(
        order_, [&](int j) { return at(j).bound; }, [&](int j) { return score(at(j)); }, best_);
    if (winner >= 0) write(at(winner), ellipse);
}

double random_ellipses::bound(double longer, double shorter) const {
    auto const nearer_than = [&](double r) {
        return std::lower_bound(distance_.begin(), distance_.end(), r) - distance_.begin();
    };
    auto const n = distance_.size();
    auto const within = static_cast<std::size_t>(nearer_than(shorter));
    auto const reached = static_cast<std::size_t>(nearer_than(longer));
    // The sum of (r - axis)² over so many distances, less its rounding.
    auto const off = [](double count, double sum, double square, double axis) {
        double const all = square + count * axis * axis;
        return all - 2.0 * axis * sum - bound_rounding * all;
    };
    double const inside = off(static_cast<double>(within), sum_[within], square_[within], shorter);
    double const outside =
        off(static_cast<double>(n - reached), sum_[n] - sum_[reached], square_[n] - square_[reached], longer);
    return std::fmax(inside, 0.0) + std::fmax(outside, 0.0);  // not a NaN
}

double random_ellipses::score(candidate const & c) {
    ++scored_;
    write(c, parameters_);
    return problem_.score(parameters_, best_);
}

void random_ellipses::write(candidate const & c, mlVector & p) const {
    p[0] = c.a;
    p[1] = c.b;
    p[2] = centre_.x();
    p[3] = centre_.y();
    p[4] = c.angle;
}

}  // namespace internal
}  // namespace datumfit
