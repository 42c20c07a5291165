#pragma once

#include <datumfit/curved/ellipse/least_square_ellipse.h>

/// As sqLeastSquareEllipse, and tells where on the ellipse the foot of a point is.
class sqLeastSquareProbedEllipse : public sqLeastSquareEllipse {
public:
    explicit sqLeastSquareProbedEllipse(giPoint2coDynArr const & points);
    ~sqLeastSquareProbedEllipse() override;

    /// The distance of point i (not checked), the point of the ellipse nearest to it, and the unit normal of the
    /// ellipse there, which points outwards whatever the signs of the semi-axes. Of two nearest points, from one on the
    /// long axis, that on the positive side of the axis is taken. With a semi-axis of 0 the normal is
    /// invalid.
    void get_distance_and_closest_point(double & d, giPoint2 & closest, giVector2 & normal, int i) const;
};
