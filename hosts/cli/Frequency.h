// The verbs that go through the frequency domain.
#pragma once

#include "Memory.h"
#include "PackedPixels.h"
#include "Report.h"
#include "Settings.h"

#include <cstdint>
#include <string>

namespace cli {

/// Undoes motion of the set length and degree, keeping the brightness unless the settings ask for the library's own
/// bytes. A degree that had to be guessed is told unasked.
Report DeMotionBlurPixels(const Settings& settings, const PackedPixels& pixels);

/// Replaces the first channel by its power spectrum, on request with the zero frequency in the middle: at column
/// width/2 and row height/2.
Report ShowSpectrum(const Settings& settings, const PackedPixels& pixels);

/// Why a picture of this shape does not suit these settings; empty if it does.
std::string DeMotionBlurMisfit(const Settings& settings, const PictureShape& shape);
std::string SpectrumMisfit(const Settings& settings, const PictureShape& shape);

/// Bytes they take beside the picture.
std::int64_t DeMotionBlurWorkingBytes(const Settings& settings, const PictureShape& shape);
std::int64_t SpectrumWorkingBytes(const Settings& settings, const PictureShape& shape);

} // namespace cli
