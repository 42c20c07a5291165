#pragma once

#include <datumfit/align3d/surface_alignment.h>

class sqPointsToPlanes;

/// Places measured points against a nominal surface so that the smallest of their deviations is as large as can be.
///
/// Where least squares average, this raises the worst point: it tells, for instance, whether a raw part holds enough
/// material everywhere. The deviation of a point is its signed distance from the nominal place along the nominal normal
/// there; what counts is the delta, the deviation less the point's own offset if respect_tols() says so.
///
/// Each iteration searches, by bisection, the largest value that a linear step (sqPointsToPlanes::single_linear_step)
/// can hold all deltas at, the feet and normals staying as they are, and then projects the points anew. It is a local
/// method, as sqSurfaceBestfit is; points, projector, locks and units are as there.
class sqSurfaceMaxiMinFit {
public:
    /// The projector must outlive the fit; with null no point has a projection.
    explicit sqSurfaceMaxiMinFit(sqFitPointProjector3 const * projector);

    /// Makes room for n points; without memory for them nothing happens.
    void reserve_points(int n);

    int nb_points() const { return alignment_.size(); }
    sqFitPoint3 const * point(int i) const { return alignment_.point(i); }

    /// The latest projections, in the order of the points.
    sqProjectedPoint3coDynArr const & get_pointcloud() const { return alignment_.cloud(); }

    /// The transform so far, invalid before the first fit.
    giXform3 const & get_transformation() const { return alignment_.transformation(); }

    /// Adds a point with the deviation that it has to have at least, or any other offset from which its delta is to
    /// count. An empty handle adds nothing, nor does a point for which there is no memory.
    void add_point(sqFitPoint3coPrf const & point, double offset);

    /// Whether the offsets count: not when it is 0, as at first. They stay stored.
    void respect_tols(int use) { use_offsets_ = use; }

    /// Locks, as in sqSurfaceBestfit. They act with the first step, and that is taken only if it raises the worst
    /// point: a direction that can't be turned home with a gain stays where it was measured.
    void lock_axis(sqSurfaceBestfitLockedAxisType type, giVector3 const & from, giVector3 const & to,
                   giPoint3 const & origin_from, giPoint3 const & origin_to) {
        alignment_.locks().lock_axis(type, from, to, origin_from, origin_to);
    }
    void lock_origin(giPoint3 const & origin_from, giPoint3 const & origin_to) {
        alignment_.locks().lock_origin(origin_from, origin_to);
    }
    void lock_rotations(giVector3 const & d1, giVector3 const & d2, giVector3 const & d3) {
        alignment_.locks().lock_rotations(d1, d2, d3);
    }

    /// Fits, from the points as measured.
    ///
    /// @param tolerance              the fit ends when a step gains less than a tenth of it, or when the last step,
    ///                               taken once more, would move every point by less than it
    /// @param[out] transform         the rigid transform from measured to nominal coordinates
    /// @param[out] largest_distance  the largest distance of a point from its nominal place
    /// @param[out] smallest_signed   the smallest deviation, without offset; DBL_MAX when no point has a projection
    /// @param[out] largest_signed    the largest deviation, without offset; -DBL_MAX when no point has a projection
    /// @param[out] invalid_points    how many points have no projection now; they count nowhere else
    ///
    /// At most 50 iterations. Without points no result is touched. When no point has a projection, or no step holds the
    /// deltas where they are (as when a locked direction is out of reach without loss), the fit goes back to the
    /// identity and ends, and the results are those of the points as measured.
    ///
    /// Where the normals leave a direction in which all deviations grow (exists_solution() is 0), no deviation may
    /// exceed the largest delta that there is: offsets above 0 narrow that space.
    ///
    /// A second fit on one object starts from the identity, with the measured side of locks taken to lie on the nominal
    /// one already: set the locks again, or use a new object.
    void fit(double tolerance, giXform3 & transform, double & largest_distance, double & smallest_signed,
             double & largest_signed, int & invalid_points);

    /// Takes one step from the present transform, at first from the identity, and projects the points anew. Not 0; or 0
    /// when there is no step that gains a tenth of the tolerance: `step` is then the identity, or a step of lesser gain
    /// that was not taken.
    int do_iteration(double tolerance, giXform3 & step);

    /// The step that holds all deltas at `delta` or above and all deviations at `upper` or below, and does the best for
    /// the sum of their squares. 1, or 0 when there is none and `step` is as it was.
    ///
    /// The engine brings its locks. What best-fit records it has are replaced; a locked direction that it had to turn
    /// first stays turned, so that an engine with such a lock serves one call only.
    int fit_the_points(sqPointsToPlanes & engine, double delta, double upper, giXform3 & step) const;

    /// The range of the deltas of the latest projections; DBL_MAX and -DBL_MAX without a valid one.
    void get_delta_range(double & smallest, double & largest) const;

    /// The range that the deltas would have after a further transform x, were the feet and normals to stay.
    void estimate_xformed_deviations(giXform3 const & x, double & smallest, double & largest) const;

    /// The smallest delta of the latest projections; DBL_MAX without a valid one.
    double achieved_deviation() const;

    /// Projects the points, moved by x, into a cloud with a record for each, each point by itself. For the first
    /// projection of an object, whichever way it comes, the points give their initial projection and x is not looked
    /// at.
    void reproject_all_points(giXform3 & x, sqProjectedPoint3coDynArr & cloud) const;

    /// The figures of a cloud that fit() gives, and the number of records that are valid.
    static void get_pointcloud_parameters(sqProjectedPoint3coDynArr const & cloud, double & largest_distance,
                                          double & smallest_signed, double & largest_signed, int & invalid_points,
                                          int & valid_points);

private:
    // How a trial value is tried out: a step, and the smallest delta to be expected after it.
    struct trial {
        giXform3 step;
        double smallest;
    };
    void add_records(sqPointsToPlanes & engine, double delta, double upper, giVector3 const & base) const;
    bool try_delta(double delta, double upper, trial & result) const;
    void raise(double low, double high, double upper, double resolution, trial & best) const;

    double offset(int i) const { return use_offsets_ ? offsets_[i] : 0.0; }

    datumfit::internal::surface_alignment alignment_;
    doublecoPageArr offsets_;  // one each a point
    int use_offsets_ = 0;
};

/// 1 when the normals of the valid records point in all directions, so that raising some deviations lowers others: they
/// do not fit into a cone of half angle 89 degrees. 0 when they do, and a shift along its axis would raise all of them.
int exists_solution(sqProjectedPoint3coDynArr const & cloud);
