#include <datumfit/foundation/maths/linearisation.h>

#include <algorithm>

namespace datumfit {
namespace internal {

namespace {
constexpr int block_points = 64;  // a block of a dozen columns stays within the first cache
}

linearisation::linearisation(int unknowns, int points, int rows_per_point)
    : unknowns_(unknowns), points_(points), stride_(block_points * rows_per_point),
      block_(static_cast<std::size_t>(stride_ * (unknowns + 1))),
      gram_(static_cast<std::size_t>((unknowns + 1) * (unknowns + 2) / 2)) {}

void linearisation::run(all_points_model & model, triangular_factor & factor) {
    factor.clear(unknowns_);
    if (!model.gram(gram_.data()) || !factor.take_gram(gram_.data())) factorise(model, factor);
}

void linearisation::factorise(all_points_model & model, triangular_factor & factor) {
    factor.clear(unknowns_);
    for (int first = 0; first < points_; first += block_points) {
        int const count = std::min(block_points, points_ - first);
        int const rows = model.rows(first, count, block_.data(), stride_);
        factor.absorb(block_.data(), rows, stride_);
    }
}

}  // namespace internal
}  // namespace datumfit
