// What is asked for goes to standard output, and a full disk behind it is no success.
#pragma once

#include <string_view>

namespace cli {

/// Writes all of `text`. Throws `std::system_error` where it cannot be written.
void PrintOut(std::string_view text);

} // namespace cli
