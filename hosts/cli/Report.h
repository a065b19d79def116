// What an operation reports about a picture.
#pragma once

#include <string>

namespace cli {

struct Report {
    std::string text;     ///< one line; empty for nothing to report
    bool unasked = false; ///< shown even without --verbose
};

} // namespace cli
