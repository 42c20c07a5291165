#pragma once

#include <datumfit/foundation/geometry/point2.h>
#include <datumfit/foundation/maths/function_n1.h>

#include <vector>

/// The width of the ring about a centre that holds probed points: the greatest distance less radius from it, less the
/// least. The variables are the coordinates of the centre.
class sqProbedMinMaxCircleFunctionN1 : public mlFunctionN1 {
public:
    /// Copies the points and their radii, of which there are at least as many.
    sqProbedMinMaxCircleFunctionN1(std::vector<giPoint2> const & points, std::vector<double> const & radii)
        : mlFunctionN1(2), points_(points), radii_(radii) {}

    /// The width at x; of no points, 0.
    double function(mlSlice const & x) const override;

private:
    std::vector<giPoint2> points_;
    std::vector<double> radii_;
};
