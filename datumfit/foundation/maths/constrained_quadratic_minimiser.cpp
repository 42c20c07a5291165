#include <datumfit/foundation/maths/constrained_quadratic_minimiser.h>

#include <datumfit/foundation/maths/conflict_resolution.h>
#include <datumfit/foundation/maths/convex_quadratic.h>
#include <datumfit/foundation/maths/dual_active_set.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>

namespace {

using datumfit::internal::convex_quadratic;
using datumfit::internal::dual_active_set;
using datumfit::internal::give_up_fewest;
using datumfit::internal::met_share;

bool all_finite(mlVector const & v) {
    return std::all_of(v.data(), v.data() + v.dimension(), [](double x) { return std::isfinite(x); });
}

void assign(intcoDynArr & list, std::vector<int> const & numbers) {
    list.clear(0);
    list.reserve(static_cast<int>(numbers.size()));
    for (int const number : numbers) list.append(number);
}

}  // namespace

mlConstrainedQuadraticMinimiser::mlConstrainedQuadraticMinimiser(mlMatrix const & K, mlVector const & d, int drop)
    : valid_(are_valid(K, d)), rows_(valid_ ? K : mlMatrix(), d), drop_(drop),
      kept_(static_cast<std::size_t>(rows_.rows())) {}

int mlConstrainedQuadraticMinimiser::are_valid(mlMatrix const & K, mlVector const & d) {
    if (K.rows() != d.dimension() || !all_finite(d)) return 0;
    for (int i = 0; i < K.rows(); ++i) {
        double squares = 0.0;
        for (int j = 0; j < K.cols(); ++j) squares += K(i, j) * K(i, j);
        if (K.cols() == 0 || !std::isfinite(squares)) return 0;
    }
    return 1;
}

void mlConstrainedQuadraticMinimiser::keep(int row) {
    if (row < 0 || row >= rows_.rows()) return;
    kept_.data()[row] = 1;
    keeps_named_ = true;
}

int mlConstrainedQuadraticMinimiser::stage1(mlVector & x) {
    if (!fits(x)) return 0;
    std::vector<int> lost;  // without hope, or removed before
    std::set_union(removed_.begin(), removed_.end(), rows_.hopeless().begin(), rows_.hopeless().end(),
                   std::back_inserter(lost));
    bool const hopeless = lost.size() > removed_.size();
    convex_quadratic const distance(x);
    dual_active_set solver(rows_, distance);
    for (int const row : lost) solver.leave_out(row);
    std::vector<int> given_up;
    if (drop_) {
        if (!give_up_fewest(solver, rows_to_keep(x), given_up)) return 0;
        std::vector<int> overdetermined;
        std::merge(lost.begin(), lost.end(), given_up.begin(), given_up.end(), std::back_inserter(overdetermined));
        assign(overdetermined_, overdetermined);
    } else if (hopeless || solver.run() != dual_active_set::solved) {
        return 0;
    }
    x = solver.x();
    return !hopeless && given_up.empty();
}

void mlConstrainedQuadraticMinimiser::delete_overdetermined_constraints() {
    removed_.assign(overdetermined_.data(), overdetermined_.data() + overdetermined_.size());
}

int mlConstrainedQuadraticMinimiser::stage2(mlMatrix const & A, mlVector const & g, mlVector & x) {
    int const n = x.dimension();
    if (!fits(x) || A.rows() != n || A.cols() != n || g.dimension() != n) return 0;
    std::vector<int> const & hopeless = rows_.hopeless();
    if (!std::includes(removed_.begin(), removed_.end(), hopeless.begin(), hopeless.end())) return 0;
    convex_quadratic const f(A, g, x);
    if (!f.valid()) return 0;
    dual_active_set solver(rows_, f);
    for (int const row : removed_) solver.leave_out(row);
    if (solver.run() != dual_active_set::solved) return 0;
    x = solver.x();
    return 1;
}

int mlConstrainedQuadraticMinimiser::solve(mlMatrix const & A, mlVector const & g, mlVector & x) {
    mlVector moved = x;
    if (!stage1(moved)) {
        if (!drop_) return 0;
        delete_overdetermined_constraints();
    }
    if (!stage2(A, g, moved)) return 0;
    x = moved;
    return 1;
}

void mlConstrainedQuadraticMinimiser::append_constraint_indices(intcoDynArr & list, intcoDynArr const & indices) {
    std::vector<int> added(indices.data(), indices.data() + indices.size());
    std::sort(added.begin(), added.end());
    added.erase(std::unique(added.begin(), added.end()), added.end());
    std::vector<int> merged;
    int listed = 0;
    for (int const index : added) {
        for (; listed < list.size() && list.read(listed) <= index + listed; ++listed)
            merged.push_back(list.read(listed));
        merged.push_back(index + listed);
    }
    merged.insert(merged.end(), list.data() + listed, list.data() + list.size());
    assign(list, merged);
}

// Whether the constraints are usable and x, of finite numbers, is a point in their space.
bool mlConstrainedQuadraticMinimiser::fits(mlVector const & x) const {
    bool const same_space = rows_.rows() == 0 || rows_.unknowns() == x.dimension();
    return valid_ && same_space && x.dimension() > 0 && all_finite(x);
}

// For each row, 1 when it stays if another one may go instead.
std::vector<int> mlConstrainedQuadraticMinimiser::rows_to_keep(mlVector const & x) const {
    std::vector<int> kept = kept_;
    double const size = std::sqrt(scalar_product(x, x));
    for (int i = 0; i < rows_.rows() && !keeps_named_ && size > 0.0; ++i) {
        kept.data()[i] = rows_.values().data()[i] - rows_.product(i, x.data()) <= met_share * size;
    }
    return kept;
}
