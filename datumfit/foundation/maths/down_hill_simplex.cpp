#include <datumfit/foundation/maths/down_hill_simplex.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace {

// The first step along a coordinate, in its own measure and relative to it. The relative part only keeps the step above
// the rounding: coordinates far from the origin say nothing of the size of the problem, and long steps leave its
// valley.
constexpr double absolute_unit = 0.1;
constexpr double relative_unit = 1e-6;

// A simplex of this size, relative to the coordinates, can't shrink any further.
constexpr double rounding = 32.0 * std::numeric_limits<double>::epsilon();

// Equal values end a run only when the simplex has shrunk to this share of its first size: one that lies evenly about
// the start, on a contour, has equal values too.
constexpr double size_to_trust_values = 1e-3;

// One run: the size of its first simplex and the size that ends it, in units.
struct run {
    double first_size, last_size;
};

// A first run, then others about what it found until one moves it by `settled` units at most.
struct effort {
    run begin, again;
    int most_again;
    double settled;
    int most_evaluations;  // of one run, for each variable
};

effort effort_of(mlDownHillSimplexSpeed speed) {
    switch (speed) {
        case mlDownHillSimplexQuick:
            return {{1.0, 1e-2}, {}, 0, 0.0, 200};
        case mlDownHillSimplexNormal:
            return {{1.0, 1e-4}, {1e-2, 1e-6}, 1, 0.0, 2000};
        default:
            return {{1.0, 1e-8}, {1e-3, 0.0}, 8, 1e-8, 2000};
    }
}

// A simplex of n + 1 points and their values.
class simplex {
public:
    simplex(mlFunctionN1 const & f, mlVector const & start)
        : f_(f), n_(start.dimension()), vertices_(n_ + 1, n_), values_(mlVectorDim, n_ + 1), unit_(mlVectorDim, n_),
          before_(start), centre_(mlVectorDim, n_), trial_(mlVectorDim, n_), further_(mlVectorDim, n_) {
        vertices_[0] = start;
        values_[0] = value(start);
    }

    double best_value() const { return values_.read(best_); }
    mlSlice best() { return vertices_[best_]; }

    // Runs from about the best point so far; returns by how many units at most a coordinate of it has moved.
    double descend(run const & r, int most_evaluations) {
        before_ = best();
        spread(r.first_size);
        int const limit = evaluations_ + most_evaluations * n_;
        while (evaluations_ < limit && !ended(r)) {
            step();
            rank();
        }
        double moved = 0.0;
        for (int j = 0; j < n_; ++j) {
            moved = std::max(moved, std::fabs(vertices_(best_, j) - before_[j]) / unit_[j]);
        }
        return moved;
    }

private:
    double value(mlSlice const & x) {
        ++evaluations_;
        double const v = f_.function(x);
        return std::isnan(v) ? std::numeric_limits<double>::infinity() : v;
    }

    // A new simplex about the best point, with steps to both sides in turn, which the next one takes the other way.
    void spread(double size) {
        std::swap(values_[0], values_[best_]);
        vertices_[0] = before_;
        for (int j = 0; j < n_; ++j) {
            unit_[j] = absolute_unit + relative_unit * std::fabs(before_[j]);
            vertices_[j + 1] = before_;
            vertices_(j + 1, j) += (j % 2 == 0 ? sense_ : -sense_) * size * unit_[j];
            values_[j + 1] = value(vertices_[j + 1]);
        }
        sense_ = -sense_;
        rank();
    }

    // Finds the best, the worst and the next to worst vertex; the worst is another than the best, also among equals.
    void rank() {
        best_ = 0;
        for (int i = 1; i <= n_; ++i) {
            best_ = values_[i] < values_[best_] ? i : best_;
        }
        worst_ = best_ == 0 ? n_ : 0;
        for (int i = 0; i <= n_; ++i) {
            worst_ = i != best_ && values_[i] > values_[worst_] ? i : worst_;
        }
        next_to_worst_ = best_;
        for (int i = 0; i <= n_; ++i) {
            next_to_worst_ = i != worst_ && values_[i] > values_[next_to_worst_] ? i : next_to_worst_;
        }
    }

