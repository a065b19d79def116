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

std::string VipsFault(const std::string& what) {
    const std::string complaint = VipsComplaint();
    const bool lacksThread = complaint.find("Error creating thread") != std::string::npos;
    return (lacksThread ? "no thread can be started; end other programs or raise the limit of processes" : what) +
           complaint;
}

void EndWhenInterrupted(const vips::VImage& image) {
    const auto look = +[](VipsImage* computed, void*, void*) {
        if (InterruptRequested()) {
            vips_image_set_kill(computed, TRUE);
        }
    };
    vips_image_set_progress(image.get_image(), TRUE);
    g_signal_connect(image.get_image(), "eval", G_CALLBACK(look), nullptr);
}

} // namespace cli
