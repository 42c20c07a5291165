#pragma once

/// How a fit of sqRPSFitting has ended.
enum sqRPS_FITTING_STATUS {
    sqRPS_FITTING_OK = 0,           ///< without a problem
    sqRPS_FITTING_NO_DATA = -1,     ///< fewer than three points have projections, and there is no reference system
    sqRPS_FITTING_POINTS_LOST = -3  ///< fewer than half of the points that had a projection at first still have one
};
