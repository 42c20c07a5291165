#pragma once

#include <datumfit/foundation/maths/matrix.h>

namespace datumfit {
namespace internal {

/// The power of two that brings the largest element of m, by its size, to between 1 and 2; 1 for a zero matrix, and 0
/// when an element is not finite.
///
/// A matrix scaled by it has squares that neither overflow nor vanish, and the same digits.
double binary_scale(mlMatrix const & m);

}  // namespace internal
}  // namespace datumfit
