#pragma once

#include <datumfit/primitives/least_square_distance.h>

/// Distances of points from a circle in space, a model for mlLevenbergMarquardt.
///
/// With f the distance of p from the circle's axis and g its height above the circle's plane, the distance is the root
/// of (f - R)² + g²: never negative, in the unit of the coordinates. Parameters: 0 to 2 the centre, 3 to 5 the normal,
/// 6 the radius; six are independent, since the length of the normal does not count.
class sqLeastSquareCircle3 : public sqLeastSquareDistance3 {
public:
    explicit sqLeastSquareCircle3(giPoint3coDynArr const & points);

    /// Gives the normal length 1; one of length exactly 0 becomes (1, 0, 0). Centre and radius stay.
    void normalize_parameters(mlVector & p) const override;

    /// The distance of point i (not checked), and its derivatives by the seven parameters; the normal is normalised
    /// first. Within 1e-7 of the circle, where a distance has no direction, they are (0, 0, 0, 0, 0, 0, -1).
    void get_distance_and_gradient(double & d, mlVector & g, int i) const override;
    void get_distance(double & d, int i) const override;

    /// The square of the distance computed last, as it was before its root was taken.
    double get_last_square_distance() const override;

    /// 6.
    int n_independent_parameters() const override;

    /// The radius for the numbers of the normal, 1 for centre and radius.
    void parameter_scales(mlVector & s) const override;
    ~sqLeastSquareCircle3() override;

private:
    giPoint3 centre() const;
    giUnitVec3 normal() const;
    double radius() const { return parameters()[6]; }

    mutable double last_square_distance_;
};
