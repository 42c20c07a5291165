#pragma once

#include <datumfit/foundation/maths/triangular_factor.h>
#include <datumfit/foundation/maths/vector.h>

#include <vector>

namespace datumfit {
namespace internal {

/// Shortens the last stretch of Gauss-Newton steps that converge slowly.
///
/// Large distances bend the sum of squares more than its linearisation knows; each step then removes a share of the
/// error only, the same one each time. Anderson 1965 looks at how the last steps changed as the point moved, and goes
/// to where they say that the step is zero.
class step_acceleration {
public:
    explicit step_acceleration(int unknowns);

    /// Forgets all steps.
    void reset();

    /// Takes note of the full step from here, where a move has led from the point of the step before, and replaces it
    /// by a better one when there are earlier ones to learn from and they shrink slowly. Gives whether it did.
    bool improve(mlVector const & moved, mlVector & step);

private:
    static constexpr int depth = 6;

    int unknowns_;
    int known_ = 0;  // differences held, the newest at slot (count_ - 1) % depth
    int count_ = 0;
    double last_length_ = 0.0;
    mlVector last_step_;
    std::vector<double> moves_, changes_, block_, weights_;  // moves and the changes of the step by them, in turn
    triangular_factor factor_;
};

}  // namespace internal
}  // namespace datumfit
