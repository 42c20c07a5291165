#pragma once

#include <datumfit/foundation/maths/vector.h>

namespace datumfit {
namespace internal {

/// A kernel's formula at one point, in the parameters p as they stand: what the slots of a model answer.
template <class Kernel>
void distance_of_point(mlVector const & p, double const * point, double radius, double & d) {
    Kernel kernel;
    kernel.take(p);
    double q[Kernel::dimension], only[1];
    for (int k = 0; k < Kernel::dimension; ++k) q[k] = point[k];
    kernel.distance(q, radius, only);
    d = only[0];
}

/// The same with the derivatives.
template <class Kernel>
void gradient_at_point(mlVector const & p, double const * point, double radius, double & d, mlVector & g) {
    Kernel kernel;
    kernel.take(p);
    double q[Kernel::dimension], only[1][Kernel::parameters + 1];
    for (int k = 0; k < Kernel::dimension; ++k) q[k] = point[k];
    kernel.row(q, radius, only);
    for (int k = 0; k < Kernel::parameters; ++k) g[k] = only[0][k];
    d = only[0][Kernel::parameters];
}

}  // namespace internal
}  // namespace datumfit
