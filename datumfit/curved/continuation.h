#pragma once

#include <datumfit/foundation/maths/vector.h>
#include <datumfit/primitives/least_square_distance.h>

namespace datumfit {
namespace internal {

/// Continues an earlier fit of a problem to n points, of which the last `new_points` have come since; `fewest` is how
/// many the earlier fit needs.
///
/// The new points must not lie much further from the earlier surface than the old ones did, and the surface fitted to
/// all of them must not leave any point much further off than the old points were: else, or with too few old points,
/// the answer is false and a search is due. A negative `new_points` says that the earlier surface is near enough
/// anyway. Writes the parameters and their mean square only on true.
bool continue_fit(sqLeastSquareDistance3 & problem, int n, int new_points, int fewest, mlVector const & earlier,
                  double & square, mlVector & parameters);

}  // namespace internal
}  // namespace datumfit
