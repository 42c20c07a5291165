#pragma once

#include <datumfit/foundation/geometry/point2.h>
#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/unit_vec3.h>
#include <datumfit/foundation/maths/distance_least_squares.h>

/// A least-squares model of points in the plane.
///
/// The points are referred to, not copied: they must outlive the object and keep still during a fit.
class sqLeastSquareDistance2 : public mlDistanceLeastSquares {
public:
    sqLeastSquareDistance2(int n_parameters, giPoint2coDynArr const & points);

    void normalize_parameters(mlVector & p) const override = 0;
    void get_distance_and_gradient(double & d, mlVector & g, int i) const override = 0;
    void get_distance(double & d, int i) const override = 0;
    ~sqLeastSquareDistance2() override;

    /// The mean of the points, to rounding also when they lie far from the origin; invalid without points.
    giPoint2 centroid() const;

    /// The length of the diagonal of the points' box; 0 without points.
    double range() const;

protected:
    giPoint2coDynArr const & points() const { return *points_; }

private:
    giPoint2coDynArr const * points_;
};

/// A least-squares model of points in space, with the geometry of a point and an axis that such models share.
///
/// The points are referred to, not copied: they must outlive the object and keep still during a fit.
class sqLeastSquareDistance3 : public mlDistanceLeastSquares {
public:
    sqLeastSquareDistance3(int n_parameters, giPoint3coDynArr const & points);

    void normalize_parameters(mlVector & p) const override = 0;
    void get_distance_and_gradient(double & d, mlVector & g, int i) const override = 0;
    void get_distance(double & d, int i) const override = 0;
    ~sqLeastSquareDistance3() override;

    /// The mean of the points, to rounding also when they lie far from the origin; invalid without points.
    giPoint3 centroid() const;

    /// The length of the diagonal of the points' box; 0 without points.
    double range() const;

    /// The distance of a point from the axis through origin: the length of direction × (point - origin).
    static double F(giPoint3 const & origin, giUnitVec3 const & direction, giPoint3 const & point);

    /// The coordinate of a point along the axis from origin, with its sign: (point - origin) · direction.
    static double G(giPoint3 const & origin, giUnitVec3 const & direction, giPoint3 const & point);

    /// G, then F, each with its derivatives by the x, y, z of the origin and the x, y, z of the direction, which are
    /// written to the first six elements; the vectors grow as needed. By the direction, only its turn counts. On the
    /// axis (F at most 1e-7) the derivative of F by origin coordinate k is the root of 1 - direction[k]², since F grows
    /// by that much whichever way the origin moves.
    static void F_G_and_derivatives(giPoint3 const & origin, giUnitVec3 const & direction, giPoint3 const & point,
                                    double & g, mlVector & dg, double & f, mlVector & df);

    /// Directions from which searches start: the axes x, y, z, then the diagonals (1, 1, 1), (-1, 1, 1), (1, -1, 1) and
    /// (-1, -1, 1). i is not checked.
    static giUnitVec3 const & guess_direction(int i);

    /// 7.
    static int num_guess_directions();

protected:
    giPoint3coDynArr const & points() const { return *points_; }

private:
    giPoint3coDynArr const * points_;
};
