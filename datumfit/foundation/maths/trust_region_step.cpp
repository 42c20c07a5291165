#include <datumfit/foundation/maths/trust_region_step.h>

#include <algorithm>
#include <cmath>

namespace datumfit {
namespace internal {

namespace {

// A pivot below this share of the first one is rounding, of the entries of J and of the factor alike.
constexpr double rounding_of_pivots = 1e-14;

// A triangle whose diagonal spreads less than this is solved as it stands, without pivoting.
constexpr double plain_pivots = 1e-6;

// A damped step may miss the limit of its length by this share: a closer one would not be a better step.
constexpr double length_slack = 0.1;
constexpr int damping_attempts = 10;

// The reflection that takes (a, tail) to (b, 0): the identity minus weight * v vᵀ with v = (head, tail).
struct reflection {
    double b, head, weight;
    reflection(double a, double tail_squared) : b(a), head(0.0), weight(0.0) {
        if (tail_squared == 0.0) return;
        double const length = std::sqrt(a * a + tail_squared);
        b = a > 0.0 ? -length : length;
        head = a - b;
        weight = 1.0 / (length * (length + std::abs(a)));
    }
};

double length_of(std::vector<double> const & v, int n) {
    double s = 0.0;
    for (int k = 0; k < n; ++k) s += v.data()[k] * v.data()[k];
    return std::sqrt(s);
}

}  // namespace

trust_region_step::trust_region_step(int parameters, int independent)
    : parameters_(parameters), independent_(std::max(0, std::min(independent, parameters))), scaled_(parameters),
      reduced_(parameters), damped_(parameters) {
    std::size_t const n = static_cast<std::size_t>(parameters);
    pivot_.resize(n);
    for (auto * v : {&scales_, &heads_, &weights_, &y_, &z_}) v->resize(n);
    damping_.resize(n * (n + 1));
}

void trust_region_step::reduce(triangular_factor const & factor, double const * scales) {
    double smallest = HUGE_VAL, greatest = 0.0;
    std::copy(scales, scales + parameters_, scales_.begin());
    for (int i = 0; i < parameters_; ++i) {
        for (int j = 0; j < parameters_; ++j) scaled_(i, j) = j < i ? 0.0 : factor(i, j) / scales[j];
        scaled_.head(i) = factor.head(i);
        pivot_.data()[i] = i;
        smallest = std::min(smallest, std::abs(scaled_(i, i)));
        greatest = std::max(greatest, std::abs(scaled_(i, i)));
    }
    if (independent_ == parameters_ && smallest > plain_pivots * greatest) {
        reduced_ = scaled_;
    } else {
        triangularise();
        compress();
    }
}

// Takes the columns in the order of what they add to those before them, so that what depends on the others comes last.
void trust_region_step::triangularise() {
    int const n = parameters_;
    for (int k = 0; k < n; ++k) {
        int best = k;
        double most = -1.0;
        for (int j = k; j < n; ++j) {
            double s = 0.0;
            for (int i = k; i < n; ++i) s += scaled_(i, j) * scaled_(i, j);
            if (s > most) {
                most = s;
                best = j;
            }
        }
        for (int i = 0; i < n; ++i) std::swap(scaled_(i, k), scaled_(i, best));
        std::swap(pivot_.data()[k], pivot_.data()[best]);

        double tail = 0.0;
        for (int i = k + 1; i < n; ++i) tail += scaled_(i, k) * scaled_(i, k);
        reflection const h(scaled_(k, k), tail);
        scaled_(k, k) = h.b;
        for (int j = k + 1; j <= n; ++j) {
            double w = h.head * scaled_(k, j);
            for (int i = k + 1; i < n; ++i) w += scaled_(i, k) * scaled_(i, j);
            w *= h.weight;
            scaled_(k, j) -= w * h.head;
            for (int i = k + 1; i < n; ++i) scaled_(i, j) -= w * scaled_(i, k);
        }
    }
}

// Cuts the triangle to its rank and turns the columns behind it into it: what is left stands for directions that
// change nothing. The tails of the reflections stay in those columns, for expand().
void trust_region_step::compress() {
    int const n = parameters_;
    int rank = 0;
    while (rank < independent_ && std::abs(scaled_(rank, rank)) > rounding_of_pivots * std::abs(scaled_(0, 0))) ++rank;
    reduced_.clear(rank);
    for (int i = rank - 1; i >= 0; --i) {
        double tail = 0.0;
        for (int j = rank; j < n; ++j) tail += scaled_(i, j) * scaled_(i, j);
        reflection const h(scaled_(i, i), tail);
        heads_.data()[i] = h.head;
        weights_.data()[i] = h.weight;
        for (int row = 0; row < i; ++row) {
            double w = h.head * scaled_(row, i);
            for (int j = rank; j < n; ++j) w += scaled_(i, j) * scaled_(row, j);
            w *= h.weight;
            scaled_(row, i) -= w * h.head;
            for (int j = rank; j < n; ++j) scaled_(row, j) -= w * scaled_(i, j);
        }
        scaled_(i, i) = h.b;
    }
    for (int i = 0; i < rank; ++i) {
        for (int j = i; j < rank; ++j) reduced_(i, j) = scaled_(i, j);
        reduced_.head(i) = scaled_.head(i);
    }
}

// From the coordinates z to the parameters: back through the reflections, the order of columns and the scales.
void trust_region_step::expand(double * step) {
    int const n = parameters_, r = rank();
    double * const x = z_.data();
    for (int i = 0; i < r && r < n; ++i) {
        double w = heads_.data()[i] * x[i];
        for (int j = r; j < n; ++j) w += scaled_(i, j) * x[j];
        w *= weights_.data()[i];
        x[i] -= w * heads_.data()[i];
        for (int j = r; j < n; ++j) x[j] -= w * scaled_(i, j);
    }
    for (int k = 0; k < n; ++k) step[pivot_.data()[k]] = x[k] / scales_.data()[pivot_.data()[k]];
}

void trust_region_step::idle(int k, double * step) {
    std::fill(z_.begin(), z_.end(), 0.0);
    z_.data()[rank() + k] = 1.0;
    expand(step);
}

double trust_region_step::removable() const {
    double s = 0.0;
    for (int i = 0; i < rank(); ++i) s += reduced_.head(i) * reduced_.head(i);
    return std::sqrt(s);
}

double trust_region_step::take(double limit, double * step, double & gain) {
    reduced_.solve(y_.data());
    double length = length_of(y_, rank());
    if (length > limit) length = damped(limit);
    gain = 0.0;
    for (int i = 0; i < rank(); ++i) {
        double change = 0.0;
        for (int j = i; j < rank(); ++j) change += reduced_(i, j) * y_.data()[j];
        gain -= change * (2.0 * reduced_.head(i) + change);
    }
    std::copy(y_.begin(), y_.begin() + rank(), z_.begin());
    std::fill(z_.begin() + rank(), z_.end(), 0.0);
    expand(step);
    return length;
}

// Solves with lambda y'y added to the sum of squares; gives the length of the step.
double trust_region_step::damp(double lambda) {
    int const r = rank();
    damped_ = reduced_;
    std::fill(damping_.begin(), damping_.end(), 0.0);
    for (int k = 0; k < r; ++k) damping_.data()[k * r + k] = std::sqrt(lambda);
    damped_.absorb(damping_.data(), r, r);
    damped_.solve(y_.data());
    return length_of(y_, r);
}

// Finds the damping for a length near the limit, by Newton's method on 1 / length within shrinking bounds (Moré 1978).
double trust_region_step::damped(double limit) {
    int const r = rank();
    double steepest = 0.0;
    for (int j = 0; j < r; ++j) {
        double s = 0.0;
        for (int i = 0; i <= j; ++i) s += reduced_(i, j) * reduced_.head(i);
        steepest += s * s;
    }
    double lower = 0.0, upper = std::sqrt(steepest) / limit, lambda = 0.0;
    double length = length_of(y_, r);
    damped_ = reduced_;
    for (int attempt = 0; attempt < damping_attempts && std::abs(length - limit) > length_slack * limit; ++attempt) {
        // z solves Uᵀ z = y / length, the triangle being that of the step just taken.
        double square = 0.0;
        for (int i = 0; i < r; ++i) {
            double s = y_.data()[i] / length;
            for (int j = 0; j < i; ++j) s -= damped_(j, i) * z_.data()[j];
            z_.data()[i] = s / damped_(i, i);
            square += z_.data()[i] * z_.data()[i];
        }
        (length > limit ? lower : upper) = lambda;
        lambda += (length - limit) / limit / square;
        if (!(lambda > lower && lambda < upper)) lambda = std::max(1e-3 * upper, std::sqrt(lower * upper));
        length = damp(lambda);
    }
    return length;
}

}  // namespace internal
}  // namespace datumfit
