// The verbs on noise and frequency ranges: colour conversion around the library's denoiser.
#pragma once

#include "Memory.h"
#include "PackedPixels.h"
#include "Report.h"
#include "Settings.h"

#include <cstdint>
#include <string>

namespace cli {

/// Denoises luminance and chrominance; returns the threshold used, and what was measured where. Red, green and blue
/// become full-range BT.601 luminance and chrominance, rounded to the nearest byte, as in JPEG files (ITU-T T.871);
/// what the library changes there is added to them, but for the shift in the mean of chrominance. Without a threshold
/// the noise is measured, and the less there is, the less is changed. Where the settings ask for the library's own
/// bytes, its planes are converted back as they are.
Report DenoisePixels(const Settings& settings, const PackedPixels& pixels);

/// Replaces the pixels by one frequency range of their luminance, in grey.
Report ShowBand(const Settings& settings, const PackedPixels& pixels);

/// Why a picture of this shape cannot be denoised, or split into ranges, with these settings.
std::string DenoiseMisfit(const Settings& settings, const PictureShape& shape);
std::string BandMisfit(const Settings& settings, const PictureShape& shape);

/// Bytes both take beside the picture.
std::int64_t DenoiseWorkingBytes(const Settings& settings, const PictureShape& shape);

/// Reads the text of an option into the settings or throws `UsageError`, which names `option`.
void ParseThreshold(Settings& settings, const std::string& option, const std::string& text);

} // namespace cli
