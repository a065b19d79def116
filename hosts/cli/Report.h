// What an operation has to tell of a picture.
#pragma once

#include <string>

namespace cli {

struct Report {
    std::string text;     ///< one line; empty for nothing to tell
    bool unasked = false; ///< told without --verbose as well
};

} // namespace cli
