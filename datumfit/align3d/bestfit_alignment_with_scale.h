#pragma once

#include <datumfit/align3d/object_for_fitting.h>
#include <datumfit/align3d/surface_bestfit.h>
#include <datumfit/foundation/surfaces/surf.h>

/// Aligns measured points to a nominal object of which the part may have kept the shape, but not the size in x and y.
///
/// It begins with a rough pairing of a few points, and then takes turns: a surface best fit of the points, and a
/// rescaling of the nominal object about the origin of its coordinates, along its x and y axes, which is kept only
/// while it brings the points closer. How much of the error of the factors a turn leaves depends on the shape and on
/// where the points lie. Measured on exact points of parts a few per cent off, with one step of the fit in each turn:
/// 0.56 on a sphere, 0.67 on an ellipsoid, and 0.8 with more of the points at one end of it, 0.82 on a torus, 0.91 on
/// an octahedron of triangles; 1e-6 took 20, 28, 50, 55 and 113 turns. More steps in a turn gained nothing.
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
    /// @param[in,out] object   owned by the caller; replaced by a rescaled copy, and deleted, when that lies closer.
    ///                         Null is nothing to align to, as if there were no passes
    /// @param rough_nominal, rough_measured  the rough pairing, which is used when `rough` is invalid
    /// @param tolerance        a best fit ends when its last step moves no point by this length
    /// @param iterations       the most steps of a best fit
    /// @param[in,out] rough    the rough transform, from measured to nominal coordinates; as it is when it is valid
    /// @param[out] total       the final one, which contains the rough one. Without a rough one, as when the pairing is
    ///                         empty, it is invalid, and the object stays
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
