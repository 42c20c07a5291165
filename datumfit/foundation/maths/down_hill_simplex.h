#pragma once

#include <datumfit/foundation/maths/function_n1.h>
#include <datumfit/foundation/maths/vector.h>

/// How much work a downhill simplex does; the table at mlDownHillSimplex tells what each gives.
enum mlDownHillSimplexSpeed { mlDownHillSimplexQuick = 0, mlDownHillSimplexNormal = 1, mlDownHillSimplexThorough = 2 };

/// Minimises a function of several variables from its values alone, near a start.
///
/// The first simplex reaches 0.1 + 1e-6 |x| from the start along each coordinate x, the unit of the table. It grows
/// where the minimum lies further off, and variables are best scaled to make the unit a fair first step.
///
/// | Speed    | Ends when the simplex is smaller than   | Begins again, from 0.001 units (normal 0.01)      |
/// |----------|-----------------------------------------|---------------------------------------------------|
/// | Quick    | 0.01 units                              | never                                             |
/// | Normal   | 1e-4 units, at last 1e-6                | once                                              |
/// | Thorough | 1e-8 units, at last rounding of x       | until that moves x by at most 1e-8 units, 8 times |
///
/// It ends also where rounding hides the differences between the values. So Thorough finds x to 1e-10 and better, on a
/// smooth function of up to 6 variables, where the least value is 0; beside a least value m, an x known to about the
/// root of 1e-16 m over the curvature is all that values tell. Each run has at most 2000 evaluations a variable, a
/// Quick one 200.
///
/// 1. The result is never worse than the start, and the same input gives the same bits.
/// 2. A value that is not a number counts as infinite, worse than any other.
///
/// Nelder & Mead 1965, Comput. J. 7(4), 308, with the coefficients of Gao & Han 2012, Comput. Optim. Appl. 51(1), 259.
class mlDownHillSimplex {
public:
    /// A solver for functions of n variables, at least 1.
    explicit mlDownHillSimplex(int n) : best_(mlVectorZero, n) {}

    /// Runs from `start`, which has n elements, and returns the value at the best point found.
    double solve(mlFunctionN1 & f, mlVector const & start, mlDownHillSimplexSpeed speed);

    /// Writes the best point of the last solve() to x; before the first one that is 0.
    void result(mlVector & x) const { x = best_; }

private:
    mlVector best_;
};
