#pragma once

#include <datumfit/foundation/maths/vector.h>

namespace datumfit {
namespace internal {

/// A least-squares model as the solver sees it: all points at once, in coordinates of the solver's own.
///
/// The solver moves a vector x, which has one entry for each parameter. A model may choose x so that no digits are
/// lost: the fits of this library measure positions from one of the points, where the parameters count from the origin
/// of the coordinates, however far away that is.
class all_points_model {
public:
    virtual ~all_points_model() = default;

    /// The solver's coordinates of a parameter vector, and the reverse, rounded to the parameters' own precision.
    virtual void from_parameters(mlVector const & p, mlVector & x) const = 0;
    virtual void to_parameters(mlVector const & x, mlVector & p) const = 0;

    /// Brings x to its unique form and makes it current.
    virtual void place(mlVector & x) = 0;

    /// The sum of the squared distances; may stop and give any number above `bound` once the sum exceeds it.
    virtual double sum_of_squares(double bound) = 0;

    /// Writes the upper triangle, row by row, of the Gram matrix of [J d]: derivatives by x, then distances. False when
    /// the model offers none.
    virtual bool gram(double * upper) = 0;

    /// Writes rows of [J d] for points `first` up to `first + count`, column k at columns + k * stride, the distances
    /// behind the derivatives; gives the number of rows, at most rows_per_point() for each point.
    virtual int rows(int first, int count, double * columns, int stride) = 0;
    virtual int rows_per_point() const { return 1; }

    /// How far rounding may put one distance off: what is smaller than this cannot be told from 0.
    virtual double resolution() const = 0;
};

}  // namespace internal
}  // namespace datumfit
