#include <benchmarks/support/time_fit.h>
#include <datumfit/datumfit.h>

// Matches of paired points, to be read against the bare pass over the points (benchmarks/primitives/bare_passes.cpp).
namespace datumfit::benchmarks {
namespace {

void sizes(benchmark::internal::Benchmark * b) {
    for (int const n : {10, 1000, 100000, 1000000}) b->Arg(n);
}

// A sphere of radius 1 about the origin.
giPoint3coDynArr sphere(int n) {
    mlRandom random(1);
    giPoint3coDynArr points(n, 1);
    for (int i = 0; i < n; ++i) {
        double const x = random.minus_one_one(), y = random.minus_one_one();
        giVector3 const v = giVector3(x, y, random.minus_one_one()).unit();
        points.append(v.anchor());
    }
    return points;
}

giXform3 const motion(giXformRotate, giPoint3(1.0, 2.0, 3.0), giUnitVec3(1.0, -2.0, 0.5),
                      giAngle(giAngleDegrees, 73.0));

void BM_rigid_match_in_space(benchmark::State & state) {
    giPoint3coDynArr const second = sphere(n_points(state));
    giPoint3coDynArr first(second.size(), 1);
    for (int i = 0; i < second.size(); ++i) first.append(motion * second[i]);
    giXform3 x;
    for (auto _ : state) {
        sqPointsToPoints match;
        for (int i = 0; i < second.size(); ++i) match.add_pair(first.read(i), second.read(i));
        if (!match.get_xform(x)) state.SkipWithError("no match");
        benchmark::DoNotOptimize(x);
    }
    count_time_per("per_pair", state, static_cast<double>(state.range(0)));
    state.counters["off"] = (x * giPoint3(1.0, 2.0, 3.0)).distance(giPoint3(1.0, 2.0, 3.0)).value();
}
BENCHMARK(BM_rigid_match_in_space)->Apply(sizes);

void BM_rigid_match_in_the_plane(benchmark::State & state) {
    giPoint3coDynArr const points = sphere(n_points(state));
    giXform2 x;
    for (auto _ : state) {
        sqPointsToPoints match;
        for (int i = 0; i < points.size(); ++i) {
            giPoint2 const & p = points.read(i).xy();
            match.add_pair(giPoint2(-p.y(), p.x()), p);
        }
        if (!match.get_xform(x)) state.SkipWithError("no match");
        benchmark::DoNotOptimize(x);
    }
    count_time_per("per_pair", state, static_cast<double>(state.range(0)));
}
BENCHMARK(BM_rigid_match_in_the_plane)->Apply(sizes);

void BM_affine_match(benchmark::State & state, sqAffineMatchXformType type) {
    giPoint3coDynArr const points = sphere(n_points(state));
    sqPointsAffineMatch match;
    match.set_transform_type(type);
    for (int i = 0; i < points.size(); ++i) match.add_pair(motion * points[i], points[i]);
    giXform3 x;
    for (auto _ : state) {
        if (match.xform(x) != 1) state.SkipWithError("no match");
        benchmark::DoNotOptimize(x);
    }
    count_time_per("per_pair", state, static_cast<double>(state.range(0)));
}
BENCHMARK_CAPTURE(BM_affine_match, full, sqAffineMatchFull)->Apply(sizes);
BENCHMARK_CAPTURE(BM_affine_match, scale_x, sqAffineMatchX)->Apply(sizes);

}  // namespace
}  // namespace datumfit::benchmarks
