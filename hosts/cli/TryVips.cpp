#include "TryVips.h"

namespace cli {

std::string VipsComplaint() {
    const std::string text = vips_error_buffer();
    vips_error_clear();
    std::string complaint = text.substr(0, text.find('\n'));
    // What the system said follows on a line of its own.
    const std::string mark = "unix error: ";
    if (const std::size_t system = text.find(mark); system != std::string::npos) {
        const std::size_t start = system + mark.size();
        complaint += ": " + text.substr(start, text.find('\n', start) - start);
    }
    return complaint.empty() ? "" : " (" + complaint + ")";
}

} // namespace cli
