// Brings a measured part back to its nominal shape, once given as a triangle mesh and once as analytic surfaces.
//
// The part is a knob on a shaft, measured by a probe of 1.5 mm radius with errors of 0.01 mm, and lies 10 degrees and a
// third of its size away from where it belongs.

#include "support/knob.h"

#include <datumfit/datumfit.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

struct Deviations {
    double largest = 0.0, positive = 0.0, negative = 0.0;
    int invalid = 0;
};

Deviations deviations_under(giXform3 x, sqSurfaceBestfit const & fit) {
    sqProjectedPoint3coDynArr cloud;
    fit.reproject_all_points(x, cloud);
    Deviations d;
    int valid = 0;
    sqSurfaceBestfit::get_pointcloud_parameters(cloud, d.largest, d.positive, d.negative, d.invalid, valid);
    return d;
}

void print(char const * when, Deviations const & d) {
    std::printf("  %-7s deviations from %9.4f to %9.4f, %d points without a projection\n", when, d.negative, d.positive,
                d.invalid);
}

void print(giXform3 const & x) {
    for (int row = 0; row < 3; ++row) {
        std::printf("  %12.9f %12.9f %12.9f   %13.8f\n", x.matrix()(row, 0), x.matrix()(row, 1), x.matrix()(row, 2),
                    x.matrix()(row, 3));
    }
}

giXform3 product(giXform3 const & a, giXform3 const & b) {
    return giXform3(giXformProduct, a, b);
}

/// The largest distance between the places that two transforms give to the points.
double difference(giXform3 const & a, giXform3 const & b, std::vector<Reading> const & readings) {
    double largest = 0.0;
    for (Reading const & r : readings) {
        largest = std::max(largest, distance(a * r.centre, b * r.centre).value());
    }
    return largest;
}

sqFitPoint3coPrf probed(Reading const & r, giXform3 const & x) {
    giVector3 const & side = r.side;
    return new sqProbedPoint3(x * r.centre, giUnitVec3(x * side), probe_radius);
}

/// From far away, without bands: as long as the part is out of place, its deviations tell of that alone.
giXform3 align_from_afar(std::vector<Reading> const & readings, sqFitPointProjector3 const & projector) {
    sqSurfaceBestfit fit;
    fit.set_projector(&projector);
    for (Reading const & r : readings) fit.add_point(probed(r, giXformIdentity));
    fit.reserve_points(static_cast<int>(readings.size()));
    giXform3 x;
    Deviations before = deviations_under(giXformIdentity, fit), after;
    fit.fit(1e-9, x, after.largest, after.positive, after.negative, after.invalid);
    print("before:", before);
    print("after:", after);
    return x;
}

/// Once it is in place, every tenth point has to stay within its band, of which two contradict each other.
giXform3 align_within_bands(std::vector<Reading> const & readings, sqFitPointProjector3 const & projector,
                            giXform3 const & start) {
    double const half_width = 0.0095;
    sqSurfaceBestfit fit;
    fit.set_projector(&projector);
    fit.reserve_points(static_cast<int>(readings.size()) + 1);
    int banded = 0;
    for (std::size_t i = 0; i < readings.size(); ++i) {
        bool const has_band = i % 10 == 0;
        banded += has_band;
        fit.add_point(probed(readings[i], start), has_band ? -half_width : -DBL_MAX, has_band ? half_width : DBL_MAX,
                      1.0);
    }
    fit.add_point(probed(readings[0], start), 0.5, 0.6, 0.5);  // the same point, at odds with its own band
    giXform3 x;
    Deviations after;
    fit.fit(1e-9, x, after.largest, after.positive, after.negative, after.invalid);
    print("banded:", after);
    int active = 0;
    double beyond = 0.0;
    for (int i = 0; i < static_cast<int>(readings.size()); i += 10) {
        double const over = std::fabs(fit.get_pointcloud()[i].signed_distance()) - half_width;
        active += over > -1e-7;
        beyond = std::max(beyond, over);
    }
    intcoDynArr const & given_up = fit.overdetermined_constraints();
    std::printf(
        "  %d bands of +-%.4f and one that contradicts them: %d bind, none is exceeded by more than %.0e;\n"
        "  given up: %d of %d ends",
        banded, half_width, active, std::max(beyond, 0.0), given_up.size(), 2 * (banded + 1));
    for (int i = 0; i < given_up.size(); ++i) std::printf("%s %d", i == 0 ? ", number" : ",", given_up[i]);
    std::printf("\n");
    return product(x, start);
}

void align(char const * name, sknSurf const & nominal, std::vector<Reading> const & readings, giXform3 const & truth) {
    sqSurfProjectorForFitting3 const projector(nominal);
    std::printf("\nTo its %s, %zu points:\n", name, readings.size());
    giXform3 const x = align_within_bands(readings, projector, align_from_afar(readings, projector));
    std::printf("  the transform, which puts no point farther than %.4f from where it was before the part was moved:\n",
                difference(x, truth, readings));
    print(x);
}

}  // namespace

int main() {
    Knob const knob;
    giXform3 const moved(giXformProduct,
                         giXform3(giXformTranslate, knob.size() / 3.0 * giVector3(giUnitVec3(2.0, -1.0, 1.5))),
                         giXform3(giXformRotate, giOrigin, giUnitVec3(1.0, 2.0, -0.5), giAngle(giAngleDegrees, 10.0)));
    std::vector<Reading> const readings = knob.measure(moved, 0.01);
    giXform3 const truth(giXformInverse, moved);
    std::printf("A knob of %.0f mm, measured by a probe of %.1f mm radius, moved by 10 degrees and %.1f mm.\n",
                knob.size(), probe_radius, knob.size() / 3.0);
    align("nominal mesh", knob.mesh(), readings, truth);
    align("nominal analytic surfaces", knob.surfaces(), readings, truth);
}
