#include "TestPictures.h"

#include "CommandRun.h"

#include <gtest/gtest.h>

#include <random>

using vips::VImage;

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (vips_init(argv[0]) != 0) {
        return 1;
    }
    vips_cache_set_max(0); // files change under the same name
    return RUN_ALL_TESTS();
}

VImage FromSamples(const std::vector<unsigned char>& samples, int width, int height, int bands) {
    const VImage picture(
        vips_image_new_from_memory_copy(samples.data(), samples.size(), width, height, bands, VIPS_FORMAT_UCHAR));
    const auto space = bands < 3 ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB;
    return picture.copy(VImage::option()->set("interpretation", space));
}

VImage RandomPicture(int width, int height, int bands, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<unsigned char> samples(static_cast<std::size_t>(width * height * bands));
    for (unsigned char& sample : samples) {
        sample = static_cast<unsigned char>(random() >> 24);
    }
    return FromSamples(samples, width, height, bands);
}

VImage PlainPicture(const std::vector<double>& colour, VipsBandFormat format, VipsInterpretation space) {
    return VImage::black(16, 12, VImage::option()->set("bands", static_cast<int>(colour.size())))
        .linear(std::vector<double>(colour.size(), 1.0), colour)
        .cast(format)
        .copy(VImage::option()->set("interpretation", space));
}

VImage WithMetadata(const VImage& picture, int orientation) {
    constexpr double dotsPerMillimetre = 300 / 25.4;
    VImage copy =
        picture.copy(VImage::option()->set("xres", dotsPerMillimetre)->set("yres", dotsPerMillimetre)).copy_memory();
    const std::string preview = "no real preview, but kept by libvips";
    const std::string xmp = "<x:xmpmeta xmlns:x='adobe:ns:meta/'><note/></x:xmpmeta>";
    VipsBlob* profile = nullptr;
    vips_profile_load("srgb", &profile, nullptr);
    std::size_t length = 0;
    const void* bytes = vips_blob_get(profile, &length);
    vips_image_set_blob_copy(copy.get_image(), VIPS_META_ICC_NAME, bytes, length);
    vips_area_unref(VIPS_AREA(profile));
    vips_image_set_blob_copy(copy.get_image(), VIPS_META_XMP_NAME, xmp.data(), xmp.size());
    vips_image_set_blob_copy(copy.get_image(), "jpeg-thumbnail-data", preview.data(), preview.size());
    copy.set("exif-ifd0-Make", "Acme (Acme, ASCII, 5 components, 5 bytes)");
    copy.set(VIPS_META_ORIENTATION, orientation);
    // Only writing a JPEG makes one EXIF block of all the fields.
    void* jpeg = nullptr;
    copy.write_to_buffer(".jpg", &jpeg, &length);
    const VImage read = VImage::new_from_buffer(jpeg, length, "");
    const std::string exif = Blob(read, VIPS_META_EXIF_NAME);
    g_free(jpeg);
    vips_image_set_blob_copy(copy.get_image(), VIPS_META_EXIF_NAME, exif.data(), exif.size());
    return copy;
}

VImage Expected(const VImage& picture,
                const std::function<void(CImageFocus&, unsigned char*, FoPixelFmt, int)>& operation) {
    const int width = picture.width();
    const int height = picture.height();
    const int colours = picture.bands() < 3 ? 1 : 3;
    std::vector<unsigned char> samples = Samples(picture);
    const auto bands = static_cast<std::size_t>(picture.bands());
    for (std::size_t channel = 0; channel < static_cast<std::size_t>(colours); ++channel) {
        std::vector<unsigned char> alone(samples.size() / bands * 3);
        for (std::size_t k = 0; k < alone.size(); ++k) {
            alone[k] = samples[k / 3 * bands + channel];
        }
        CImageFocus focus;
        focus.SetSize(width, height);
        operation(focus, alone.data(), FoPixelFmt_BGR24, 3 * width);
        for (std::size_t k = 0; k < alone.size() / 3; ++k) {
            samples[k * bands + channel] = alone[3 * k];
        }
    }
    return FromSamples(samples, width, height, picture.bands());
}

std::vector<unsigned char> Samples(const VImage& picture) {
    std::size_t size = 0;
    void* memory = picture.write_to_memory(&size);
    const auto* bytes = static_cast<const unsigned char*>(memory);
    std::vector<unsigned char> samples(bytes, bytes + size);
    g_free(memory);
    return samples;
}

std::string Blob(const VImage& picture, const char* field) {
    if (picture.get_typeof(field) == 0) {
        return {};
    }
    std::size_t length = 0;
    const void* bytes = picture.get_blob(field, &length);
    return {static_cast<const char*>(bytes), length};
}

VImage Load(const std::filesystem::path& path) {
    return VImage::new_from_file(path.c_str());
}

void Save(const VImage& picture, const std::filesystem::path& path) {
    picture.write_to_file(path.c_str());
}

std::string Damaged(std::string jpeg) {
    return jpeg.replace(jpeg.size() * 3 / 4, 2, "\xFF\xD0");
}

VImage Made(const VImage& picture, const std::string& line, const std::string& ending) {
    const TemporaryFolder folder;
    Save(picture, folder / ("in" + ending));
    const RunResult result = RunCommand(folder, line + " in" + ending + " -o out" + ending);
    EXPECT_EQ(result.status, 0) << line << ": " << result.err;
    EXPECT_EQ(result.out + result.err, "") << line;
    return result.status == 0 ? Load(folder / ("out" + ending)).copy_memory() : picture;
}
