#pragma once

#include <datumfit/align3d/points_to_planes/points_to_planes.h>
#include <datumfit/align3d/rps_fitting_status.h>
#include <datumfit/align3d/surface_alignment.h>
#include <datumfit/foundation/geometry/inf_line3.h>
#include <datumfit/foundation/geometry/plane.h>

#include <utility>
#include <vector>

/// Aligns a measured part by a reference point system, and by the mass of its points where that leaves it free.
///
/// The reference system is a set of points that must lie on planes, and of axes and planes that must coincide with
/// nominal ones. It counts a million times as much as points do, so that it is met where it can be. Nothing need be
/// known of the pose: the first step searches all rotations (sqPointsToPlanes::fit), with the points projected from
/// where they were measured; later steps start from the pose at hand, after the points have been projected again.
///
/// Where bands are used, the part should lie near its place, as after a fit of the reference system alone: bands are
/// stiff, and hold a part as well that is out of place against feet that are not its own.
///
/// To use it: set a projector, add points and the reference system, ask rps_determined() if wanted, then fit(). All
/// measured data are in the coordinates of the measurement. The object belongs to one thread at a time; the projector
/// is not owned, and points are only read.
class sqRPSFitting {
public:
    /// @param max_iterations  how many steps are tried, besides one
    /// @param tolerance       the fit ends when a step moves no point by this length
    sqRPSFitting(int max_iterations, double tolerance);

    /// The projector to the nominal object. Without one (null) no point has a projection.
    void set_projector(sqFitPointProjector3 const * projector) { alignment_.set_projector(projector); }

    /// Makes room for n points; without memory for them nothing happens.
    void reserve_points(int n);

    /// Adds a point with a band for its deviation, -DBL_MAX and DBL_MAX for none. An empty handle adds nothing.
    void add_point(sqFitPoint3coPrf const & point, double lower, double upper);
    void add_point(sqFitPoint3coPrf const & point);

    /// Adds two points of which only factor1 deviation1 + factor2 deviation2 counts, while both have projections.
    void add_balance(sqFitPoint3coPrf const & point1, double factor1, sqFitPoint3coPrf const & point2, double factor2);

    /// Adds a reference point: the planes through plane_point, its nominal place, across the axes u, v and w of the
    /// workplane on which it must lie, as their states say.
    void add_positioning(giPoint3 const & point, giWorkplane3 const & workplane, giPoint3 const & plane_point,
                         sqPointsToPlanes::PLANE_STATE s1, sqPointsToPlanes::PLANE_STATE s2,
                         sqPointsToPlanes::PLANE_STATE s3);

    /// Lets the measured direction fall on the nominal one. Of all locks of a direction, the first counts.
    void lock_direction(giVector3 const & from, giVector3 const & to);

    /// Lets the measured line fall on the nominal one, also in the opposite direction when `directed` is 0. The slide
    /// along it and the turn about it stay free.
    void lock_axis(giInfLine3 const & from, giInfLine3 const & to, int directed);

    /// Lets the measured plane fall on the nominal one, also with its back to it when `directed` is 0.
    void lock_plane(giPlane const & from, giPlane const & to, int directed);

    /// Not 0: where reference points contradict each other, some are dropped before the first step, for good
    /// (sqPointsToPlanes::fix_overdetermined_positioning). 0, as at first: they are met as well as they can be.
    void overconstrained_mode(int repair) { overconstrained_ = repair; }

    /// Begins anew, with 240 starts of the first search in place of 60.
    void slow_first_iteration();

    /// Whether the reference system determines the pose, also when it contradicts itself: 1, else 0. Writes to
    /// `transform` as sqPointsToPlanes::test_positioning() does.
    int rps_determined(int keep_located, giXform3 & transform);

    /// Fits, from the transform that there is; at first the identity. It ends when a step moves no point by the
    /// tolerance, when there are too many steps, or when eleven in a row have given no better result, and returns to
    /// the best of the transforms before the last step. A fit that ends with its first step, as that of a part in its
    /// place, stays where it was, with a square deviation of DBL_MAX. Without projections the reference system decides
    /// alone.
    ///
    /// @return the status. When too many points are lost the transform stays as it was then; without data it does not
    ///         change
    sqRPS_FITTING_STATUS fit();

    /// Takes one step: 1 to go on, 0 when finished.
    int do_iteration();

    /// Searches for a step with the present records and lets it act after `step`: 1, or 0 when there are none.
    ///
    /// @param attraction  see sqPointsToPlanes::set_fitting_points_attraction()
    /// @param multiple    see sqPointsToPlanes::multiple_guesses()
    int do_intermediate_bestfit(giXform3 & step, double attraction, int multiple);

    /// Projects the points under the transform, and makes the records of the next step of them.
    void extract_fitting_data();

    /// Projects the points, moved by x.
    void reproject_all_points(giXform3 & x);

    /// The mean, over the points of a cloud moved by x, of the squared distances from their nominal places; of a
    /// balance pair the square of the combined deviation counts, once. 0 without any.
    double get_square_distance(sqProjectedPoint3coDynArr const & cloud, giXform3 const & x) const;

    /// The root of the mean squared deviation of the reference points, as measured, under x.
    double standard_deviation_of_nominals(giXform3 const & x) const {
        return engine_.standard_deviation_of_nominals(x);
    }

    giXform3 const & transform() const { return xform_; }    ///< from measured to nominal coordinates
    double square_deviation() const { return square_dev_; }  ///< of the result, see get_square_distance()
    int get_iterations() const { return iterations_; }       ///< steps tried
    int nb_points() const { return alignment_.size(); }
    int num_valid_projections() const { return valid_projections_; }
    sqFitPoint3 const * point(int i) const { return alignment_.point(i); }
    sqRPS_FITTING_STATUS status_code() const { return status_; }
    sqRPS_FITTING_STATUS set_status(sqRPS_FITTING_STATUS status) { return status_ = status; }

private:
    bool is_partner(int i) const;
    void add_record(int i);
    void take_improving_step(giXform3 & step);
    double square_movement(giXform3 const & step) const;

    giXform3 xform_ = giXform3(giXformIdentity);
    double square_dev_ = 0.0;
    int iterations_ = 0;
    sqRPS_FITTING_STATUS status_ = sqRPS_FITTING_OK;
    int overconstrained_ = 0;
    mutable sqPointsToPlanes engine_;  // its first answer about nominals keeps their source data
    sqProjectedPoint3coDynArr pointcloud_;
    int valid_projections_ = 0;
    int max_iterations_;
    double tolerance_squared_;
    std::vector<std::pair<int, double>> balance_;  // for each point, up to the last pair, its partner and its own
                                                   // factor, or -1 and 0
    doublecoPageArr lower_, upper_;
    datumfit::internal::surface_alignment alignment_;  // only its points and their projections
};
