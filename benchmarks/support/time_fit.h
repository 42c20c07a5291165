#pragma once

#include <benchmark/benchmark.h>

namespace datumfit::benchmarks {

inline int n_points(benchmark::State const & state) {
    return static_cast<int>(state.range(0));
}

inline void plain_sizes(benchmark::internal::Benchmark * b) {
    for (int const n : {10, 100, 1000, 100000, 1000000}) b->Arg(n);
}

/// For fits from many starts, which would take minutes on a million points.
inline void multi_start_sizes(benchmark::internal::Benchmark * b) {
    for (int const n : {10, 100, 1000, 100000}) b->Arg(n);
}

/// For global searches.
inline void search_sizes(benchmark::internal::Benchmark * b) {
    for (int const n : {10, 100, 1000, 10000}) b->Arg(n);
}

/// Shows the time that one item takes: "per_point=1.9ns".
inline void count_time_per(char const * item, benchmark::State & state, double items) {
    using benchmark::Counter;
    state.counters[item] = Counter(items, Counter::kIsIterationInvariantRate | Counter::kInvert);
}

/// Times fit(deviation), an entry that returns 1 for a fit, on the points of the state's size. A faster fit that fits
/// worse shows in its deviation.
template <class Fit>
void time_fit(benchmark::State & state, Fit fit) {
    double deviation = 0.0;
    for (auto _ : state) {
        if (fit(deviation) != 1) {
            state.SkipWithError("no fit");
            break;
        }
        benchmark::DoNotOptimize(deviation);
    }
    count_time_per("per_point", state, static_cast<double>(state.range(0)));
    state.counters["deviation"] = deviation;
}

}  // namespace datumfit::benchmarks
