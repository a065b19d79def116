#include "PictureWriter.h"

#include "Errors.h"
#include "Iptc.h"
#include "JpegComments.h"
#include "TryVips.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string_view>

namespace cli {

/// Only formats that libvips 8.14 reads back as it wrote them; its writers of matrices, maps and tables write no
/// pictures.
struct PictureFormat {
    std::string_view writer;                 ///< libvips' name
    std::array<std::string_view, 3> endings; ///< the usual one first
    bool lossy;                              ///< has a quality
    bool alpha, exif, iptc, xmp, icc;        ///< whether it is kept
    std::string_view text;                   ///< the fields of libvips that it keeps comments from
};

namespace {

constexpr PictureFormat kFormats[] = {
    {"jpegsave", {"jpg", "jpeg", "jpe"}, true, false, true, true, true, true, "jpeg-comment-"},
    {"pngsave", {"png"}, false, true, true, false, true, true, "png-comment-"},
    {"tiffsave", {"tif", "tiff"}, false, true, false, true, true, true, "image-description"},
    {"webpsave", {"webp"}, true, true, true, false, true, true, ""},
    {"gifsave", {"gif"}, false, true, false, false, false, false, ""},
    {"heifsave", {"heic", "heif"}, true, true, true, false, true, true, ""},
    {"heifsave", {"avif"}, true, true, true, false, true, true, ""},
    {"jxlsave", {"jxl"}, true, true, false, false, false, true, ""},
    {"ppmsave", {"ppm", "pnm", "pgm"}, false, false, false, false, false, false, ""},
};

/// The fields in which libvips hands on comments of any format.
constexpr std::string_view kTextFields[] = {"jpeg-comment-", "png-comment-", "gif-comment", "image-description"};

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
    const auto* found = std::ranges::find_if(
        kFormats, [&](const PictureFormat& format) { return fits(format) && IsInstalled(format); });
    return found == std::end(kFormats) ? nullptr : found;
}

std::string EndingOf(const std::string& path) {
    const std::string extension = std::filesystem::path(path).extension();
    std::string ending = extension.empty() ? path : extension.substr(1);
    std::ranges::transform(ending, ending.begin(), [](char c) { return g_ascii_tolower(c); });
    return ending;
}

/// The IPTC field of `image`, however packed; empty where there is none.
std::string IptcField(const vips::VImage& image) {
    if (image.get_typeof(VIPS_META_IPTC_NAME) == 0) {
        return {};
    }
    std::size_t size = 0;
    const void* bytes = image.get_blob(VIPS_META_IPTC_NAME, &size);
    return {static_cast<const char*>(bytes), size};
}

/// Returns `image` with its IPTC field packed for `format`. A field packed that way already stays as it is, with
/// whatever else it holds.
vips::VImage WithPackedIptc(const vips::VImage& image, const PictureFormat& format) {
    const std::string field = IptcField(image);
    const std::string records = IptcRecords(field);
    const bool tiff = format.writer == "tiffsave";
    if (!format.iptc || field.empty() || (!tiff && records != field)) {
        return image;
    }
    vips::VImage packed = image.copy();
    packed.remove(VIPS_META_IPTC_NAME);
    if (!records.empty()) {
        const std::string bytes = tiff ? IptcForTiff(records) : IptcForJpeg(records);
        vips_image_set_blob_copy(packed.get_image(), VIPS_META_IPTC_NAME, bytes.data(), bytes.size());
    }
    return packed;
}

/// The names of the fields of `image` that hold comments.
std::vector<std::string> TextFieldsOf(const vips::VImage& image) {
    const std::unique_ptr<gchar*, decltype(&g_strfreev)> fields(vips_image_get_fields(image.get_image()), g_strfreev);
    std::vector<std::string> found;
    for (gchar** field = fields.get(); *field; ++field) {
        const std::string name = *field;
        if (std::ranges::any_of(kTextFields, [&](auto text) { return name.starts_with(text); })) {
            found.push_back(name);
        }
    }
    return found;
}

/// Whether `image` has comments in other fields than those that start with `kept`.
bool HasOtherText(const vips::VImage& image, std::string_view kept) {
    return std::ranges::any_of(TextFieldsOf(image),
                               [&](const std::string& name) { return kept.empty() || !name.starts_with(kept); });
}

std::vector<std::string> JpegCommentsOf(const vips::VImage& image) {
    std::vector<std::string> comments;
    for (const std::string& name : TextFieldsOf(image)) {
        if (name.starts_with("jpeg-comment-")) {
            comments.emplace_back(image.get_string(name.c_str()));
        }
    }
    return comments;
}

std::string BytesOf(const vips::VTarget& memory) {
    VipsBlob* blob = nullptr;
    g_object_get(memory.get_target(), "blob", &blob, nullptr);
    std::size_t size = 0;
    const void* bytes = vips_blob_get(blob, &size);
    std::string copy(static_cast<const char*>(bytes), size);
    vips_area_unref(VIPS_AREA(blob));
    return copy;
}

void WriteAll(const std::string& bytes, const vips::VTarget& target) {
    if (vips_target_write(target.get_target(), bytes.data(), bytes.size()) != 0 ||
        vips_target_end(target.get_target()) != 0) {
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
    for (const PictureFormat& format : kFormats) {
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
    if (m_Ending == "pgm" && image.bands() >= 3) {
        losses.push_back("the output's format keeps no colours");
    }
    if (m_Format->writer == "gifsave") {
        losses.push_back("the output's format keeps 256 colours at most");
    }
    std::string missing;
    const auto miss = [&](bool present, const char* what) {
        if (present) {
            missing += (missing.empty() ? "" : ", ") + std::string(what);
        }
    };
    miss(!m_Format->exif && image.get_typeof(VIPS_META_EXIF_NAME), "EXIF");
    miss(!m_Format->iptc && !IptcRecords(IptcField(image)).empty(), "IPTC");
    miss(!m_Format->xmp && image.get_typeof(VIPS_META_XMP_NAME), "XMP");
    miss(!m_Format->icc && image.get_typeof(VIPS_META_ICC_NAME), "colour profile");
    miss(HasOtherText(image, m_Format->text), "comments");
    if (!missing.empty()) {
        losses.push_back("the output's format is written without " + missing);
    }
    return losses;
}

void PictureWriter::Write(const vips::VImage& image, int descriptor, int quality) const {
    const vips::VTarget target = vips::VTarget::new_to_descriptor(descriptor);
    // The TIFF writer seeks, which fails silently on a pipe.
    const bool seeks = m_Format->writer == "tiffsave" && lseek(descriptor, 0, SEEK_CUR) < 0;
    const std::vector<std::string> comments =
        m_Format->writer == "jpegsave" ? JpegCommentsOf(image) : std::vector<std::string>();
    const bool inMemory = seeks || !comments.empty();
    const vips::VTarget first = inMemory ? vips::VTarget::new_to_memory() : target;
    const vips::VImage packed = WithPackedIptc(image, *m_Format).copy();
    EndWhenInterrupted(packed);
    vips::VOption* options = vips::VImage::option()->set("in", packed)->set("target", first);
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
        std::string bytes = BytesOf(first);
        std::istringstream written(bytes);
        if (!comments.empty() && JpegComments(written).empty()) { // later versions may write them
            InsertJpegComments(bytes, comments);
        }
        WriteAll(bytes, target);
    }
}

} // namespace cli
