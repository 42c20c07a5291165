#include <benchmarks/support/time_fit.h>
#include <benchmarks/support/wavy_rod.h>
#include <datumfit/align3d/surf_projector_for_fitting3.h>
#include <datumfit/align3d/surface_bestfit.h>
#include <datumfit/align3d/surface_maxi_min_fit.h>
#include <datumfit/datumfit.h>

#include <array>
#include <cmath>
#include <limits>
#include <random>

namespace datumfit::benchmarks {
namespace {

constexpr double unbounded = std::numeric_limits<double>::max();
constexpr double form = 0.01, probe_radius = 1.0;
std::array<double, 3> const half_sizes = {60.0, 40.0, 25.0};

// A block about the origin: a foot on each face that the point lies over or under, as a surface in parts gives them.
class Block : public sknSurf {
public:
    void project_point(giPoint3 const & p, sknSurfPointList & feet, int & status) const override {
        std::array<double, 3> const at = {p.x(), p.y(), p.z()};
        status = 1;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            std::size_t const j = (axis + 1) % 3, k = (axis + 2) % 3;
            if (std::abs(at[j]) > half_sizes[j] || std::abs(at[k]) > half_sizes[k]) continue;
            double const near = at[axis] < 0.0 ? -1.0 : 1.0;
            for (double const side : {near, -near}) {
                std::array<double, 3> foot = at;
                foot[axis] = side * half_sizes[axis];
                feet.append({static_cast<double>(axis), side, giPoint3(foot[0], foot[1], foot[2])});
            }
            status = 0;
        }
    }
    giUnitVec3 normal_at(sknSurfPoint const & at, double, giAngle const &) const override {
        giUnitVec3 const axis(static_cast<gi_Axis>(static_cast<int>(at.u)));
        return at.v < 0.0 ? -axis : axis;
    }
    void clone(sknSurfPtr & copy) const override { copy = new Block(*this); }

protected:
    void apply(giXform3 const &) override {}
};

// Calls add(point) for probe centres around the block, which lie off by up to 0.5 or so.
template <class Add>
void measure(int n, Add add) {
    std::mt19937_64 engine(20240229);
    auto const uniform = [&] { return static_cast<double>(engine() >> 11) * 0x1p-52 - 1.0; };
    giXform3 const moved(giXformProduct, giXform3(giXformTranslate, giVector3(0.2, -0.1, 0.15)),
                         giXform3(giXformRotate, giOrigin, giUnitVec3(1.0, 2.0, -1.5), giAngle(giAngleRadians, 5e-3)));
    for (int i = 0; i < n; ++i) {
        std::size_t const face = static_cast<std::size_t>(i) % 6, axis = face % 3;
        std::array<double, 3> normal = {}, p = {};
        normal[axis] = face < 3 ? 1.0 : -1.0;
        for (std::size_t c = 0; c < 3; ++c) p[c] = 0.95 * half_sizes[c] * uniform();
        p[axis] = normal[axis] * (half_sizes[axis] + probe_radius + form * uniform());
        add(sqFitPoint3coPrf(new sqProbedPoint3(moved * giPoint3(p[0], p[1], p[2]),
                                                moved * giVector3(normal[0], normal[1], normal[2]), probe_radius)));
    }
}

void few_to_many(benchmark::internal::Benchmark * b) {
    b->Unit(benchmark::kMillisecond);
    for (int const n : {100, 10000, 100000}) b->Arg(n);
}

template <class Fit>
void time_whole_fit(benchmark::State & state, Fit & fit) {
    giXform3 x;
    double distance = 0.0, a = 0.0, b = 0.0;
    int invalid = 0;
    for (auto _ : state) fit.fit(1e-6, x, distance, a, b, invalid);
    count_time_per("per_point", state, static_cast<double>(fit.nb_points()));
    state.counters["distance"] = distance;
    state.counters["invalid"] = invalid;
}

void time_bestfit(benchmark::State & state, double band) {
    Block const block;
    sqSurfProjectorForFitting3 const projector(block);
    sqSurfaceBestfit fit;
    fit.set_projector(&projector);
    measure(n_points(state), [&](sqFitPoint3coPrf const & p) { fit.add_point(p, -band, band, 1.0); });
    time_whole_fit(state, fit);
}

// The bare pass: one projection of all points.
void BM_projection(benchmark::State & state) {
    Block const block;
    sqSurfProjectorForFitting3 const projector(block);
    sqSurfaceBestfit fit;
    fit.set_projector(&projector);
    measure(n_points(state), [&](sqFitPoint3coPrf const & p) { fit.add_point(p); });
    giXform3 x = giXformIdentity;
    sqProjectedPoint3coDynArr cloud;
    for (auto _ : state) fit.reproject_all_points(x, cloud);
    count_time_per("per_point", state, static_cast<double>(fit.nb_points()));
}
BENCHMARK(BM_projection)->Apply(few_to_many);

void BM_surface_bestfit(benchmark::State & state) {
    time_bestfit(state, unbounded);
}
BENCHMARK(BM_surface_bestfit)->Apply(few_to_many);

// With bands for all points, wide enough to be kept from the first step on.
void BM_surface_bestfit_in_bands(benchmark::State & state) {
    time_bestfit(state, 1.2 * form);
}
BENCHMARK(BM_surface_bestfit_in_bands)->Apply(few_to_many);

// To a mesh of 200,000 triangles, turned about its middle by some 0.01 radians and shifted by some 0.3.
void BM_surface_bestfit_to_mesh(benchmark::State & state) {
    triangles const t = make_triangles(200000);
    sknMeshSurf const mesh(t.vertices, t.corners);
    sqSurfProjectorForFitting3 const projector(mesh);
    giPoint3 const middle(300.0, -200.0, 75.0);
    giXform3 const moved(giXformProduct, giXform3(giXformTranslate, giVector3(0.2, -0.1, 0.15)),
                         giXform3(giXformRotate, middle, giUnitVec3(1.0, 2.0, -1.5), giAngle(giAngleRadians, 0.01)));
    sqSurfaceBestfit fit;
    fit.set_projector(&projector);
    int const n = n_points(state);
    fit.reserve_points(n);
    for (int i = 0; i < n; ++i) {
        double const u = 2.4 * i, v = 0.05 + 0.9 * std::fmod(0.618 * i, 1.0), h = 1e-4;
        giPoint3 const p = rod_with_waves(u, v);
        giUnitVec3 const n_at((rod_with_waves(u + h, v) - p).cross(rod_with_waves(u, v + h) - p));
        giVector3 const & normal = n_at;
        fit.add_point(sqFitPoint3coPrf(new sqProbedPoint3(
            moved * (p + (probe_radius + form * std::sin(7.0 * i)) * normal), moved * normal, probe_radius)));
    }
    time_whole_fit(state, fit);
}
BENCHMARK(BM_surface_bestfit_to_mesh)->Apply(few_to_many);

void BM_surface_maxi_min_fit(benchmark::State & state) {
    Block const block;
    sqSurfProjectorForFitting3 const projector(block);
    sqSurfaceMaxiMinFit fit(&projector);
    measure(n_points(state), [&](sqFitPoint3coPrf const & p) { fit.add_point(p, 0.0); });
    time_whole_fit(state, fit);
}
BENCHMARK(BM_surface_maxi_min_fit)->Apply(few_to_many);

}  // namespace
}  // namespace datumfit::benchmarks
