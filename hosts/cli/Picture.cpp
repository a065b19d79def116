#include "Picture.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace cli {
namespace {

/// A copy in memory that nothing else reads: `copy_memory` may hand out a mapped file or a shared image instead.
vips::VImage OwnCopy(const vips::VImage& image) {
    vips::VImage copy = vips::VImage::new_memory();
    EndWhenInterrupted(image);
    image.write(copy);
    return copy;
}

int HeaderNumber(const vips::VImage& image, const char* field, int otherwise) {
    return image.get_typeof(field) == G_TYPE_INT ? image.get_int(field) : otherwise;
}

std::string HeaderText(const vips::VImage& image, const char* field) {
    return image.get_typeof(field) == VIPS_TYPE_REF_STRING ? image.get_string(field) : "";
}

/// Resolution in pixels a millimetre from the EXIF field, which libvips shows as "300/1 (300, Rational, ...)"; 0 where
/// there is none.
double ExifResolution(const vips::VImage& image, const char* field) {
    double above = 0.0;
    double below = 0.0;
    if (std::sscanf(HeaderText(image, field).c_str(), "%lf/%lf", &above, &below) != 2 || below <= 0.0) {
        return 0.0;
    }
    const bool centimetres = HeaderText(image, "exif-ifd0-ResolutionUnit").starts_with("3");
    return above / below / (centimetres ? 10.0 : 25.4);
}

/// Some readers, WebP's among them, leave the resolution at 1, and every writer lets the image's own override that of
/// EXIF.
vips::VImage WithExifResolution(const vips::VImage& image) {
    const double xres = ExifResolution(image, "exif-ifd0-XResolution");
    const double yres = ExifResolution(image, "exif-ifd0-YResolution");
    if (image.xres() != 1.0 || image.yres() != 1.0 || xres <= 0.0 || yres <= 0.0) {
        return image;
    }
    return image.copy(vips::VImage::option()->set("xres", xres)->set("yres", yres));
}

/// The readers of formats that hold several pictures; elsewhere pages are sizes of the same one.
bool HasSeparatePages(const std::string& loader) {
    static constexpr std::array prefixes = {"gif", "heif", "magick", "pdf", "tiff", "webp"};
    return std::ranges::any_of(prefixes, [&](const char* prefix) { return loader.starts_with(prefix); });
}

/// Only TIFF stores floating point samples as linear light from 0 to 1.
bool IsLinearTiff(const vips::VImage& image) {
    return image.format() == VIPS_FORMAT_FLOAT && HeaderText(image, VIPS_META_LOADER).starts_with("tiffload");
}

bool IsGrey(VipsInterpretation space) {
    return space == VIPS_INTERPRETATION_B_W || space == VIPS_INTERPRETATION_GREY16;
}

/// Red, green and blue on any curve: scaled to 8 bits they keep their meaning and their ICC profile.
bool IsRgb(VipsInterpretation space) {
    return space == VIPS_INTERPRETATION_sRGB || space == VIPS_INTERPRETATION_RGB16 || space == VIPS_INTERPRETATION_RGB;
}

} // namespace

Picture::Picture(const std::string& input) : m_Reader(input) {
    Read("cannot be opened, it may be damaged", [&] { Open(); });
}

/// Takes a step. If it fails because the decoder would have to guess, reopens the picture tolerantly and takes it
/// again.
template <typename Step>
void Picture::Read(const std::string& fault, Step step) {
    if (m_Damage.empty() && m_Reader.CanBeTolerant()) {
        try {
            return step();
        } catch (const vips::VError&) {
            StopIfInterrupted();
            m_Damage = "may be damaged, what cannot be made out is guessed" + VipsComplaint();
        }
        TryVips(fault, [&] { Open(); });
    }
    TryVips(fault, step);
}

void Picture::Open() {
    m_Image = m_Reader.Open(!m_Damage.empty());
    m_Losses.clear();
    m_StoredBytesPerPixel = static_cast<int>(VIPS_IMAGE_SIZEOF_PEL(m_Image.get_image()));
    m_Turned = HeaderNumber(m_Image, VIPS_META_ORIENTATION, 1) > 1;
    if (const int pages = HeaderNumber(m_Image, VIPS_META_N_PAGES, 1);
        pages > 1 && HasSeparatePages(HeaderText(m_Image, VIPS_META_LOADER))) {
        m_Losses.push_back("only the first of its " + std::to_string(pages) + " pages is taken");
    }
    ReduceToEightBits();
    RefuseUnfitSizes();
    m_Image = WithExifResolution(m_Image);
    if (m_LuminanceAlone) {
        ReduceToLuminance();
    }
}

void Picture::RefuseUnfitSizes() const {
    const std::string size = std::to_string(m_Image.width()) + "x" + std::to_string(m_Image.height());
    const std::int64_t pixels = std::int64_t{m_Image.width()} * m_Image.height();
    if (pixels == 1) {
        throw PictureError("a picture of one pixel has nothing to work on; take one of at least two");
    }
    const int channels = Shape().HasAlpha() ? 4 : 3;
    const std::int64_t largest = FoMaxPictureBytes / channels;
    if (pixels > largest) {
        throw PictureError("too large at " + size + ": at most " + std::to_string(largest) + " pixels of " +
                           std::to_string(channels) + " channels can be counted in 32 bits");
    }
}

