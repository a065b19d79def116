#include "PictureWriter.h"

#include "Errors.h"
#include "Picture.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace cli {
namespace {

/// The writers of libvips that store EXIF.
constexpr std::array<std::string_view, 6> WritersOfExif = {"jpegsave", "pngsave", "webpsave",
                                                           "heifsave", "jxlsave", "vipssave"};

} // namespace

PictureWriter::PictureWriter(const std::string& path) {
    const char* found = vips_foreign_find_save(path.c_str());
    if (!found) {
        vips_error_clear();
        throw PictureError("no picture format goes by the ending of '" + path + "'; use .jpg, .png, .tif or .webp");
    }
    m_Operation = found;
}

PictureWriter::PictureWriter(const vips::VImage& image) {
    const std::string loader = image.get_typeof(VIPS_META_LOADER) ? image.get_string(VIPS_META_LOADER) : "vipsload";
    m_Operation = loader.substr(0, loader.find("load")) + "save";
    if (!vips_type_find("VipsForeignSave", m_Operation.c_str())) {
        throw PictureError(
            "its format can be read but not written; give -o a file ending in .jpg, .png, .tif or .webp");
    }
}

VipsForeignSaveClass* PictureWriter::Class() const {
    return static_cast<VipsForeignSaveClass*>(g_type_class_ref(vips_type_find("VipsForeignSave", m_Operation.c_str())));
}

std::string PictureWriter::Name() const {
    return VIPS_OBJECT_CLASS(Class())->nickname;
}

std::vector<std::string> PictureWriter::Losses(const vips::VImage& image) const {
    const VipsForeignSaveClass* writer = Class();
    std::vector<std::string> losses;
    const bool opaqueFormat = writer->saveable == VIPS_SAVEABLE_MONO || writer->saveable == VIPS_SAVEABLE_RGB ||
                              writer->saveable == VIPS_SAVEABLE_RGB_CMYK;
    if (opaqueFormat && image.has_alpha()) {
        losses.push_back("the output's format keeps no alpha, transparent parts turn black");
    }
    if (image.get_typeof(VIPS_META_EXIF_NAME) && std::ranges::find(WritersOfExif, Name()) == WritersOfExif.end()) {
        losses.push_back("the output's format is written without EXIF");
    }
    return losses;
}

void PictureWriter::Write(const vips::VImage& image, const std::string& path, int quality) const {
    vips::VOption* options = vips::VImage::option()->set("in", image)->set("filename", path.c_str());
    if (g_object_class_find_property(G_OBJECT_CLASS(Class()), "Q")) {
        options->set("Q", quality);
    }
    vips::VImage::call(m_Operation.c_str(), options);
}

} // namespace cli
