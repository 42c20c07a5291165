#pragma once

#include <datumfit/curved/cylinder/circles_along_axes.h>

#include <vector>

namespace datumfit {
namespace internal {

/// Batches of random cylinders: the same directions on every call, each with the circle that fits best along it.
///
/// What a circle can not fall below is known without a fit; in the order of that, few circles need be fitted until no
/// other direction of a batch can win. What was found about a direction is kept, for a batch may be asked again with
/// other directions admitted.
class random_cylinders {
public:
    static constexpr int batches = 20;
    static constexpr int batch_size = 100;

    explicit random_cylinders(probe_set const & set);

    /// Finds the admitted direction of a batch whose circle has the least sum of squares, the earlier one of equals,
    /// and writes axis point, direction and radius. False, and nothing is written, when none has a circle.
    template <class Admitted>
    bool best_of_batch(int batch, Admitted const & admitted, mlVector & cylinder) {
        order_.clear();
        for (int i = batch * batch_size; i < (batch + 1) * batch_size; ++i) {
            if (admitted(candidates_[static_cast<std::size_t>(i)].axis)) order_.push_back(i);
        }
        return best_of_order(cylinder);
    }

private:
    struct candidate {
        giUnitVec3 axis;
        double bound = 0.0;
        bool fitted = false;
        double sum = 0.0;
        giPoint3 centre;
        double radius = 0.0;
    };

    candidate const & fitted(int i);
    bool best_of_order(mlVector & cylinder);

    circles_along_axes circles_;
    std::vector<candidate> candidates_;
    std::vector<int> order_;
};

}  // namespace internal
}  // namespace datumfit
