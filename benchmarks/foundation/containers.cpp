#include <benchmarks/support/time_fit.h>
#include <datumfit/datumfit.h>

namespace datumfit::benchmarks {
namespace {

giPoint3 const a_point(1.0, 2.0, 3.0);

void sizes(benchmark::internal::Benchmark * b) {
    for (int const n : {100, 10000, 1000000}) b->Arg(n);
}

template <class Array>
void fill(Array & points, int n) {
    for (int i = 0; i < n; ++i) points.append(a_point);
}

// Appending to an array of the default step would copy it for each point, so hosts give a step or reserve.
template <class Array>
void BM_append(benchmark::State & state) {
    int const n = n_points(state);
    for (auto _ : state) {
        Array points;
        points.reserve(n);
        fill(points, n);
        benchmark::DoNotOptimize(points.read(n - 1));
    }
    count_time_per("per_element", state, n);
}
BENCHMARK_TEMPLATE(BM_append, giPoint3coDynArr)->Apply(sizes);
BENCHMARK_TEMPLATE(BM_append, giPoint3coPageArr)->Apply(sizes);

template <class Array>
void BM_read(benchmark::State & state) {
    int const n = n_points(state);
    Array points;
    points.reserve(n);
    fill(points, n);
    for (auto _ : state) {
        double sum = 0.0;
        for (int i = 0; i < n; ++i) sum += points.read(i).x();
        benchmark::DoNotOptimize(sum);
    }
    count_time_per("per_element", state, n);
}
BENCHMARK_TEMPLATE(BM_read, giPoint3coDynArr)->Apply(sizes);
BENCHMARK_TEMPLATE(BM_read, giPoint3coPageArr)->Apply(sizes);

}  // namespace
}  // namespace datumfit::benchmarks
