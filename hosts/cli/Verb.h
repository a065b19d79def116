// What a verb of the command consists of.
#pragma once

#include "Options.h"
#include "PackedPixels.h"
#include "PictureShape.h"
#include "Report.h"
#include "Settings.h"

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace cli {

/// An operation on the pixels of one picture.
struct PixelOperation {
    /// Works in place.
    Report (*apply)(const Settings& settings, const PackedPixels& pixels);

    /// Says why a picture of this shape does not suit the settings; empty if it does.
    std::string (*misfit)(const Settings& settings, const PictureShape& shape);

    /// Bytes it allocates meanwhile for a picture of this shape.
    std::int64_t (*workingBytes)(const Settings& settings, const PictureShape& shape);

    /// What the user should know about these settings whatever the picture, empty for nothing; may be null.
    std::string (*caution)(const Settings& settings) = nullptr;

    /// Works on the luminance, and the result is one grey picture without alpha.
    bool luminanceAlone = false;
};

struct Verb {
    const char* name;
    const char* summary;
    std::vector<OptionRow> options;
    std::variant<PixelOperation, int (*)(const Settings&)> action; ///< a function prints and returns the exit status
};

/// "OPTION VALUE is too large for this picture; give at most LARGEST", or empty if it is not.
std::string SideMisfit(const char* option, int value, int largest);

} // namespace cli
