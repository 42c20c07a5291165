#pragma once

#include <datumfit/curved/cone/least_square_cone.h>
#include <datumfit/foundation/geometry/angle.h>
#include <datumfit/foundation/maths/random.h>

/// Start vectors for fits of a cone, in four ways, from points and, where there are any, their surface normals.
///
/// A guess is written as the parameters of sqLeastSquareCone in their unique form, and its sum of squared distances
/// given back: the largest double where there is no guess, and then the argument is as it was. The points are referred
/// to, not copied; the normals are copied, one for each point.
class sqConeGuessGenerator {
public:
    /// `cone_axis`, where it is set, and `cone_angle` bound the directions that get_guess_fixed_axis_fit() tries.
    sqConeGuessGenerator(giPoint3coDynArr const & points, giUnitVec3 const & cone_axis, giAngle const & cone_angle,
                         giUnitVec3coDynArr const & normals);

    /// Brings parameters to their unique form and gives the sum of the squared distances of the points.
    double deviation(mlVector & parameters);

    /// From the normals, at least 3: the tangent planes of a cone meet in its apex, and the tips of its normals lie on
    /// a circle about the axis. None for normals in one plane, as those of a cylinder are, or with fewer points than
    /// normals.
    double get_guess_from_normals(mlVector & parameters);

    /// From two circles, one through the first three points and one through three of the next six, such as a measuring
    /// machine takes in sections across the axis: their centres give the axis, their radii the slope. None when their
    /// planes are tilted to each other by more than about 30 degrees, or for circles in one plane, of one radius, or
    /// with an apex further than 1e7 away.
    double get_guess_two_circles(mlVector & parameters);

    /// A cone that is flat but for 0.005 radians, about the normal of the best plane and opening to either side: the
    /// best of a walk along the normal, from the lowest point to the highest, whose places add up so that it goes
    /// beyond them too. None for points without a plane.
    double get_guess_flat(mlVector & parameters);

    /// The best of up to 200 cones about axes of random direction, each fitted from a random place about the centroid.
    /// Repeated calls try other axes. Where none was tried, the argument is scored as it came in.
    double get_guess_fixed_axis_fit(mlVector & parameters);

private:
    giVector3 random_direction();

    giPoint3coDynArr const * points_;
    mlRandom random_;
    giPoint3 centroid_;
    sqLeastSquareCone cone_;
    giUnitVec3 cone_axis_;
    giAngle cone_angle_;
    giUnitVec3coDynArr normals_;
};
