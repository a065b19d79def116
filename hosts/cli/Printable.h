// Text that a terminal can be given, whatever names are in it.
#pragma once

#include <string>
#include <string_view>

namespace cli {

/// `text` with control characters, formatting characters and bytes that are not UTF-8 as \n, \t or \xNN: a name cannot
/// split a line, colour it or turn its direction.
std::string Printable(std::string_view text);

} // namespace cli
