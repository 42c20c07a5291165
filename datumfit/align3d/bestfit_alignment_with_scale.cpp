#include <datumfit/align3d/bestfit_alignment_with_scale.h>
#include <datumfit/align3d/surface_for_fitting.h>
#include <datumfit/matching/points_to_points.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>

namespace {

constexpr double least_scale = 0.7, greatest_scale = 1.3;
constexpr double no_extent = 1e-7;  // of the sum of squared coordinates

// Makes fit points of the measured ones, moved by x. All carry the same approximate normal.
void make_fit_points(giPoint3coPageArr const & points, giXform3 const & x, sqFitPoint3PtrcoPageArr & result) {
    giUnitVec3 const normal(x * giVector3(giAxisX));
    for (int i = 0; i < points.size(); ++i) {
        sqFitPoint3coPrf const point(new (std::nothrow) sqProbedPoint3(x * points.read(i), normal, 0.0));
        if (i < result.size()) {
            result[i] = point;
        } else {
            result.append(point);
        }
    }
}

// Estimates a factor from how far, relative to their coordinates, points lie beyond their nominal places.
class scale_estimate {
public:
    void add(double beyond, double measured) {
        mixed_ += beyond * measured;
        square_ += measured * measured;
    }
    double value() const {
        if (square_ <= no_extent) return 1.0;
        double const factor = mixed_ / square_ + 1.0;
        // Sums of huge coordinates overflow and then tell nothing.
        return std::isfinite(factor) ? std::clamp(factor, least_scale, greatest_scale) : 1.0;
    }

private:
    double mixed_ = 0.0, square_ = 0.0;
};

}  // namespace

bool sqBestfitAlignmentWithScale::find_rough_alignment(giPoint3coPageArr const & rough_nominal,
                                                       giPoint3coPageArr const & rough_measured, giXform3 & transform) {
    sqPointsToPoints match;
    for (int i = 0; i < std::min(rough_nominal.size(), rough_measured.size()); ++i) {
        match.add_pair(rough_nominal.read(i), rough_measured.read(i));
    }
    return match.get_xform(transform);
}

void sqBestfitAlignmentWithScale::get_alignment(sqObjectForFitting ** object, giPoint3coPageArr const & rough_nominal,
                                                giPoint3coPageArr const & rough_measured,
                                                giPoint3coPageArr const & points, double tolerance, int iterations,
                                                giXform3 & rough, giXform3 & total, double & scale_x, double & scale_y,
                                                int passes) {
    if (rough.invalid()) find_rough_alignment(rough_nominal, rough_measured, rough);
    scale_x = scale_y = 1.0;
    total = rough;
    if (*object == nullptr || iterations < 1) return;

    sqFitPoint3PtrcoPageArr fit_points;
    make_fit_points(points, rough, fit_points);
    sqProjectorForFitting3coPrf projector = (*object)->create_projector();
    for (int pass = 0; pass < passes; ++pass) {
        sqSurfaceBestfit fit;
        fit.set_projector(projector.pointer());
        fit.reserve_points(fit_points.size());
        for (int i = 0; i < fit_points.size(); ++i) fit.add_point(fit_points.read(i));
        giXform3 step;
        double square_deviation = 0.0, sx = 1.0, sy = 1.0;
        get_refined_xform(fit, tolerance, iterations, step, square_deviation, sx, sy);
        total.premultiply(step);

        std::unique_ptr<sqObjectForFitting> candidate((*object)->copy());
        if (!candidate) return;
        candidate->transform(giXform3(giXformScale, sx, sy, 1.0));
        sqProjectorForFitting3coPrf const candidate_projector = candidate->create_projector();
        if (!candidate_projector.pointer()) return;
        if (get_square_deviation(fit_points, step, *candidate_projector) >= square_deviation) return;

        projector = candidate_projector;  // before the object that the old one refers to goes
        delete *object;
        *object = candidate.release();
        scale_x *= sx;
        scale_y *= sy;
        make_fit_points(points, total, fit_points);
    }
}

void sqBestfitAlignmentWithScale::get_alignment(sknSurfPtr & surface, giPoint3coPageArr const & rough_nominal,
                                                giPoint3coPageArr const & rough_measured,
                                                giPoint3coPageArr const & points, double tolerance, int iterations,
                                                giXform3 & rough, giXform3 & total, double & scale_x, double & scale_y,
                                                int passes) {
    sqObjectForFitting * object = new (std::nothrow) sqSurfaceForFitting(surface);
    get_alignment(&object, rough_nominal, rough_measured, points, tolerance, iterations, rough, total, scale_x, scale_y,
                  passes);
    std::unique_ptr<sqObjectForFitting> const owner(object);
    if (owner) surface = static_cast<sqSurfaceForFitting const &>(*owner).get_surface();
}

void sqBestfitAlignmentWithScale::get_refined_xform(sqSurfaceBestfit & fit, double tolerance, int iterations,
                                                    giXform3 & transform, double & square_deviation, double & scale_x,
                                                    double & scale_y) {
    for (int k = 0; k < iterations; ++k) {
        giXform3 step;
        int const ok = fit.do_iteration(step);
        sqProjectedPoint3coDynArr const & cloud = fit.get_pointcloud();
        scale_estimate x, y;
        double sum = 0.0;
        int valid = 0;
        for (int i = 0; i < cloud.size(); ++i) {
            if (cloud[i].invalid()) continue;
            giPoint3 const & m = cloud[i].measured_point();
            giVector3 const e = m - cloud[i].nominal_point();
            sum += e.dot(e);
            x.add(e.x(), m.x());
            y.add(e.y(), m.y());
            ++valid;
        }
        square_deviation = valid > 0 ? sum / valid : sum;
        scale_x = x.value();
        scale_y = y.value();
        if (!ok || tolerance > get_maximum_movement(cloud, step)) break;
    }
    transform = fit.get_transformation();
}

double sqBestfitAlignmentWithScale::get_square_deviation(sqFitPoint3PtrcoPageArr const & points, giXform3 const & x,
                                                         sqProjectorForFitting3 const & projector) {
    double sum = 0.0;
    int valid = 0;
    for (int i = 0; i < points.size(); ++i) {
        auto const * const point = static_cast<sqProbedPoint3 const *>(points.read(i).pointer());
        if (point == nullptr) continue;  // for want of memory
        sqProjectedPoint3 record;
        projector.rotate_and_project(x, point, record);
        if (record.invalid()) continue;
        // Without a root, so that an object that is the same as before gives the same sum and not one that looks
        // better.
        sum += square_dev(record, giXformIdentity);
        ++valid;
    }
    return valid > 0 ? sum / valid : sum;
}
