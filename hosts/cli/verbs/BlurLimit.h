// Up to which radius a picture can be blurred before the library's sums wrap.
#pragma once

#include "PackedPixels.h"

namespace cli {

/// The command's own limit, in pixels. `BlurWraps` allows for the rounding of sums up to this radius.
inline constexpr int kLargestBlurRadius = 50;

/// Whether some pixel's sum of 16.16 weights times samples passes 2^31 - 1 in a blur of this radius. Decides exactly
/// for each picture; where it is close it blurs a copy.
bool BlurWraps(const PackedPixels& pixels, int radius);

/// The largest radius up to `radius` at which this picture's sums do not.
int LargestUnwrappedRadius(const PackedPixels& pixels, int radius);

/// The mean of the samples under the kernel, all inside the picture, from which on a sum passes 2^31 - 1.
double WrappingMean(int radius);

} // namespace cli
