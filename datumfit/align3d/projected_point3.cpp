#include <datumfit/align3d/projected_point3.h>

#include <algorithm>

double signed_norm_dev(sqProjectedPoint3 const & p, giXform3 const & x) {
    return p.nominal_normal().dot(x * p.measured_point() - p.nominal_point());
}

double square_dev(sqProjectedPoint3 const & p, giXform3 const & x) {
    giVector3 const d = x * p.measured_point() - p.nominal_point();
    return d.dot(d);
}

double get_maximum_movement(sqProjectedPoint3coDynArr const & points, giXform3 const & x) {
    double movement = 0.0;
    for (int i = 0; i < points.size(); ++i) {
        if (points[i].invalid()) continue;
        double const moved = points[i].measured_point().distance(x * points[i].measured_point());
        movement = std::max(movement, moved);
    }
    return movement;
}
