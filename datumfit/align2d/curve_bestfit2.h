#pragma once

#include <datumfit/align2d/fit_point2.h>
#include <datumfit/align2d/line_locks.h>

class sqPointsToLines;

/// Aligns measured points to a nominal curve of the plane by least squares of their deviations, under bands and locks.
///
/// Iterated point-to-line alignment (Chen & Medioni 1992, in the plane): each point is projected to the curve, one
/// linear step (sqPointsToLines::single_linear_step) is taken on the tangents found, and the points are projected again
/// from their new places, until a step moves no point by the tolerance. It is a local method: the measured part has to
/// lie near enough for most points to find their own places. It converges fast on exact data and slows down where
/// deviations are large against the radii of curvature.
///
/// To use it: set a projector, add points, set locks, fit(). The object belongs to one thread at a time; points are
/// only read, and the projector is not owned.
///
/// The deviation of a point is its signed distance from the nominal place along the nominal normal there. All lengths
/// are in the unit of the coordinates. A point without projection, as beside the end of a curve, is left out of the
/// step at hand and may come back later.
class sqCurveBestfit2 {
public:
    sqCurveBestfit2();

    /// What the points are handed to be projected by; it must outlive the fit. Needed before fitting, unless the
    /// points do without (null).
    void set_projector(sqFitPointProjector2 const * projector) { projector_ = projector; }

    /// Makes room for n points; without memory for them nothing happens.
    void reserve_points(int n);

    /// Adds a point with a band for its deviation: -DBL_MAX and DBL_MAX stand for an open end, as do infinite ends and
    /// one that is no number. Bands have effect where nothing is locked. An empty handle is a point that never has a
    /// projection. Without memory nothing is added.
    void add_point(sqFitPoint2coPrf const & point, double lower, double upper);

    /// Adds a point without band.
    void add_point(sqFitPoint2coPrf const & point);

    /// Turns the measured direction `from` onto the nominal one `to`; their lengths don't matter. The shift is fitted,
    /// or with an origin locked as well, the slide along `to`. A lock with a null direction, or one not set, is none.
    void lock_axis(giVector2 const & from, giVector2 const & to) { locks_.lock_axis(from, to); }

    /// Brings the measured point `from` onto `to`, which leaves the turn about it. With a point not set or not finite
    /// there is no lock.
    void lock_origin(giPoint2 const & from, giPoint2 const & to) { locks_.lock_origin(from, to); }

    /// Fits, from the points as measured.
    ///
    /// @param tolerance                the fit ends with a step that moves no point by this
    /// @param[out] transform           the rigid transform from measured to nominal coordinates
    /// @param[out] largest_distance    the largest distance of a point from its nominal place
    /// @param[out] largest_positive    the largest deviation, 0 when all are negative
    /// @param[out] largest_negative    the smallest deviation, 0 when all are positive
    /// @param[out] invalid_points      how many points had no projection; they count nowhere else
    ///
    /// The last four describe the position before the last step, which is no farther from that of `transform` than the
    /// tolerance, if the fit ended by it. At most 50 steps; with a tolerance of 0 all of them. With no points, or none
    /// that has a projection, the transform is what the locks ask for, else the identity.
    ///
    /// After the first step the measured side of a lock is taken to lie on the nominal one, where it has been brought,
    /// so that the fit converges to the locked pose. The locks themselves stay as they were set.
    ///
    /// Bands that can't be kept together don't fail the fit. Some ends are given up, as few as possible
    /// (mlConstrainedQuadraticMinimiser): overdetermined_constraints() names them. A second fit on one object starts
    /// from the identity, but the ends given up stay so. A part that lies far from the origin against its size is
    /// turned about a place near it, so that steps don't throw it off its curve.
    void fit(double tolerance, giXform2 & transform, double & largest_distance, double & largest_positive,
             double & largest_negative, int & invalid_points);

    /// Projects the points, moved by x, into a cloud with a record for each; one that comes back with a part not set or
    /// not finite is made invalid. For the first projection of an object, whichever way it comes, the points give their
    /// initial projection and x is not looked at.
    void reproject_all_points(giXform2 & x, sqProjectedPoint2coDynArr & cloud) const;

    /// The figures of a cloud that fit() gives, and the number of records that are valid.
    static void get_pointcloud_parameters(sqProjectedPoint2coDynArr const & cloud, double & largest_distance,
                                          double & largest_positive, double & largest_negative, int & invalid_points,
                                          int & valid_points);

    int nb_points() const { return points_.size(); }

    /// Null for an empty handle.
    sqFitPoint2 const * point(int i) const { return points_.read(i).pointer(); }

    /// The numbers of the ends of bands that were given up, ascending. They count through all points in their order,
    /// whether or not they have a projection: for each its lower end if it has one, then its upper end.
    intcoDynArr const & overdetermined_constraints() const { return overdetermined_; }

private:
    giXform2 single_step(sqProjectedPoint2coDynArr const & cloud, datumfit::internal::line_locks const & locks);
    void add_records(sqPointsToLines & engine, sqProjectedPoint2coDynArr const & cloud, giVector2 const & base,
                     intcoDynArr & ranks) const;
    void give_up(intcoDynArr const & numbers, intcoDynArr const & ranks);

    sqFitPointProjector2 const * projector_ = nullptr;
    sqFitPoint2PtrcoPageArr points_;
    doublecoDynArr lower_, upper_;  // one each a point
    datumfit::internal::line_locks locks_;
    intcoDynArr overdetermined_;
    mutable bool initial_ = true;  // the next projection is the points' initial one
};
