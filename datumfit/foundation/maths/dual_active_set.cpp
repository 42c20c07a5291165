#include <datumfit/foundation/maths/dual_active_set.h>
#include <datumfit/foundation/utilities/hypotenuse.h>

#include <algorithm>
#include <cmath>

namespace datumfit {
namespace internal {

namespace {

// Normals within this of a combination of active ones depend on them: the point in which rows less than 1e-10 apart in
// direction meet is 1e10 times farther off than they are apart. Great shares bring rounding of their own.
constexpr double dependence = 1e-10;
constexpr double rounding_of_shares = 1e-14;

// Shares of an active row below this are rounding.
constexpr double no_share = 1e-12;

// A slope below this share of its terms has vanished, and so has a multiplier, the slope across its row.
constexpr double slope_share = 1e-12;

double dot(double const * a, double const * b, int n) {
    double sum = 0.0;
    for (int j = 0; j < n; ++j) sum += a[j] * b[j];
    return sum;
}

void add(double factor, double const * a, double * sum, int n) {
    for (int j = 0; j < n; ++j) sum[j] += factor * a[j];
}

double length(double const * a, int n) {
    return std::sqrt(dot(a, a, n));
}

// The rotation that takes (a, b) to (their length, 0).
struct rotation {
    double c = 1.0, s = 0.0;
    rotation(double a, double b) {
        if (b == 0.0) return;
        double const h = hypotenuse(a, b);
        c = a / h;
        s = b / h;
    }
    void apply(double & a, double & b) const {
        double const first = c * a + s * b;
        b = c * b - s * a;
        a = first;
    }
};

}  // namespace

dual_active_set::dual_active_set(half_spaces const & rows, convex_quadratic const & f)
    : rows_(rows), f_(f), n_(f.unknowns()), values_(rows.values()), row_(static_cast<std::size_t>(n_)),
      bound_(mlVectorZero, n_), multiplier_(mlVectorZero, n_), J_(f.spread()), R_(n_, n_), N_(n_, n_), x_(f.centre()),
      gradient_(mlVectorZero, n_), normal_(mlVectorZero, n_), image_(mlVectorZero, n_), step_(mlVectorZero, n_),
      share_(mlVectorZero, n_) {
    reach_ = length(x_.data(), n_);
    descend();
}

void dual_active_set::leave_out(int row) {
    for (int k = active_ - 1; k >= 0; --k) {
        if (row_.data()[k] == row) drop(k);
    }
    values_.data()[row] = -HUGE_VAL;
}

dual_active_set::outcome dual_active_set::run() {
    // Far more steps than any set of rows was seen to need; 60 are many.
    int const most_steps = 500 + 50 * n_;
    lenience_ = 1.0;
    bool settled = settle();
    for (int step = 0; step < most_steps; ++step) {
        reach_ = std::max(reach_, length(x_.data(), n_));
        half_spaces::reading const worst = rows_.worst(values_, x_.data());
        if (worst.violation > met_share * size()) {
            admission const result = admit(worst.row);
            if (result == conflicting) return infeasible;
            settled = result == relaxed && settle();
        } else if (!settled) {
            settled = settle();
        } else {
            return std::isfinite(length(x_.data(), n_)) ? solved : stalled;
        }
    }
    return stalled;
}

// |x|, or where x has come from afar to nearly 0, the size that rounding has left it.
double dual_active_set::size() const {
    return length(x_.data(), n_) + met_share * reach_;
}

// Makes the violated row active.
dual_active_set::admission dual_active_set::admit(int row) {
    rows_.copy_normal(row, normal_.data());
    double multiplier = 0.0;
    for (;;) {  // each round but the last lets an active row go
        resolve();
        double const violation = std::max(values_.data()[row] - dot(normal_.data(), x_.data(), n_), 0.0);
        int const leaving = first_to_leave();
        double const partial = leaving < 0 ? HUGE_VAL : multiplier_[leaving] / share_[leaving];
        double full = HUGE_VAL;
        if (!depends()) {
            full = violation / dot(image_.data() + active_, image_.data() + active_, n_ - active_);
            add(std::min(full, partial), step_.data(), x_.data(), n_);
        } else if (leaving < 0) {
            return meet_conflict(row, violation);
        }
        double const advance = std::min(full, partial);
        add(-advance, share_.data(), multiplier_.data(), active_);
        multiplier += advance;
        if (full <= partial) {
            push(row, multiplier);
            return_to_rows();
            return active;
        }
        drop(leaving);
    }
}

// How x and the multipliers of the active rows change with the multiplier of the row of this normal.
void dual_active_set::resolve() {
    for (int k = 0; k < n_; ++k) image_[k] = dot(J_.row_data(k), normal_.data(), n_);
    step_.fill(0.0);
    for (int k = active_; k < n_; ++k) add(image_[k], J_.row_data(k), step_.data(), n_);
    for (int k = active_ - 1; k >= 0; --k) {
        double rest = image_[k];
        for (int j = k + 1; j < active_; ++j) rest -= R_(k, j) * share_[j];
        share_[k] = rest / R_(k, k);
    }
}

// Whether the normal is a combination of the active ones by their shares. Told in the space of x: in that of J, which
// is stretched, normals that differ may look alike.
bool dual_active_set::depends() const {
    if (active_ == n_) return true;
    double rest = 0.0, shares = 0.0;
    for (int j = 0; j < n_; ++j) {
        double difference = normal_[j];
        for (int k = 0; k < active_; ++k) difference -= share_[k] * N_(k, j);
        rest += difference * difference;
    }
    for (int k = 0; k < active_; ++k) shares += std::abs(share_[k]);
    return std::sqrt(rest) <= dependence + rounding_of_shares * shares;
}

// The active row whose multiplier vanishes first, -1 when all may grow. Of equals the one of the least number.
int dual_active_set::first_to_leave() const {
    int found = -1;
    double least = HUGE_VAL;
    for (int k = 0; k < active_; ++k) {
        if (share_[k] <= no_share) continue;
        double const limit = multiplier_[k] / share_[k];
        if (limit < least || (limit == least && found >= 0 && row_.data()[k] < row_.data()[found])) {
            least = limit;
            found = k;
        }
    }
    return found;
}

// The row is the opposite of a sum of active ones, so that they cannot be met together; rounding apart, for which all
// of them give way.
dual_active_set::admission dual_active_set::meet_conflict(int row, double violation) {
    double shares = 1.0;
    conflict_.assign(1, row);
    for (int k = 0; k < active_; ++k) {
        if (share_[k] >= -no_share) continue;
        shares -= share_[k];
        conflict_.push_back(row_.data()[k]);
    }
    std::sort(conflict_.begin(), conflict_.end());
    double const gap = violation / shares;
    double const rounding = met_share * size();
    if (gap > std::max(negligible_gap, rounding)) return conflicting;
    double const way = std::max(gap, 0.1 * rounding);  // no less than shows in a value
    values_.data()[row] -= way;
    for (int k = 0; k < active_; ++k) bound_[k] -= share_[k] < -no_share ? way : 0.0;
    return relaxed;
}

void dual_active_set::push(int row, double multiplier) {
    // Turns the free rows of J so that only the first of them meets the new normal.
    for (int k = n_ - 1; k > active_; --k) {
        rotation const turn(image_[k - 1], image_[k]);
        turn.apply(image_[k - 1], image_[k]);
        for (int j = 0; j < n_; ++j) turn.apply(J_(k - 1, j), J_(k, j));
    }
    for (int k = 0; k <= active_; ++k) R_(k, active_) = image_[k];
    std::copy_n(normal_.data(), n_, N_.row_data(active_));
    multiplier_[active_] = multiplier;
    bound_[active_] = values_.data()[row];
    row_.data()[active_] = row;
    values_.data()[row] = -HUGE_VAL;
    ++active_;
}

void dual_active_set::drop(int k) {
    values_.data()[row_.data()[k]] = bound_[k];
    --active_;
    for (int j = k; j < active_; ++j) {
        for (int i = 0; i <= j + 1; ++i) R_(i, j) = R_(i, j + 1);
        std::copy_n(N_.row_data(j + 1), n_, N_.row_data(j));
        multiplier_[j] = multiplier_[j + 1];
        bound_[j] = bound_[j + 1];
        row_.data()[j] = row_.data()[j + 1];
    }
    for (int i = k; i < active_; ++i) {  // clears what is left below the diagonal
        rotation const turn(R_(i, i), R_(i + 1, i));
        for (int j = i; j < active_; ++j) turn.apply(R_(i, j), R_(i + 1, j));
        for (int j = 0; j < n_; ++j) turn.apply(J_(i, j), J_(i + 1, j));
    }
}

// Brings x to the minimum on the active rows, letting go of those that do not hold it. False while x still slides.
bool dual_active_set::settle() {
    // A row that rounding lets go and takes in again in turn stays in the end.
    lenience_ *= 2.0;
    for (;;) {
        for (int pass = 0; pass < 2; ++pass) {  // the second takes away the rounding of the first
            return_to_rows();
            descend();
        }
        f_.gradient(x_, gradient_);
        read_multipliers();
        double * const first = multiplier_.data();
        double * const last = first + active_;
        double * const least = std::min_element(first, last);
        if (least == last || *least >= -lenience_ * slope_share * f_.gradient_size(size())) return descended();
        drop(static_cast<int>(least - first));
    }
}

void dual_active_set::return_to_rows() {
    for (int k = 0; k < active_; ++k) {
        double rest = bound_[k] - dot(N_.row_data(k), x_.data(), n_);
        for (int i = 0; i < k; ++i) rest -= R_(i, k) * image_[i];
        image_[k] = rest / R_(k, k);
    }
    for (int k = 0; k < active_; ++k) add(image_[k], J_.row_data(k), x_.data(), n_);
}

// Goes along the active rows to where H has the minimum on them.
void dual_active_set::descend() {
    f_.gradient(x_, gradient_);
    for (int k = active_; k < n_; ++k) image_[k] = dot(J_.row_data(k), gradient_.data(), n_);
    for (int k = active_; k < n_; ++k) add(-image_[k], J_.row_data(k), x_.data(), n_);
}

// At the minimum the gradient is the sum of the active normals by their multipliers.
void dual_active_set::read_multipliers() {
    for (int k = active_ - 1; k >= 0; --k) {
        double rest = dot(J_.row_data(k), gradient_.data(), n_);
        for (int j = k + 1; j < active_; ++j) rest -= R_(k, j) * multiplier_[j];
        multiplier_[k] = rest / R_(k, k);
    }
}

// Whether no slope is left along the active rows. One that A does not curve takes more than a step of H.
bool dual_active_set::descended() const {
    double const flat = slope_share * f_.gradient_size(size());
    for (int k = active_; k < n_; ++k) {
        double const * const along = J_.row_data(k);
        if (std::abs(dot(along, gradient_.data(), n_)) > flat * length(along, n_)) return false;
    }
    return true;
}

}  // namespace internal
}  // namespace datumfit
