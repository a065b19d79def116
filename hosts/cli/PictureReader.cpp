#include "PictureReader.h"

#include "Errors.h"
#include "JpegComments.h"
#include "Memory.h"
#include "Signals.h"
#include "TryVips.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string_view>

namespace cli {
namespace {

/// A reader of libvips by its class.
struct ReadFormat {
    const char* reader;
    const char* name;
};

constexpr ReadFormat kFormats[] = {
    {"VipsForeignLoadJpeg", "JPEG"},   {"VipsForeignLoadPng", "PNG"},   {"VipsForeignLoadTiff", "TIFF"},
    {"VipsForeignLoadWebp", "WebP"},   {"VipsForeignLoadNsgif", "GIF"}, {"VipsForeignLoadHeif", "HEIF and AVIF"},
    {"VipsForeignLoadJxl", "JPEG XL"}, {"VipsForeignLoadPpm", "PPM"},   {"VipsForeignLoadRad", "Radiance"},
};

/// libvips may have been built without it.
bool IsInstalled(const char* reader) {
    return g_type_from_name(reader) != 0;
}

bool IsAllowed(const char* reader) {
    const auto* operation = static_cast<const VipsOperationClass*>(g_type_class_ref(g_type_from_name(reader)));
    return (operation->flags & VIPS_OPERATION_BLOCKED) == 0;
}

std::string FormatNames() {
    std::string names;
    for (const ReadFormat& format : kFormats) {
        if (IsInstalled(format.reader)) {
            names += (names.empty() ? "" : ", ") + std::string(format.name);
        }
    }
    return names;
}

/// Enough for libvips to recognise the format. Given more, some readers search all of it for their signature.
constexpr std::size_t kHeadBytes = 1 << 16;

/// The operation of libvips that reads what starts so; empty where there is none.
std::string ReaderOf(std::string_view head) {
    using namespace std::string_view_literals;
    // libvips would look beyond the head for this one.
    for (const std::string_view mark : {"II*\0"sv, "II+\0"sv, "MM\0*"sv, "MM\0+"sv}) {
        if (head.starts_with(mark) && IsInstalled("VipsForeignLoadTiffSource")) {
            return "tiffload_source";
        }
    }
    const char* found =
        vips_foreign_find_load_source(vips::VSource::new_from_memory(head.data(), head.size()).get_source());
    vips_error_clear();
    return found && IsAllowed(found) ? vips_nickname_find(g_type_from_name(found)) : "";
}

/// Reads on from standard input until there are `size` bytes; returns false at its end.
bool ReadOn(std::string& bytes, std::size_t size) {
    std::size_t filled = bytes.size();
    bytes.resize(size);
    while (filled < size) {
        // A blocking read would be restarted after a signal.
        pollfd input = {STDIN_FILENO, POLLIN, 0};
        while (poll(&input, 1, 100) <= 0) {
            StopIfInterrupted();
        }
        const ssize_t got = read(STDIN_FILENO, bytes.data() + filled, size - filled);
        if (got < 0) {
            throw PictureError(std::string("cannot be read: ") + std::strerror(errno));
        }
        if (got == 0) {
            break;
        }
        filled += static_cast<std::size_t>(got);
    }
    bytes.resize(filled);
    return filled == size;
}

} // namespace

bool IsStandardInput(const std::string& input) {
    return input == "-";
}

std::string InputName(const std::string& input) {
    return IsStandardInput(input) ? "standard input" : input.empty() ? "''" : input;
}

void AllowReadersOfPicturesOnly() {
    vips_operation_block_set("VipsForeignLoad", TRUE);
    for (const ReadFormat& format : kFormats) {
        if (IsInstalled(format.reader)) {
            vips_operation_block_set(format.reader, FALSE);
        }
    }
    // For our own plot, which is read from memory, as no input is.
    if (IsInstalled("VipsForeignLoadSvgBuffer")) {
        vips_operation_block_set("VipsForeignLoadSvgBuffer", FALSE);
    }
}

PictureReader::PictureReader(const std::string& input) : m_Path(input) {
    if (IsStandardInput(input)) {
        if (isatty(STDIN_FILENO)) {
            throw PictureError("is a terminal; send a picture into it, such as by < in.jpg");
        }
        ReadOn(m_Bytes, kHeadBytes);
        Recognise(m_Bytes);
        ReadAll();
    } else {
        TryVips("cannot be opened", [&] {
            const vips::VSource source = Source();
            unsigned char* head = nullptr;
            const gint64 size = vips_source_sniff_at_most(source.get_source(), &head, kHeadBytes);
            Recognise({reinterpret_cast<const char*>(head), static_cast<std::size_t>(std::max<gint64>(size, 0))});
        });
    }
}

void PictureReader::Recognise(std::string_view head) {
    m_Reader = ReaderOf(head);
    if (m_Reader.empty()) {
        throw PictureError(std::string(head.empty() ? "is empty" : "is no picture of a format that can be read") +
                           "; take " + FormatNames());
    }
}

void PictureReader::ReadAll() {
    const auto most = static_cast<std::size_t>(FreeBytes() / 2);
    while (ReadOn(m_Bytes, 2 * m_Bytes.size())) {
        if (m_Bytes.size() > most) {
            throw PictureError("does not end within " + Mebibytes(FreeBytes() / 2) + ", half of the free memory");
        }
    }
}

void PictureReader::AddComments(vips::VImage& image) const {
    std::ifstream file(m_Path, std::ios::binary);
    std::istringstream memory(m_Bytes);
    int number = 0;
    for (const std::string& comment :
         JpegComments(IsStandardInput(m_Path) ? memory : static_cast<std::istream&>(file))) {
        image.set(("jpeg-comment-" + std::to_string(number++)).c_str(), comment.c_str());
    }
}

bool PictureReader::CanBeTolerant() const {
    return m_Reader == "jpegload_source";
}

vips::VSource PictureReader::Source() const {
    return IsStandardInput(m_Path) ? vips::VSource::new_from_memory(m_Bytes.data(), m_Bytes.size())
                                   : vips::VSource::new_from_file(m_Path.c_str());
}

vips::VImage PictureReader::Open(bool tolerant) const {
    vips::VImage image;
    vips::VImage::call(m_Reader.c_str(),
                       vips::VImage::option()
                           ->set("out", &image)
                           ->set("source", Source())
                           ->set("access", VIPS_ACCESS_SEQUENTIAL)
                           ->set("fail_on", CanBeTolerant() && !tolerant ? VIPS_FAIL_ON_WARNING : VIPS_FAIL_ON_ERROR));
    // With several threads libvips 8.14 may miss an error that the last of them finds.
    image = image.copy();
    image.set(VIPS_META_CONCURRENCY, 1);
    if (m_Reader == "jpegload_source") {
        AddComments(image);
    }
    return image;
}

} // namespace cli
