#pragma once

namespace datumfit {
namespace internal {

/// Between these lengths a vector is its own coordinates divided by their length: no square of a coordinate that
/// matters leaves the range of normal doubles.
constexpr double least_plain_length = 0x1p-480;
constexpr double greatest_plain_length = 0x1p+500;

/// Scales the n coordinates to unit length whatever their size. Returns false, with the coordinates as they were, when
/// they are all zero or not all finite.
bool scale_to_unit(double * coordinates, int n);

}  // namespace internal
}  // namespace datumfit
