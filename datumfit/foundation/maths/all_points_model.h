#pragma once

#include <datumfit/foundation/maths/vector.h>

namespace datumfit {
namespace internal {

/// A least-squares model as the solver sees it: all points at once, in coordinates of the solver's own.
///
/// The solver moves a vector x, which has one entry for each parameter. A model may choose x so that no digits are
/// lost: the fits of this library measure positions from among the points, where the parameters count from the origin
/// of the coordinates, however far away that is. A model may also choose steps of fewer entries than x has, one for
/// each way in which the geometry can change: an axis, say, that can be tilted and shifted in two ways each.
class all_points_model {
public:
    virtual ~all_points_model() = default;

    /// Called at the start of a fit, when the points may have been written anew.
    virtual void look() {}

    /// The solver's coordinates of a parameter vector, and the reverse, rounded to the parameters' own precision.
    virtual void from_parameters(mlVector const & p, mlVector & x) const = 0;
    virtual void to_parameters(mlVector const & x, mlVector & p) const = 0;

    /// Brings x to its unique form and makes it current.
    virtual void place(mlVector & x) = 0;

    /// The number of entries of a step.
    virtual int unknowns() const = 0;

    /// Writes the x that a step from an x in its unique form leads to, which need not be in that form.
    virtual void move(mlVector const & x, mlVector const & step, mlVector & to) const = 0;

    /// Writes the step from one x to another nearby, both in their unique form.
    virtual void difference(mlVector const & from, mlVector const & to, mlVector & step) const = 0;

    /// Writes a positive scale for each entry of a step: the length by which the current geometry moves, roughly, when
    /// that entry grows by one.
    virtual void scales(mlVector & s) const = 0;

    /// The sum of the squared distances; may stop and give any number above `bound` once the sum exceeds it.
    virtual double sum_of_squares(double bound) = 0;

    /// Writes the distance of each point; of a model with several rows a point, that of the first.
    virtual void distances(double * d) = 0;

    /// Writes the upper triangle, row by row, of the Gram matrix of [J d]: derivatives by the step, then distances.
    /// False when the model offers none.
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
