#include <datumfit/curved/ellipse/least_square_probed_ellipse.h>

sqLeastSquareProbedEllipse::sqLeastSquareProbedEllipse(giPoint2coDynArr const & points)
    : sqLeastSquareEllipse(points, typeid(sqLeastSquareProbedEllipse)) {}

sqLeastSquareProbedEllipse::~sqLeastSquareProbedEllipse() = default;

void sqLeastSquareProbedEllipse::get_distance_and_closest_point(double & d, giPoint2 & closest, giVector2 & normal,
                                                                int i) const {
    get_distance(d, i);
    mlVector const & p = parameters();
    foot const & f = last_foot();
    closest = giPoint2(p[2], p[3]) + turned(f.x0, f.y0);
    normal = turned(p[1] * p[1] * f.x0, p[0] * p[0] * f.y0);
    normal.unitize();
}
