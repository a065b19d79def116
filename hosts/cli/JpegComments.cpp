#include "JpegComments.h"

namespace cli {
namespace {

// The second byte of a marker; the first is 0xFF.
constexpr int kApplication0 = 0xE0; // stays in front
constexpr int kStartOfScan = 0xDA;  // the pixels follow
constexpr int kComment = 0xFE;

} // namespace

std::vector<std::string> JpegComments(std::istream& jpeg) {
    std::vector<std::string> comments;
    jpeg.ignore(2); // start of image
    while (jpeg.get() == 0xFF) {
        const int marker = jpeg.get();
        const int high = jpeg.get();
        const int length = (high << 8 | jpeg.get()) - 2;
        if (!jpeg || marker == kStartOfScan || length < 0) {
            break;
        }
        if (marker != kComment) {
            jpeg.seekg(length, std::ios::cur);
            continue;
        }
        std::string comment(static_cast<std::size_t>(length), '\0');
        if (jpeg.read(comment.data(), length)) {
            comments.push_back(comment);
        }
    }
    return comments;
}

void InsertJpegComments(std::string& jpeg, const std::vector<std::string>& comments) {
    const auto byte = [&](std::size_t at) { return static_cast<std::size_t>(static_cast<unsigned char>(jpeg.at(at))); };
    std::string segments;
    for (const std::string& comment : comments) {
        const std::size_t length = comment.size() + 2;
        segments += {'\xFF', static_cast<char>(kComment), static_cast<char>(length >> 8), static_cast<char>(length)};
        segments += comment;
    }
    jpeg.insert(byte(3) == kApplication0 ? 4 + (byte(4) << 8 | byte(5)) : 2, segments);
}

} // namespace cli
