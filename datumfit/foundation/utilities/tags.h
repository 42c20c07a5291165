#pragma once

/// Chooses the constructor or the `become` that makes a deep copy.
enum utCopyTag { utCopy };

/// Chooses the constructor or the `become` that converts raw data.
enum utConvertTag { utConvert };
