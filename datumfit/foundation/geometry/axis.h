#pragma once

/// A coordinate axis, numbered as the coordinates are.
enum gi_Axis { giAxisX = 0, giAxisY = 1, giAxisZ = 2 };
