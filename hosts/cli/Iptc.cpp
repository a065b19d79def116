#include "Iptc.h"

#include <cstddef>
#include <string_view>

namespace cli {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view kPhotoshopMark = "Photoshop 3.0\0"sv;
constexpr std::string_view kIptcResource = "8BIM\x04\x04"sv; // an empty name and the size, as 4 bytes, follow
constexpr char kRecordMark = 0x1C;

/// A big-endian number, of as many of its bytes as there are.
std::size_t Number(std::string_view bytes, std::size_t at, std::size_t count) {
    std::size_t number = 0;
    for (std::size_t k = at; k < at + count && k < bytes.size(); ++k) {
        number = number << 8 | static_cast<unsigned char>(bytes[k]);
    }
    return number;
}

std::size_t Even(std::size_t size) {
    return size + size % 2;
}

} // namespace

std::string IptcRecords(const std::string& field) {
    if (!field.starts_with(kPhotoshopMark)) {
        return field.starts_with(kRecordMark) ? field : "";
    }
    for (std::size_t at = kPhotoshopMark.size(); at + 12 <= field.size();) {
        const std::size_t size = at + 6 + Even(1 + Number(field, at + 6, 1)); // after a name of that many letters
        const std::size_t bytes = Number(field, size, 4);
        if (field.compare(at, kIptcResource.size(), kIptcResource) == 0) {
            return size + 4 < field.size() ? field.substr(size + 4, bytes) : "";
        }
        at = size + 4 + Even(bytes);
    }
    return {};
}

std::string IptcForJpeg(const std::string& records) {
    std::string field = std::string(kPhotoshopMark) + std::string(kIptcResource) + std::string(2, '\0');
    for (int shift = 24; shift >= 0; shift -= 8) {
        field += static_cast<char>(records.size() >> shift & 0xFF);
    }
    return field + records + std::string(records.size() % 2, '\0');
}

std::string IptcForTiff(const std::string& records) {
    // libvips 8.14 passes a count of four-byte units where libtiff expects bytes, which cuts off three quarters. Where
    // it does not, readers stop at the zeros.
    return records + std::string(3 * records.size(), '\0');
}

} // namespace cli
