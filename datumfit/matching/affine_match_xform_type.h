#pragma once

/// What an affine match may do to the points: a family of transforms. The coordinates that a family does not name keep
/// their values.
enum sqAffineMatchXformType : int {
    sqAffineMatchFull = 0,                 ///< any affine transform
    sqAffineMatchXY = 1,                   ///< any affine transform of x and y
    sqAffineMatchScale = 2,                ///< scales along the axes, about the origin
    sqAffineMatchScaleTranslate = 3,       ///< scales along the axes, and a shift
    sqAffineMatchXYScale = 4,              ///< scales along x and y, about the origin
    sqAffineMatchXYScaleXYZTranslate = 5,  ///< scales along x and y, and a shift, also along z
    sqAffineMatchX = 6,                    ///< a scale along x, and a shift along it
    sqAffineMatchY = 7,                    ///< the same along y
    sqAffineMatchZ = 8                     ///< the same along z
};
