#include <datumfit/align2d/projected_point2.h>

#include <algorithm>

double get_maximum_movement(sqProjectedPoint2coDynArr const & points, giXform2 const & transform) {
    double movement = 0.0;
    for (int i = 0; i < points.size(); ++i) {
        giPoint2 const & measured = points[i].measured_point();
        if (!measured.invalid()) movement = std::max(movement, measured.distance(transform * measured).value());
    }
    return movement;
}
