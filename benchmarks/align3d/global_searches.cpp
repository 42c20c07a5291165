#include <benchmarks/support/time_fit.h>
#include <datumfit/datumfit.h>

#include <cfloat>
#include <utility>
#include <vector>

// Searches over all rotations: six reference points and the points of a block, in some pose. Read against the number of
// evaluations, of which each passes over the records twice, and a bare pass over them (bare_read_of_records).
namespace datumfit::benchmarks {
namespace {

using search_function = sqAmoebaPointsToPlanesDirectShift;

// The function, which counts its evaluations.
class counted_function : public search_function {
public:
    using search_function::search_function;
    double function(mlSlice const & x) const override {
        ++evaluations;
        return search_function::function(x);
    }
    mutable double evaluations = 0.0;
};

// Form errors keep best-fit records from a perfect fit, so that all 60 starts are made.
void fill(sqPointsToPlanes & engine, int n, int bands) {
    giXform3 const pose = giXform3(giXformTranslate, giVector3(120.0, -45.0, 310.0))
                              .postmultiply(giXform3(giXformRotate, giPoint3(giOrigin), giUnitVec3(1.0, -2.0, 0.5),
                                                     giAngle(giAngleDegrees, 140.0)));
    giVector3 const normals[] = {giAxisZ, giAxisZ, giAxisZ, giAxisY, giAxisY, giAxisX};
    giPoint3 const places[] = {{-40, -30, 0}, {40, -30, 0}, {0, 35, 0}, {-45, -40, 10}, {45, -40, 12}, {-50, 0, 8}};
    for (int i = 0; i < 6; ++i) engine.add_positioning(pose * places[i], places[i], normals[i], 1);
    mlRandom random(1);
    for (int i = 0; i < n; ++i) {
        gi_Axis const across = static_cast<gi_Axis>(i % 3);
        giVector3 const normal = (i % 2 ? 1.0 : -1.0) * giVector3(across);
        giVector3 place(60.0 * random.minus_one_one(), 50.0 * random.minus_one_one(), 20.0 * random.minus_one_one());
        place.set_coordinate(across, 30.0 * normal.coordinate(across));
        giPoint3 const measured = place.anchor() + (0.02 * random.minus_one_one()) * normal;
        double const width = i < bands ? 0.019 : DBL_MAX;
        engine.add_bestfit(pose * measured, place.anchor(), normal, -width, width, 1.0);
    }
}

struct search_data {
    sqPlaneAndPointcoDynArr pairs;
    std::vector<std::pair<int, double>> balance;

    explicit search_data(sqPointsToPlanes const & engine) { engine.data_for_downhill(pairs, balance, 0, 0); }
};

void BM_global_search(benchmark::State & state, int bands) {
    sqPointsToPlanes engine;
    fill(engine, static_cast<int>(state.range(0)), bands);
    giXform3 x;
    double positioning = 0.0;
    for (auto _ : state) benchmark::DoNotOptimize(engine.fit(x, 0.01, &positioning));
    search_data const data(engine);
    counted_function f(data.pairs, data.balance, {}, {}, 0.0, 0);
    engine.fit_pairs_downhill(f, x, 0.01, nullptr, nullptr);
    state.counters["evaluations"] = f.evaluations;
    state.counters["positioning_deviation"] = positioning;
}
BENCHMARK_CAPTURE(BM_global_search, unbanded, 0)
    ->Arg(0)
    ->Arg(100)
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_global_search, banded, 10)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);

void BM_search_function(benchmark::State & state) {
    sqPointsToPlanes engine;
    fill(engine, static_cast<int>(state.range(0)), 0);
    search_data const data(engine);
    search_function const f(data.pairs, data.balance, {}, {}, 0.0, 0);
    double const values[] = {1.0, -2.0, 3.0};
    mlVector const x(utConvert, values, 3);
    for (auto _ : state) benchmark::DoNotOptimize(f.function(x));
    count_time_per("per_record", state, static_cast<double>(state.range(0)));
}
BENCHMARK(BM_search_function)->Arg(100)->Arg(1000)->Arg(10000)->Arg(100000);

void BM_test_positioning(benchmark::State & state) {
    sqPointsToPlanes engine;
    fill(engine, 0, 0);
    giXform3 x;
    for (auto _ : state) {
        if (engine.test_positioning(1, x) != sqPointsToPlanes::POSITIONING_DETERMINED) state.SkipWithError("wrong");
    }
}
BENCHMARK(BM_test_positioning)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace datumfit::benchmarks
