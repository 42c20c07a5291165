#pragma once

#include <datumfit/foundation/maths/distance_least_squares.h>
#include <datumfit/foundation/maths/vector.h>

#include <memory>

/// Finds the parameters of a model whose mean square distance from the points is least, from a start.
///
/// The method is that of Levenberg 1944 and Marquardt 1963 in the form of Moré 1978: Gauss-Newton steps, of bounded
/// length where the full step does not lead down. The Jacobian is factored by reflections unless its Gram matrix is
/// known to keep the digits, and parameters that the points or the model leave undetermined stay where they are.
///
/// 1. The mean square at the result is never above that of the start by more than rounding, and finite when it was.
/// 2. It stops when no step can be told from rounding, when steps have ceased to lower the gradient, or at the limit of
///    iterations. A start on a saddle or a ridge is left by trying short steps along each parameter.
/// 3. Every vector that is set passed through normalize_parameters() before; so did the result, which is set at the
/// end.
/// 4. Nothing is allocated within an iteration, nor in a fit behind the first of one solver.
class mlLevenbergMarquardt {
public:
    /// Binds the solver to a problem, which must outlive it.
    explicit mlLevenbergMarquardt(mlDistanceLeastSquares & problem);
    ~mlLevenbergMarquardt();

    /// The limit of iterations; 200 until set.
    void set_max_iterations(int limit) { max_iterations_ = limit; }

    /// Asks to go on as long as steps lower the gradient, also where rounding alone may be at work.
    void set_strict(bool strict) { strict_ = strict; }

    /// Iterates from start, writes the best vector found to result (made as long as the parameters) and gives the mean
    /// of the squared distances there. Without points, or from a start whose sum of squares is not finite, result is
    /// the normalised start.
    double fit(mlVector const & start, mlVector & result);

private:
    struct workspace;

    mlDistanceLeastSquares & problem_;
    int max_iterations_;
    bool strict_;
    std::unique_ptr<workspace> workspace_;
};
