// Text that is safe to print on a terminal, whatever file names it contains.
#pragma once

#include <string>
#include <string_view>

namespace cli {

/// `text` with control characters, formatting characters and bytes that are not UTF-8 as \n, \t or \xNN: a name cannot
/// split a line, colour it or reverse its direction.
std::string Printable(std::string_view text);

} // namespace cli
