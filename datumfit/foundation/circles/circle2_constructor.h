#pragma once

#include <datumfit/foundation/circles/circle2.h>

/// On which side of a circle another one touches it; the mode of a construction tells that here.
enum tncTangent { tncTangentAny = 0 };

/// Constructs circles from conditions.
class tncCircle2Constructor {
public:
    /// The circle that touches three circles, all from the same side (one of the problems of Apollonius).
    ///
    /// @param[out] result  the circle; without a set centre, a default one, where there is none
    /// @param mode         0: they lie outside the result, distance of the centres - radius i = result radius;
    ///                     14: they lie inside it, distance of the centres + radius i = result radius
    ///
    /// The radii may be 0, for points, and the centres nearly or wholly in line. Where two circles touch the three, the
    /// result is the smaller one. Circles that overlap in one place may give mode 0 a negative radius: the circle of
    /// radius -r then lies inside all three and touches them from within. Each distance is right to a few units in the
    /// last place of the largest of coordinates, radii and result.
    ///
    /// There is no result where one circle lies inside another one in mode 14, or holds it in mode 0; where two are
    /// equal; where only a straight line touches the three on the wanted side; for other modes; and for numbers that
    /// are not finite.
    static void construct(tncCircle2 & result, tncTangent, tncCircle2 const & c1, tncTangent, tncCircle2 const & c2,
                          tncTangent, tncCircle2 const & c3, int mode);
};
