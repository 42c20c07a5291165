#pragma once

#include <datumfit/foundation/maths/function.h>

/// Searches for a minimum of f between t0 and t2, from t1 on, and returns the value of f there.
///
/// t1 lies between the two others, which may come in either order; a t1 outside counts as the nearer end. f is
/// evaluated at t1 and then at most max_iterations times, never outside the bracket; the ends themselves are not tried.
/// The search stops early when the minimum is known to 3 tol |t|.
///
/// @param[out] x  the place of the lowest value seen, which is the result
///
/// A value that is not a number counts as infinite. A parabola through the three best places gives the next one, and a
/// golden section where it does not halve the moves (Brent 1973, Algorithms for Minimization without Derivatives,
/// chapter 5).
double ml_brent_minimum_search(mlFunction & f, double t0, double t1, double t2, double tol, int max_iterations,
                               double * x);
