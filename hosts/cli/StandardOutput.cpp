#include "StandardOutput.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace cli {

void PrintOut(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) < text.size() || std::fflush(stdout) != 0) {
        throw std::system_error(errno, std::generic_category(), "standard output cannot be written");
    }
}

} // namespace cli
