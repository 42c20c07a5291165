#include <datumfit/foundation/maths/brent_minimum_search.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// The share of the longer side that a golden section cuts off.
constexpr double golden = 0.3819660112501051;

struct place {
    double t, value;
};

place evaluated(mlFunction const & f, double t) {
    double const value = f.function(t);
    return {t, std::isnan(value) ? std::numeric_limits<double>::infinity() : value};
}

// The bracket and the three lowest places in it, as in Brent's book.
class search {
public:
    search(double lower, double upper, place const & start, double tol)
        : lower_(lower), upper_(upper), best_(start), second_(start), third_(start), tol_(std::max(tol, 0.0)) {}

    place const & best() const { return best_; }

    bool converged() const { return !(std::fabs(best_.t - middle()) > 2.0 * resolution() - 0.5 * (upper_ - lower_)); }

    // The next place to evaluate.
    double next() {
        double const before_last = last_;
        last_ = move_;
        if (!(std::fabs(before_last) > resolution() && move_along_parabola(before_last))) {
            last_ = (best_.t < middle() ? upper_ : lower_) - best_.t;
            move_ = golden * last_;
        }
        // Places nearer than the resolution tell nothing new.
        double const moved = std::fabs(move_) < resolution() ? std::copysign(resolution(), move_) : move_;
        return std::max(lower_, std::min(best_.t + moved, upper_));
    }

    void take(place const & p) {
        if (p.value <= best_.value) {
            (p.t < best_.t ? upper_ : lower_) = best_.t;
            third_ = second_;
            second_ = best_;
            best_ = p;
            return;
        }
        (p.t < best_.t ? lower_ : upper_) = p.t;
        if (p.value <= second_.value || second_.t == best_.t) {
            third_ = second_;
            second_ = p;
        } else if (p.value <= third_.value || third_.t == best_.t || third_.t == second_.t) {
            third_ = p;
        }
    }

private:
    double middle() const { return 0.5 * lower_ + 0.5 * upper_; }

    // Half the distance below which two places count as one; never below the spacing of the numbers of the bracket.
    double resolution() const {
        double const spacing = std::numeric_limits<double>::epsilon() * std::max(std::fabs(lower_), std::fabs(upper_));
        return tol_ * std::fabs(best_.t) + spacing;
    }

    // Sets the move to the vertex of the parabola through the three places; false where that is no good move, or not a
    // number: it must lie within the bracket and be less than half the move before the last.
    bool move_along_parabola(double before_last) {
        double const r = (best_.t - second_.t) * (best_.value - third_.value);
        double const q = (best_.t - third_.t) * (best_.value - second_.value);
        double const denominator = 2.0 * (q - r);
        double const vertex = ((best_.t - second_.t) * r - (best_.t - third_.t) * q) / denominator;
        double const t = best_.t + vertex;
        if (!(std::fabs(vertex) < 0.5 * std::fabs(before_last) && t > lower_ && t < upper_)) {
            return false;
        }
        bool const at_end = t - lower_ < 2.0 * resolution() || upper_ - t < 2.0 * resolution();
        move_ = at_end ? std::copysign(resolution(), middle() - best_.t) : vertex;
        return true;
    }

    double lower_, upper_;
    place best_, second_, third_;
    double tol_;
    double move_ = 0.0, last_ = 0.0;
};

}  // namespace

double ml_brent_minimum_search(mlFunction & f, double t0, double t1, double t2, double tol, int max_iterations,
                               double * x) {
    double const lower = std::min(t0, t2);
    double const upper = std::max(t0, t2);
    search s(lower, upper, evaluated(f, std::max(lower, std::min(t1, upper))), tol);
    for (int i = 0; i < max_iterations && !s.converged(); ++i) {
        s.take(evaluated(f, s.next()));
    }
    *x = s.best().t;
    return s.best().value;
}
