// Results on standard output, where a full disk is an error.
#pragma once

#include <string_view>

namespace cli {

/// Writes all of `text`. Throws `std::system_error` where it cannot be written.
void PrintOut(std::string_view text);

} // namespace cli
