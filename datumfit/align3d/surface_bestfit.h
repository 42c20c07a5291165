#pragma once

#include <datumfit/align3d/surface_alignment.h>

class sqPointsToPlanes;

/// Aligns measured points to a nominal surface by least squares of their deviations, under bands and locks.
///
/// Iterated point-to-plane alignment (Chen & Medioni 1992): each point is projected to the surface, one linear step
/// (sqPointsToPlanes::single_linear_step) is taken on the tangent planes found, and the points are projected again
/// from their new places, until a step moves no point by the tolerance. It is a local method: the measured part has to
/// lie near enough for most points to find their own places. It converges fast on exact data and slows down where
/// deviations are large against the radii of curvature. Steps are linearised about the origin of the coordinates, or
/// about the middle of a part that is more than ten times as far away as it reaches.
///
/// To use it: set a projector, add points, set locks, fit(). The object keeps points, locks, given-up bands and the
/// transform until it goes. It belongs to one thread at a time; points are only read, and the projector is not owned.
///
/// The deviation of a point is its signed distance from the nominal place along the nominal normal there. All lengths
/// are in the unit of the coordinates. A point without projection, as beside the edge of the surface, is left out of
/// the step at hand and may come back later.
class sqSurfaceBestfit {
public:
    sqSurfaceBestfit();

    /// The projector to the nominal object, which must outlive the fit. Needed before fitting: without one (null) no
    /// point has a projection.
    void set_projector(sqFitPointProjector3 const * projector) { alignment_.set_projector(projector); }

    /// Makes room for n points; without memory for them nothing happens.
    void reserve_points(int n);

    /// Adds a point with a band for its deviation, the ends being lengths: -DBL_MAX and DBL_MAX for none.
    ///
    /// The weight multiplies the deviation, so that its square counts in the sum; only the ratio of weights to each
    /// other matters. Of bands that can't be kept together, those of the greater weight come first. A weight of 0 or an
    /// empty handle adds nothing, nor does a point for which there is no memory.
    void add_point(sqFitPoint3coPrf const & point, double lower, double upper, double weight);

    /// Adds a point without band, of weight 1.
    void add_point(sqFitPoint3coPrf const & point);

    /// Turns the measured direction `from` onto the nominal one `to`, and holds the measured origin in as many
    /// directions as the type says; what is left free is fitted. Lengths of the directions don't matter. Each call
    /// replaces the axis and the origin.
    ///
    /// A lock of which one side is not set (or, of a direction, null) is none: an axis without origin leaves all
    /// shifts free.
    void lock_axis(sqSurfaceBestfitLockedAxisType type, giVector3 const & from, giVector3 const & to,
                   giPoint3 const & origin_from, giPoint3 const & origin_to) {
        alignment_.locks().lock_axis(type, from, to, origin_from, origin_to);
    }

    /// Brings the measured point origin_from onto origin_to, which leaves only turns about it. Replaces the origin.
    void lock_origin(giPoint3 const & origin_from, giPoint3 const & origin_to) {
        alignment_.locks().lock_origin(origin_from, origin_to);
    }

    /// Leaves only shifts, along one to three directions at right angles to each other; directions not wanted are
    /// invalid vectors, and with null ones nothing moves. This comes before any lock of axis or origin. Directions add
    /// up over calls, and the first three count.
    void lock_rotations(giVector3 const & d1, giVector3 const & d2, giVector3 const & d3) {
        alignment_.locks().lock_rotations(d1, d2, d3);
    }

    /// Fits, from the points as measured.
    ///
    /// @param tolerance                the fit ends when its last step, taken once more, would move every point by less
    /// @param[out] transform           the rigid transform from measured to nominal coordinates
    /// @param[out] largest_distance    the largest distance of a point from its nominal place
    /// @param[out] largest_positive    the largest deviation, 0 when all are negative
    /// @param[out] largest_negative    the smallest deviation, 0 when all are positive
    /// @param[out] invalid_points      how many points have no projection now; they count nowhere else
    ///
    /// At most 50 iterations; with a tolerance of 0 all of them. Without points no result is touched; when no point
    /// has a projection, the transform is what the locks ask for, else the identity.
    ///
    /// Bands that can't be kept together don't fail the fit. Some are given up, as few as possible
    /// (mlConstrainedQuadraticMinimiser) and never to return: overdetermined_constraints() names them. When the bands
    /// could be kept so far and no longer, the fit ends, and it ends at the transform from which the last step that
    /// kept all bands was taken.
    ///
    /// A second fit on one object starts from the identity, but the bands given up stay so, and the measured side of
    /// locks is taken to lie on the nominal one already: set the locks again, or use a new object.
    void fit(double tolerance, giXform3 & transform, double & largest_distance, double & largest_positive,
             double & largest_negative, int & invalid_points);

    /// Takes one step from the present transform, at first from the identity, and projects the points anew. 1; or 0
    /// when there is none, and then step is as it was, or when all bands could be kept before and can't be any more:
    /// the transform is then that of the fit's end.
    int do_iteration(giXform3 & step);

    /// Projects the points, moved by x, into a cloud with a record for each. For the first projection of an object,
    /// whichever way it comes, the points give their initial projection and x is not looked at.
    void reproject_all_points(giXform3 & x, sqProjectedPoint3coDynArr & cloud) const;

    /// The figures of a cloud that fit() gives, and the number of records that are valid.
    static void get_pointcloud_parameters(sqProjectedPoint3coDynArr const & cloud, double & largest_distance,
                                          double & largest_positive, double & largest_negative, int & invalid_points,
                                          int & valid_points);

    /// The latest projections, in the order of the points.
    sqProjectedPoint3coDynArr const & get_pointcloud() const { return alignment_.cloud(); }

    /// The transform so far, invalid before the first fit.
    giXform3 const & get_transformation() const { return alignment_.transformation(); }

    /// The numbers of the ends of bands that were given up, ascending. They count through all points in their order,
    /// whether or not they have a projection: for each its lower end if there is one, then its upper end.
    intcoDynArr const & overdetermined_constraints() const { return overdetermined_; }

    int nb_points() const { return alignment_.size(); }
    sqFitPoint3 const * point(int i) const { return alignment_.point(i); }

private:
    void normalize_weights();
    void add_records(sqPointsToPlanes & engine, intcoDynArr & ranks) const;
    void give_up(intcoDynArr const & numbers, intcoDynArr const & ranks);

    datumfit::internal::surface_alignment alignment_;
    doublecoPageArr lower_, upper_, weights_;  // one each a point
    intcoDynArr overdetermined_;
    giXform3 last_good_;  // before the latest step with all bands intact
};
