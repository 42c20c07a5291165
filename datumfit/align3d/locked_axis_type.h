#pragma once

/// What a locked axis leaves free beside the turn about it. The value is the number of directions in which the origin
/// is held.
enum sqSurfaceBestfitLockedAxisType {
    sqLOCKED_AXIS_DIRECTION = 0,  ///< any shift; the origin is not used
    sqLOCKED_AXIS_PLANE = 1,      ///< the origin may move within the plane across the axis
    sqLOCKED_AXIS_LINE = 2,       ///< the origin may slide along the axis
    sqLOCKED_AXIS_FIXED = 3       ///< nothing: the axis passes through the origin
};
