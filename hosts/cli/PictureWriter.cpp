#include "PictureWriter.h"

#include "Errors.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>

namespace cli {

/// Only what comes back from libvips 8.14 as it was written; its writers of numbers, maps and tables are no pictures.
struct PictureFormat {
    std::string_view writer;                 ///< libvips' name
    std::array<std::string_view, 3> endings; ///< the usual one first
    bool lossy;                              ///< has a quality
    bool alpha, exif;                        ///< whether it is kept
};

namespace {

constexpr PictureFormat Formats[] = {
    {"jpegsave", {"jpg", "jpeg", "jpe"}, true, false, true},
    {"pngsave", {"png"}, false, true, true},
    {"tiffsave", {"tif", "tiff"}, false, true, false},
    {"webpsave", {"webp"}, true, true, true},
    {"gifsave", {"gif"}, false, true, false},
    {"heifsave", {"heic", "heif"}, true, true, true},
    {"heifsave", {"avif"}, true, true, true},
    {"jxlsave", {"jxl"}, true, true, true},
    {"ppmsave", {"ppm", "pnm", "pgm"}, false, false, false},
};

std::string TargetOperation(const PictureFormat& format) {
    return std::string(format.writer) + "_target";
}

/// libvips may have been built without it.
bool IsInstalled(const PictureFormat& format) {
    return vips_type_find("VipsForeignSave", TargetOperation(format).c_str()) != 0;
}

/// The first of the table that is installed and fits.
template <typename Condition>
const PictureFormat* Find(Condition fits) {
    const auto* found =
        std::ranges::find_if(Formats, [&](const PictureFormat& format) { return fits(format) && IsInstalled(format); });
    return found == std::end(Formats) ? nullptr : found;
}

std::string EndingOf(const std::string& path) {
    const std::string extension = std::filesystem::path(path).extension();
    std::string ending = extension.empty() ? path : extension.substr(1);
    std::ranges::transform(ending, ending.begin(), [](char c) { return g_ascii_tolower(c); });
    return ending;
}

/// Writes what was written to memory.
void Copy(const vips::VTarget& memory, const vips::VTarget& target) {
    std::size_t size = 0;
    unsigned char* bytes = vips_target_steal(memory.get_target(), &size);
    const bool written =
        vips_target_write(target.get_target(), bytes, size) == 0 && vips_target_end(target.get_target()) == 0;
    g_free(bytes);
    if (!written) {
        throw vips::VError();
    }
}

} // namespace

PictureWriter::PictureWriter(const std::string& path) : m_Ending(EndingOf(path)) {
    m_Format = Find([&](const PictureFormat& format) {
        return !m_Ending.empty() && std::ranges::find(format.endings, m_Ending) != format.endings.end();
    });
    if (!m_Format) {
        throw PictureError("no picture format that can be written goes by the ending of '" + path + "'; use " +
                           FormatNames());
    }
}

PictureWriter::PictureWriter(const vips::VImage& image) {
    const std::string reader = image.get_typeof(VIPS_META_LOADER) ? image.get_string(VIPS_META_LOADER) : "";
    const std::string writer = reader.substr(0, reader.find("load")) + "save";
    m_Format = Find([&](const PictureFormat& format) { return format.writer == writer; });
    if (!m_Format) {
        throw PictureError("its format can be read but not written; give -o a file ending in " + FormatNames());
    }
    m_Ending = m_Format->endings.front();
}

std::string PictureWriter::Name() const {
    return std::string(m_Format->writer);
}

std::string PictureWriter::FormatNames() {
    std::vector<std::string_view> names;
    for (const PictureFormat& format : Formats) {
        if (IsInstalled(format)) {
            names.push_back(format.endings.front());
        }
    }
    std::string list;
    for (std::size_t k = 0; k < names.size(); ++k) {
        list += (k == 0 ? "" : k + 1 < names.size() ? ", " : " or ") + std::string(names[k]);
    }
    return list;
}

std::vector<std::string> PictureWriter::Losses(const vips::VImage& image) const {
    std::vector<std::string> losses;
    if (!m_Format->alpha && image.has_alpha()) {
        losses.push_back("the output's format keeps no alpha, transparent parts turn black");
    }
    if (!m_Format->exif && image.get_typeof(VIPS_META_EXIF_NAME)) {
        losses.push_back("the output's format is written without EXIF");
    }
    return losses;
}

void PictureWriter::Write(const vips::VImage& image, int descriptor, int quality) const {
    const vips::VTarget target = vips::VTarget::new_to_descriptor(descriptor);
    // TIFF is written back and forth, which fails on a pipe without an error.
    const bool inMemory = m_Format->writer == "tiffsave" && lseek(descriptor, 0, SEEK_CUR) < 0;
    const vips::VTarget first = inMemory ? vips::VTarget::new_to_memory() : target;
    vips::VOption* options = vips::VImage::option()->set("in", image)->set("target", first);
    if (m_Format->lossy) {
        options->set("Q", quality);
    }
    if (m_Ending == "avif") {
        options->set("compression", VIPS_FOREIGN_HEIF_COMPRESSION_AV1);
    }
    if (m_Format->writer == "ppmsave") {
        options->set("format", m_Ending.c_str());
    }
    vips::VImage::call(TargetOperation(*m_Format).c_str(), options);
    if (inMemory) {
        Copy(first, target);
    }
}

} // namespace cli