void Picture::ReduceToEightBits() {
    if (vips_band_format_iscomplex(m_Image.format())) {
        throw PictureError("holds complex numbers, which are no picture; take greyscale or colour");
    }
    if (m_Image.coding() == VIPS_CODING_RAD || vips_band_format_isfloat(m_Image.format())) {
        m_Losses.push_back("floating point samples are reduced to 8 bits");
    } else if (m_Image.format() != VIPS_FORMAT_UCHAR) {
        m_Losses.push_back(std::to_string(8 * vips_format_sizeof(m_Image.format())) + "-bit samples are reduced to 8");
    }
    ConvertToRgbOrGrey();
    if (m_Image.format() != VIPS_FORMAT_UCHAR) {
        m_Image = m_Image.cast(VIPS_FORMAT_UCHAR, vips::VImage::option()->set("shift", true));
    }
    if (m_Image.bands() > 4) {
        throw PictureError("has " + std::to_string(m_Image.bands()) +
                           " channels; take greyscale or colour, with or without alpha");
    }
}

void Picture::ConvertToRgbOrGrey() {
    const VipsInterpretation space = m_Image.guess_interpretation();
    const bool linearTiff = IsLinearTiff(m_Image);
    if (linearTiff && IsGrey(space)) {
        // Linear light is converted from three channels: grey goes in as three equal ones, and one of them comes back.
        const vips::VImage grey = m_Image.extract_band(0);
        const vips::VImage curved = grey.bandjoin(grey)
                                        .bandjoin(grey)
                                        .copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_scRGB))
                                        .colourspace(VIPS_INTERPRETATION_sRGB)
                                        .extract_band(0)
                                        .copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_B_W));
        m_Image = m_Image.bands() == 1 ? curved : curved.bandjoin(m_Image.extract_band(1) * 255.0);
    } else if (space == VIPS_INTERPRETATION_CMYK) {
        m_Losses.push_back("CMYK is converted to sRGB");
        m_Image = m_Image.icc_transform(
            "srgb", vips::VImage::option()->set("embedded", true)->set("input_profile", "cmyk")->set("depth", 8));
    } else if (IsGrey(space) || IsRgb(space)) {
        m_Image = m_Image.colourspace(IsGrey(space) ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB);
    } else if (vips_colourspace_issupported(m_Image.get_image())) {
        if (space != VIPS_INTERPRETATION_scRGB) {
            m_Losses.push_back(std::string(vips_enum_nick(VIPS_TYPE_INTERPRETATION, space)) + " is converted to sRGB");
        } else if (linearTiff && m_Image.bands() == 4) {
            // libvips expects alpha to reach 255 here.
            m_Image = m_Image.linear({1.0, 1.0, 1.0, 255.0}, {0.0, 0.0, 0.0, 0.0});
        }
        m_Image = m_Image.colourspace(VIPS_INTERPRETATION_sRGB);
        m_Image = m_Image.copy();
        m_Image.remove(VIPS_META_ICC_NAME); // it described the samples before the conversion
    } else {
        // Numbers without a colour space are shown as they are.
        const auto shown = m_Image.bands() < 3 ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB;
        m_Image = m_Image.copy(vips::VImage::option()->set("interpretation", shown));
    }
}

PictureShape Picture::Shape() const {
    return {m_Image.width(), m_Image.height(), m_Image.bands()};
}

StoredPicture Picture::Stored() const {
    return {HeaderText(m_Image, VIPS_META_LOADER), m_StoredBytesPerPixel, m_Turned, m_Reader.HeldBytes()};
}

void Picture::ReduceToLuminance() {
    m_LuminanceAlone = true;
    if (m_Image.bands() >= 3) {
        // Factors of BT.601 with 16 fractional bits, as in verbs/Yuv.cpp: all sums are integers that a float holds
        // exactly.
        const vips::VImage weights = vips::VImage::new_matrixv(3, 1, 19595.0, 38470.0, 7471.0);
        m_Image = ((m_Image.extract_band(0, vips::VImage::option()->set("n", 3)).recomb(weights) + 32768.0) / 65536.0)
                      .floor()
                      .cast(VIPS_FORMAT_UCHAR)
                      .copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_B_W));
        m_Image.remove(VIPS_META_ICC_NAME); // it described colours
    } else {
        m_Image = m_Image.extract_band(0);
    }
}

void Picture::Decode() {
    Read("cannot be read to its end, it may be damaged or cut short", [&] {
        const vips::VImage decoded = OwnCopy(m_Image);
        m_Image = m_Turned ? OwnCopy(decoded.autorot()) : decoded;
    });
    m_Image.remove(VIPS_META_CONCURRENCY);
    // The preview that cameras put into EXIF would go on showing the picture as it was.
    m_Image.remove("jpeg-thumbnail-data");
}

void Picture::Apply(const std::function<void(const PackedPixels&)>& operation) {
    auto* const data = static_cast<unsigned char*>(const_cast<void*>(m_Image.data()));
    const VipsSamples samples = {data, m_Image.width(), m_Image.height(), m_Image.bands()};
    std::vector<unsigned char> spread;
    const PackedPixels pixels = Pack(samples, spread);
    operation(pixels);
    Unpack(pixels, samples);
}

} // namespace cli
