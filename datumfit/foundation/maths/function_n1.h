#pragma once

#include <datumfit/foundation/maths/matrix.h>
#include <datumfit/foundation/maths/slice.h>
#include <datumfit/foundation/maths/vector.h>

/// A function of several variables with one value.
class mlFunctionN1 {
public:
    explicit mlFunctionN1(int n) : variables_(n) {}

    /// The value at x, which has variables() elements.
    virtual double function(mlSlice const & x) const = 0;

    /// Writes the derivatives by each variable to g. The base takes central differences.
    virtual void gradient(mlSlice const & x, mlVector & g) const;

    /// Writes the matrix of second derivatives to h. The base takes central differences.
    virtual void hessian(mlSlice const & x, mlMatrix & h) const;

    virtual ~mlFunctionN1();

    int variables() const { return variables_; }

private:
    int variables_;
};