    bool ended(run const & r) {
        double size = 0.0;
        bool shrinks = false;
        for (int i = 0; i <= n_; ++i) {
            for (int j = 0; j < n_; ++j) {
                double const distance = std::fabs(vertices_(i, j) - vertices_(best_, j));
                size = std::max(size, distance / unit_[j]);
                shrinks = shrinks || distance > rounding * std::max(std::fabs(vertices_(best_, j)), unit_[j]);
            }
        }
        bool const equal_values = values_[worst_] - values_[best_] <=
                                  4.0 * std::numeric_limits<double>::epsilon() * std::fabs(values_[best_]);
        return !shrinks || size <= r.last_size || (equal_values && size <= size_to_trust_values * r.first_size);
    }

    // Reflects the worst vertex at the middle of the others, and goes further, less far, or draws all to the best.
    void step() {
        // The coefficients of Gao and Han, which keep a simplex of many variables from growing flat.
        double const m = std::max(n_, 2);
        double const expansion = 1.0 + 2.0 / m;
        double const contraction = 0.75 - 0.5 / m;

        find_centre();
        double const reflected = try_at(1.0, trial_);
        if (reflected < values_[best_]) {
            double const expanded = try_at(expansion, further_);
            if (expanded < reflected) {
                replace_worst(further_, expanded);
            } else {
                replace_worst(trial_, reflected);
            }
        } else if (reflected < values_[next_to_worst_]) {
            replace_worst(trial_, reflected);
        } else {
            bool const outside = reflected < values_[worst_];
            double const contracted = try_at(outside ? contraction : -contraction, further_);
            if (contracted < (outside ? reflected : values_[worst_])) {
                replace_worst(further_, contracted);
            } else {
                shrink(1.0 - 1.0 / m);
            }
        }
    }

    void find_centre() {
        for (int j = 0; j < n_; ++j) {
            double sum = 0.0;
            for (int i = 0; i <= n_; ++i) {
                sum += i == worst_ ? 0.0 : vertices_(i, j);
            }
            centre_[j] = sum / n_;
        }
    }

    // The value at the worst vertex's mirror image, taken t times as far from the centre.
    double try_at(double t, mlVector & x) {
        for (int j = 0; j < n_; ++j) {
            x[j] = centre_[j] + t * (centre_[j] - vertices_(worst_, j));
        }
        return value(x);
    }

    void replace_worst(mlVector const & x, double value_of_x) {
        vertices_[worst_] = x;
        values_[worst_] = value_of_x;
    }

    void shrink(double share) {
        for (int i = 0; i <= n_; ++i) {
            if (i != best_) {
                for (int j = 0; j < n_; ++j) {
                    vertices_(i, j) = vertices_(best_, j) + share * (vertices_(i, j) - vertices_(best_, j));
                }
                values_[i] = value(vertices_[i]);
            }
        }
    }

    mlFunctionN1 const & f_;
    int n_;
    mlMatrix vertices_;
    mlVector values_, unit_, before_, centre_, trial_, further_;
    int best_ = 0, worst_ = 0, next_to_worst_ = 0;
    int evaluations_ = 0;
    double sense_ = 1.0;
};

}  // namespace

double mlDownHillSimplex::solve(mlFunctionN1 & f, mlVector const & start, mlDownHillSimplexSpeed speed) {
    effort const e = effort_of(speed);
    simplex s(f, start);
    s.descend(e.begin, e.most_evaluations);
    for (int i = 0; i < e.most_again && s.descend(e.again, e.most_evaluations) > e.settled; ++i) {
    }
    best_ = s.best();
    return s.best_value();
}
