#include <datumfit/align3d/points_to_planes/points_to_planes.h>
#include <datumfit/foundation/maths/constrained_quadratic_minimiser.h>
#include <datumfit/foundation/maths/singular_value_decomposition.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <numeric>

namespace {

// Singular values up to this are directions that the records leave open.
constexpr double open_direction = 1e-7;

bool is_finite(mlVector const & v) {
    return std::all_of(v.data(), v.data() + v.dimension(), [](double x) { return std::isfinite(x); });
}

// Sums that have overflowed tell nothing; there is no movement then.
void solve_without_bands(mlMatrix const & A, mlVector const & b, mlVector & minimum) {
    mlSingularValueDecomposition svd(A);
    minimum.become(mlMatrixProduct, svd.inverse(open_direction), b);
    if (!is_finite(minimum)) minimum.fill(0.0);
}

// Rows in the order of their priority, the greatest first.
class rows_by_priority {
public:
    rows_by_priority(mlMatrix const & K, mlVector const & d, mlVector const & priorities)
        : order_(static_cast<std::size_t>(K.rows())), sorted_(K.rows(), K.cols()), values_(mlVectorDim, K.rows()) {
        std::iota(order_.begin(), order_.end(), 0);
        std::stable_sort(order_.begin(), order_.end(), [&](int i, int j) { return priorities[i] > priorities[j]; });
        for (int i = 0; i < K.rows(); ++i) {
            std::copy_n(K.row_data(row(i)), K.cols(), sorted_.row_data(i));
            values_[i] = d[row(i)];
        }
        double const lowest = priorities[row(K.rows() - 1)];
        above_lowest_ = static_cast<int>(std::count_if(priorities.data(), priorities.data() + priorities.dimension(),
                                                       [&](double priority) { return priority > lowest; }));
    }

    mlMatrix const & sorted() const { return sorted_; }
    mlVector const & values() const { return values_; }

    // The numbers of sorted rows as they were before.
    intcoDynArr numbers(intcoDynArr const & sorted_rows) const {
        intcoDynArr result(sorted_rows.size(), 1);
        for (int i = 0; i < sorted_rows.size(); ++i) result.append(row(sorted_rows[i]));
        return result;
    }

    // Finds the longest head of the rows, of those above the lowest priority, that can be met, and a point that does.
    int longest_feasible_head(mlVector & best) const {
        if (is_feasible(above_lowest_, best)) return above_lowest_;
        if (!is_feasible(1, best)) return 0;
        int feasible = 1, infeasible = above_lowest_;
        while (feasible + 1 < infeasible) {
            int const middle = (feasible + infeasible) / 2;
            (is_feasible(middle, best) ? feasible : infeasible) = middle;
        }
        return feasible;
    }

private:
    int row(int i) const { return order_.data()[i]; }

    // Writes a point that meets the first n rows, if there is one.
    bool is_feasible(int n, mlVector & point) const {
        mlVector x(mlVectorZero, point.dimension());
        mlMatrix const head(utConvert, sorted_.row_data(0), n, sorted_.cols());
        mlConstrainedQuadraticMinimiser minimiser(head, mlVector(utConvert, values_.data(), n), 0);
        if (!minimiser.stage1(x)) return false;
        point = x;
        return true;
    }

    std::vector<int> order_;
    mlMatrix sorted_;
    mlVector values_;
    int above_lowest_;
};

bool all_equal(mlVector const & v) {
    double const * const end = v.data() + v.dimension();
    return std::adjacent_find(v.data(), end, std::not_equal_to<>()) == end;
}

}  // namespace

int sqPointsToPlanes::search_constrained_minimum(mlMatrix const & A, mlVector const & b, int n, mlVector & start,
                                                 mlVector & minimum) {
    start.become(mlVectorZero, n);
    if (!has_bands_) {
        solve_without_bands(A, b, minimum);
        return 1;
    }
    constraint_coefs(n);
    if (!mlConstrainedQuadraticMinimiser::are_valid(constraint_matrix_, constraint_values_)) return 0;
    mlVector gradient = b;
    gradient *= -1.0;
    minimum.become(mlVectorZero, n);
    return all_equal(constraint_priorities_) ? minimise_with_equal_bands(A, gradient, start, minimum)
                                             : minimise_by_priority(A, gradient, start, minimum);
}

int sqPointsToPlanes::minimise_with_equal_bands(mlMatrix const & A, mlVector const & gradient, mlVector & start,
                                                mlVector & minimum) {
    int const resolve = no_overdetermined_resolution_ == 0;
    mlConstrainedQuadraticMinimiser minimiser(constraint_matrix_, constraint_values_, resolve);
    if (!minimiser.stage1(minimum)) {
        if (!resolve) return 0;
        minimiser.delete_overdetermined_constraints();
    }
    start = minimum;
    int const found = minimiser.stage2(A, gradient, minimum);
    mlConstrainedQuadraticMinimiser::append_constraint_indices(overdetermined_, minimiser.overdetermined_constraints());
    return found;
}

int sqPointsToPlanes::minimise_by_priority(mlMatrix const & A, mlVector const & gradient, mlVector & start,
                                           mlVector & minimum) {
    rows_by_priority const rows(constraint_matrix_, constraint_values_, constraint_priorities_);
    int const head = rows.longest_feasible_head(minimum);
    // Of rows in conflict the later one goes as a rule, so they stay sorted also where no head protects them.
    mlConstrainedQuadraticMinimiser minimiser(rows.sorted(), rows.values(), 1);
    for (int i = 0; i < head; ++i) minimiser.keep(i);
    if (!minimiser.stage1(minimum)) minimiser.delete_overdetermined_constraints();
    start = minimum;
    minimiser.stage2(A, gradient, minimum);
    intcoDynArr const given_up = rows.numbers(minimiser.overdetermined_constraints());
    mlConstrainedQuadraticMinimiser::append_constraint_indices(overdetermined_, given_up);
    return 1;
}
