#include <benchmarks/support/noisy_points.h>
#include <benchmarks/support/time_fit.h>
#include <datumfit/datumfit.h>

#include <algorithm>
#include <cmath>

namespace datumfit::benchmarks {
namespace {

void BM_singular_values(benchmark::State & state) {
    giPoint3coDynArr const points = noisy_plane(n_points(state));
    giPoint3 const origin = general_frame().origin;
    mlMatrix rows(points.size(), 3);
    for (int i = 0; i < points.size(); ++i) {
        giVector3 const v = points[i] - origin;
        rows(i, 0) = v.x();
        rows(i, 1) = v.y();
        rows(i, 2) = v.z();
    }
    for (auto _ : state) {
        mlSingularValueDecomposition const svd(rows, mlJOB_U_NONE, mlJOB_V_WANTED);
        benchmark::DoNotOptimize(svd.diagonal().data());
    }
    count_time_per("per_row", state, points.size());
}
BENCHMARK(BM_singular_values)->Apply(plain_sizes);

// Rosenbrock 1960, summed over neighbouring variables; the minimum 0 lies at (1, ..., 1).
class Valley : public mlFunctionN1 {
public:
    explicit Valley(int n) : mlFunctionN1(n) {}
    double function(mlSlice const & x) const override {
        ++evaluations;
        double sum = 0.0;
        for (int i = 0; i + 1 < x.dimension(); ++i) {
            sum += 100.0 * utMath::square(x[i + 1] - x[i] * x[i]) + utMath::square(1.0 - x[i]);
        }
        return sum;
    }
    mutable int evaluations = 0;
};

void BM_downhill_simplex(benchmark::State & state) {
    int const n = static_cast<int>(state.range(0));
    mlVector start(mlVectorZero, n), found;
    double least = 0.0;
    Valley valley(n);
    for (auto _ : state) {
        valley.evaluations = 0;
        mlDownHillSimplex simplex(n);
        least = simplex.solve(valley, start, mlDownHillSimplexThorough);
        simplex.result(found);
    }
    state.counters["evaluations"] = valley.evaluations;
    state.counters["least"] = least;
}
BENCHMARK(BM_downhill_simplex)->Arg(2)->Arg(4)->Arg(6);

// Least at t = 1 / 3, without being a parabola.
class Dip : public mlFunction {
public:
    double function(double t) const override { return std::exp(t - 1.0 / 3.0) - t; }
    double t_min() const override { return 0.0; }
    double t_max() const override { return 1.0; }
};

void BM_brent_minimum(benchmark::State & state) {
    Dip dip;
    int const most_iterations = static_cast<int>(state.range(0));
    double t = 0.0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(ml_brent_minimum_search(dip, 0.0, 0.5, 1.0, 1e-5, most_iterations, &t));
    }
    state.counters["error"] = std::abs(t - 1.0 / 3.0);
}
BENCHMARK(BM_brent_minimum)->Arg(5)->Arg(100);

// A quadratic whose free minimum lies outside the half spaces, which hold a ball about (1, ..., 1) but not the start.
struct QuadraticProblem {
    QuadraticProblem(int unknowns, int rows)
        : K(rows, unknowns), d(mlVectorDim, rows), A(mlMatrixZero, unknowns, unknowns), g(mlVectorZero, unknowns) {
        mlRandom random(1);
        for (int r = 0; r < rows; ++r) {
            double square = 0.0, at_ones = 0.0;
            for (int c = 0; c < unknowns; ++c) {
                K(r, c) = random.minus_one_one();
                square += K(r, c) * K(r, c);
                at_ones += K(r, c);
            }
            d[r] = at_ones - 0.5 * std::sqrt(square);
        }
        for (int c = 0; c < unknowns; ++c) {
            A(c, c) = 1.0 + c;
            g[c] = 3.0 * (1.0 + c) * random.minus_one_one();
        }
    }
    double worst_violation(mlVector const & x) const {
        double worst = 0.0;
        mlVector const held(mlMatrixProduct, K, x);
        for (int r = 0; r < d.dimension(); ++r) worst = std::max(worst, d[r] - held[r]);
        return worst;
    }

    mlMatrix K;
    mlVector d;
    mlMatrix A;
    mlVector g;
};

void BM_constrained_quadratic(benchmark::State & state) {
    int const unknowns = 12, rows = static_cast<int>(state.range(0));
    QuadraticProblem const problem(unknowns, rows);
    mlVector x(mlVectorZero, unknowns);
    for (auto _ : state) {
        x.fill(0.0);
        mlConstrainedQuadraticMinimiser minimiser(problem.K, problem.d, 0);
        if (!minimiser.solve(problem.A, problem.g, x)) {
            state.SkipWithError("no minimum");
            break;
        }
    }
    state.counters["violation"] = problem.worst_violation(x);
}
BENCHMARK(BM_constrained_quadratic)->Arg(100)->Arg(1000);

}  // namespace
}  // namespace datumfit::benchmarks
