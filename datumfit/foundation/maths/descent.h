#pragma once

#include <datumfit/foundation/maths/all_points_model.h>
#include <datumfit/foundation/maths/distance_least_squares.h>
#include <datumfit/foundation/maths/linearisation.h>
#include <datumfit/foundation/maths/step_acceleration.h>
#include <datumfit/foundation/maths/triangular_factor.h>
#include <datumfit/foundation/maths/trust_region_step.h>
#include <datumfit/foundation/maths/vector.h>

#include <limits>

namespace datumfit {
namespace internal {

/// Fits of one problem, each from its start to its end, with all buffers made beforehand.
///
/// Each iteration is one pass over the points, at the trial point: it tells whether the step led down, and holds the
/// next linearised problem if so.
class descent {
public:
    /// For a problem and its model, which may be the problem's own slots; both must outlive this.
    descent(mlDistanceLeastSquares & problem, all_points_model & model, int points);

    /// Writes the parameters of the best point found from start, normalised, and makes them current. Gives their mean
    /// square.
    double run(mlVector const & start, int max_iterations, bool strict, mlVector & result);

private:
    // What one fit has learnt on its way.
    struct progress {
        double limit = std::numeric_limits<double>::infinity();  // of the scaled length of a step
        double stationary_from = 0.0;                            // the sum at the start, or behind the last push

        // Of the step taken last: its length, the gradient before it, and whether they foretell the next ones.
        double last_length = 0.0;
        double last_removable = 0.0;
        bool contracts = false;

        double start_resolution = 0.0;  // of the distances, at the start and at the present place
        double resolution = 0.0;

        bool moved = true;       // the step in hand led down
        bool flat = false;       // it promised less than sums can tell
        bool last_step = false;  // it needs no pass behind it

        double lowest = std::numeric_limits<double>::infinity();  // gradient, where sums no longer differ
        int stale = 0;                                            // steps since then
    };

    void begin(mlVector const & start);
    void linearise(triangular_factor & factor);
    void stand_at(mlVector const & x);
    bool polish();
    bool at_rounding() const;
    bool try_step();
    bool outgrown() const;
    bool gradient_fell(double gain, double decrease);
    bool is_last_step(double length);
    bool stale();
    bool push();
    bool try_push(double way, double & lowest);
    double slack() const;
    double finish(mlVector & result);

    double sum() const { return factor_.sum_of_squares(); }
    double removable() const { return steps_.removable(); }

    mlDistanceLeastSquares & problem_;
    all_points_model & model_;
    int points_;
    bool strict_ = false;
    bool polishing_ = false;  // the last steps are computed by reflections
    mlVector x_, trial_x_, best_x_;
    mlVector step_, last_move_, direction_, push_, scales_;
    triangular_factor factor_, trial_factor_;
    trust_region_step steps_;
    linearisation linearise_;
    step_acceleration acceleration_;
    progress now_;
};

}  // namespace internal
}  // namespace datumfit
