// What the verbs on `CImageFocus` share.
#pragma once

#include "PackedPixels.h"
#include "PictureShape.h"
#include "Settings.h"

#include <claribox/CImageFocus.h>

#include <cstdint>
#include <string>

namespace cli {

/// Derived: the kernel's (2 * length + 1)^2 elements are counted in 32 bits.
inline constexpr int kLargestLength = 23169;
static_assert((2LL * kLargestLength + 1) * (2LL * kLargestLength + 1) <= INT32_MAX);
static_assert((2LL * kLargestLength + 3) * (2LL * kLargestLength + 3) > INT32_MAX);

/// One full turn either way; the library would take more.
inline constexpr int kLargestDegree = 360;

CImageFocus FocusFor(const PackedPixels& pixels);

/// Why the radius does not suit a picture of this shape; empty if it does.
std::string RadiusMisfit(const Settings& settings, const PictureShape& shape);

/// Bytes of the three planes, and of a kernel of this half-size as floats and as integers.
std::int64_t PlanesAndKernelBytes(const PictureShape& shape, std::int64_t halfSize);

/// Bytes of the rows of a picture that such a kernel covers and of a band of 64 more, and of the kernel.
std::int64_t RowsAndKernelBytes(const PictureShape& shape, std::int64_t halfSize);

} // namespace cli
