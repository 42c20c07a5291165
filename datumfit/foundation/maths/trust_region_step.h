#pragma once

#include <datumfit/foundation/maths/triangular_factor.h>

#include <vector>

namespace datumfit {
namespace internal {

/// Steps of a linearised least-squares problem, of bounded length and free of directions that change nothing.
///
/// A step x minimises |J x + d| in the unknowns s_k x_k, where s are the scales of the parameters, so that all entries
/// of the step are lengths. Of a Jacobian of deficient rank the step of least length is taken: parameters such as the
/// length of a direction vector stay where they are. Its length is bounded by the damping of Levenberg and Marquardt,
/// found as told by Moré 1978.
class trust_region_step {
public:
    /// Room for so many parameters, of which at most `independent` count.
    trust_region_step(int parameters, int independent);

    /// Takes over a factor of [J d]. The scales are positive.
    void reduce(triangular_factor const & factor, double const * scales);

    /// How many directions in the space of parameters change the distances.
    int rank() const { return reduced_.columns(); }

    /// Writes direction k of those that change nothing, from 0 to parameters - rank, of scaled length 1.
    void idle(int k, double * step);

    /// The length of that part of d which steps of first order can remove: 0 at a minimum.
    double removable() const;

    /// Writes the best step whose scaled length is at most `limit`. Gives its scaled length, and in `gain` by how much
    /// the linearised problem's sum of squares falls.
    double take(double limit, double * step, double & gain);

private:
    void triangularise();
    void compress();
    double damped(double limit);
    double damp(double lambda);
    void expand(double * step);

    int parameters_;
    int independent_;
    triangular_factor scaled_;   // the factor by the scaled parameters; when pivoted, also the tails of the reflections
    triangular_factor reduced_;  // of full rank, in the coordinates y of a step
    triangular_factor damped_;
    std::vector<int> pivot_;  // column k of the scaled factor is that of parameter pivot_[k]
    std::vector<double> scales_, heads_, weights_, y_, z_, damping_;
};

}  // namespace internal
}  // namespace datumfit
