#pragma once

#include <datumfit/foundation/maths/all_points_model.h>
#include <datumfit/foundation/maths/distance_least_squares.h>

namespace datumfit {
namespace internal {

/// Any model, seen through its slots, point by point, in its own parameters.
class slot_model : public all_points_model {
public:
    explicit slot_model(mlDistanceLeastSquares & problem);

    void from_parameters(mlVector const & p, mlVector & x) const override;
    void to_parameters(mlVector const & x, mlVector & p) const override;
    void place(mlVector & x) override;
    int unknowns() const override;
    void move(mlVector const & x, mlVector const & step, mlVector & to) const override;
    void difference(mlVector const & from, mlVector const & to, mlVector & step) const override;
    void scales(mlVector & s) const override;
    double sum_of_squares(double bound) override;
    void distances(double * d) override;
    bool gram(double * upper) override;
    int rows(int first, int count, double * columns, int stride) override;
    double resolution() const override;

private:
    mlDistanceLeastSquares & problem_;
    mlVector gradient_;
};

}  // namespace internal
}  // namespace datumfit
