#pragma once

/// A function of one variable t, defined from t_min() to t_max().
class mlFunction {
public:
    virtual double function(double t) const = 0;

    /// The derivative of the given order at t; order 0 is the function itself. The base takes central differences: on a
    /// smooth function that varies over lengths of about 1 their relative error is about 1e-10 for the first order and
    /// 1e-7 for the second. Where they would leave the interval of definition, they are taken at the nearest place
    /// where they fit.
    virtual double function_derivative(int order, double t) const;

    virtual double t_min() const = 0;
    virtual double t_max() const = 0;

    virtual ~mlFunction();
};
