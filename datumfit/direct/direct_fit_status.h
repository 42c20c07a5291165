#pragma once

/// What became of a direct fit.
enum sqDirectFitStatus {
    sqDirectFitUnfitted = 0,      // no fit was made, and none has failed
    sqDirectFitTooFewPoints = 1,  // fewer than 2 points, of a sphere fewer than 4
    sqDirectFitSingular = 2,      // a linear system of the fit is singular
    sqDirectFitNoPlane = 3,       // the points in space give no plane
    sqDirectFitDegenerate = 4,    // the fit gives no proper circle, ellipse
    sqDirectFitSuccess = 5,       // the results are valid
};
