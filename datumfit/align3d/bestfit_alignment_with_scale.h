#pragma once

#include <datumfit/align3d/object_for_fitting.h>
#include <datumfit/align3d/surface_bestfit.h>
#include <datumfit/foundation/surfaces/surf.h>

/// Aligns measured points to a nominal object of which the part may have kept the shape, but not the size in x and y.
///
/// It begins with a rough pairing of a few points, and then takes turns: a surface best fit of the points, and a
/// rescaling of the nominal object about the origin of its coordinates, along its x and y axes, which is kept only
/// while it brings the points closer. A turn finds a part of the factors only: on an ellipsoid it leaves two thirds of
/// what they are off, so that 30 turns bring a few per cent down to 1e-6.
///
/// Points are taken as points of the surface: they have no probe radius. All is local to a call.
class sqBestfitAlignmentWithScale {
public:
    /// Finds the rigid transform that carries the measured points of the rough pairing onto the nominal ones, index by
    /// index. The result is that of sqPointsToPoints::get_xform().
    static bool find_rough_alignment(giPoint3coPageArr const & rough_nominal, giPoint3coPageArr const & rough_measured,
                                     giXform3 & transform);

    /// Aligns points to an object.
    ///
    /// @param[in,out] object   owned by the caller; replaced by a rescaled copy, and deleted, when that lies closer
    /// @param rough_nominal, rough_measured  the rough pairing, which is used when `rough` is invalid
    /// @param tolerance        a best fit ends when its last step moves no point by this length
    /// @param iterations       the most steps of a best fit
    /// @param[in,out] rough    the rough transform, from measured to nominal coordinates
    /// @param[out] total       the final one, which contains the rough one
    /// @param[out] scale_x, scale_y  the factors of the nominal object in all
    /// @param passes           the most turns. Without passes or iterations the result is the rough transform, with
    ///                         factors of 1
    static void get_alignment(sqObjectForFitting ** object, giPoint3coPageArr const & rough_nominal,
                              giPoint3coPageArr const & rough_measured, giPoint3coPageArr const & points,
                              double tolerance, int iterations, giXform3 & rough, giXform3 & total, double & scale_x,
                              double & scale_y, int passes);

    /// The same for a surface: the handle ends up at the rescaled one, and the surface that it held stays as it is.
    static void get_alignment(sknSurfPtr & surface, giPoint3coPageArr const & rough_nominal,
                              giPoint3coPageArr const & rough_measured, giPoint3coPageArr const & points,
                              double tolerance, int iterations, giXform3 & rough, giXform3 & total, double & scale_x,
                              double & scale_y, int passes);

private:
    static void get_refined_xform(sqSurfaceBestfit & fit, double tolerance, int iterations, giXform3 & transform,
                                  double & square_deviation, double & scale_x, double & scale_y);
    static double get_square_deviation(sqFitPoint3PtrcoPageArr const & points, giXform3 const & x,
                                       sqProjectorForFitting3 const & projector);
};
