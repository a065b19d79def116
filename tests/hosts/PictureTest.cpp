// What the command makes of pictures: pixels as the library makes them, and all around them kept.
#include "CommandRun.h"
#include "TestPictures.h"

#include <gtest/gtest.h>

using vips::VImage;

namespace {

using Operation = void (CImageFocus::*)(unsigned char*, FoPixelFmt, int);

struct VerbCase {
    std::string line;
    Operation operation;
    int radius = 1;
    int length = 1;
};

/// The parameters of the verbs' options, and their operation.
auto With(const VerbCase& verb) {
    return [verb](CImageFocus& focus, unsigned char* pixels, FoPixelFmt format, int pitch) {
        focus.SetRadius(verb.radius);
        focus.SetMotionLength(verb.length);
        focus.SetMotionDegree(-45);
        (focus.*verb.operation)(pixels, format, pitch);
    };
}

const VerbCase kBlurBy2 = {"blur --radius 2", &CImageFocus::Blur, 2};

/// Options reach the operation, channels are not mixed, alpha comes back byte for byte, and grey stays grey.
TEST(Picture, PixelsAreTheLibrarysForEachVerbAndNumberOfBands) {
    const VerbCase verbs[] = {
        kBlurBy2,
        {"blur", &CImageFocus::Blur, 3},
        {"motion-blur --length=7 --degree -45", &CImageFocus::MotionBlur, 1, 7},
        {"deblur --radius 4", &CImageFocus::DeBlur, 4},
        {"demotion-blur --length=61 --degree -45 --exact", &CImageFocus::DeMotionBlur, 1, 61}, // the longest that fits
    };
    for (const VerbCase& verb : verbs) {
        for (int bands = 1; bands <= 4; ++bands) {
            SCOPED_TRACE(verb.line + " bands " + std::to_string(bands));
            const VImage picture = RandomPicture(31, 23, bands, 5);
            const VImage out = Made(picture, verb.line);
            EXPECT_EQ(out.bands(), bands);
            EXPECT_EQ(Samples(out), Samples(Expected(picture, With(verb))));
        }
    }
}

TEST(Picture, StandsUprightWhateverItsOrientation) {
    for (int orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(orientation);
        VImage picture = RandomPicture(20, 13, 3, 6).copy_memory();
        picture.set(VIPS_META_ORIENTATION, orientation);
        const VImage out = Made(picture, kBlurBy2.line, ".tif");
        const VImage upright = Expected(picture.autorot(), With(kBlurBy2));
        EXPECT_EQ(out.width(), upright.width());
        EXPECT_EQ(Samples(out), Samples(upright));
        EXPECT_EQ(out.get_typeof(VIPS_META_ORIENTATION) ? out.get_int(VIPS_META_ORIENTATION) : 1, 1);
    }
}

TEST(Picture, KeepsMetadataButNotThePreviewOfWhatItWas) {
    struct Format {
        const char* ending;
        bool exif;       // libvips neither reads nor writes EXIF in TIFF
        bool resolution; // WebP has it in EXIF alone
    };
    for (const Format& format : {Format{".jpg", true, true}, Format{".png", true, true}, Format{".tif", false, true},
                                 Format{".webp", true, false}}) {
        SCOPED_TRACE(format.ending);
        const TemporaryFolder folder;
        const std::string in = std::string("in") + format.ending;
        const std::string out = std::string("out") + format.ending;
        Save(WithMetadata(RandomPicture(40, 30, 3, 7), 6), folder / in);
        const RunResult result = RunCommand(folder, "deblur " + in + " -o " + out);
        ASSERT_EQ(result.status, 0) << result.err;
        const VImage before = Load(folder / in);
        const VImage after = Load(folder / out);
        EXPECT_EQ(after.width(), 30);
        EXPECT_NE(Blob(before, VIPS_META_ICC_NAME), "");
        EXPECT_EQ(Blob(after, VIPS_META_ICC_NAME), Blob(before, VIPS_META_ICC_NAME));
        EXPECT_NE(Blob(before, VIPS_META_XMP_NAME), "");
        EXPECT_EQ(Blob(after, VIPS_META_XMP_NAME), Blob(before, VIPS_META_XMP_NAME));
        if (format.exif) {
            EXPECT_STREQ(after.get_string("exif-ifd0-Make"), before.get_string("exif-ifd0-Make"));
            EXPECT_STREQ(after.get_string("exif-ifd0-XResolution"), before.get_string("exif-ifd0-XResolution"));
            EXPECT_EQ(std::string(after.get_string("exif-ifd0-Orientation")).front(), '1');
        }
        if (format.resolution) {
            EXPECT_NEAR(before.xres(), 300 / 25.4, 0.01);
            EXPECT_NEAR(after.xres(), before.xres(), 1e-6);
        }
        EXPECT_EQ(Blob(before, "jpeg-thumbnail-data").empty(), !format.exif);
        EXPECT_EQ(Blob(after, "jpeg-thumbnail-data"), "");
    }
}

struct Sort {
    VipsBandFormat format;
    VipsInterpretation space;
    const char* warning; ///< empty for none
    int tolerance;       ///< 0, or 2 where colours pass through a profile or a curve
};

constexpr const char* k16Bit = "16-bit samples are reduced to 8";
constexpr const char* kFloat = "floating point samples are reduced";
const Sort kRgb16 = {VIPS_FORMAT_USHORT, VIPS_INTERPRETATION_RGB16, k16Bit, 0};
const Sort kGrey16 = {VIPS_FORMAT_USHORT, VIPS_INTERPRETATION_GREY16, k16Bit, 0};
const Sort kFloatRgb = {VIPS_FORMAT_FLOAT, VIPS_INTERPRETATION_scRGB, kFloat, 2};
const Sort kFloatGrey = {VIPS_FORMAT_FLOAT, VIPS_INTERPRETATION_B_W, kFloat, 2};
const Sort kCmyk = {VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_CMYK, "CMYK is converted to sRGB", 2};
const Sort kLab = {VIPS_FORMAT_FLOAT, VIPS_INTERPRETATION_LAB, "lab is converted to sRGB", 2};
const Sort kGrey8 = {VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_B_W, "", 0};

struct Conversion {
    const char* file;
    Sort sort;
    std::vector<double> colour;
    std::vector<int> expected;
};

/// Plain pictures, which blurring leaves alone, so that the conversion alone is seen. The second of a sort has alpha.
TEST(Picture, IsReducedToEightBitsAndRgbWithAWarningThatStrictTurnsIntoARefusal) {
    const Conversion rows[] = {
        {"in.png", kRgb16, {2570, 25700, 51400}, {10, 100, 200}},
        {"in.png", kRgb16, {2570, 25700, 51400, 40000}, {10, 100, 200, 156}},
        {"in.tif", kGrey16, {25700, 40000}, {100, 156}},
        {"in.tif", kFloatRgb, {0.0030353, 0.127438, 0.57758}, {10, 100, 200}},
        {"in.tif", kFloatRgb, {0.0030353, 0.127438, 0.57758, 0.5}, {10, 100, 200, 127}},
        {"in.tif", kFloatGrey, {0.127438, 0.5}, {100, 127}},
        {"in.tif", kCmyk, {0, 0, 0, 0}, {255, 255, 255}},
        {"in.tif", kLab, {43.2845, 15.3306, -58.4295}, {10, 100, 200}},
        {"in.jpg", kGrey8, {77}, {77}},
    };
    for (const Conversion& row : rows) {
        SCOPED_TRACE(testing::Message() << row.sort.warning << ", bands " << row.colour.size());
        const TemporaryFolder folder;
        Save(PlainPicture(row.colour, row.sort.format, row.sort.space), folder / row.file);
        const RunResult result = RunCommand(folder, std::string("blur -o out.png ") + row.file);
        ASSERT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(result.ErrorLines(), *row.sort.warning ? 1u : 0u) << result.err;
        EXPECT_NE(result.err.find(row.sort.warning), std::string::npos) << result.err;
        const VImage out = Load(folder / "out.png");
        EXPECT_EQ(out.format(), VIPS_FORMAT_UCHAR);
        const std::vector<double> pixel = out.getpoint(3, 3);
        ASSERT_EQ(pixel.size(), row.expected.size());
        for (std::size_t k = 0; k < pixel.size(); ++k) {
            EXPECT_NEAR(pixel[k], row.expected[k], row.sort.tolerance) << "band " << k;
        }
        const RunResult strict = RunCommand(folder, std::string("blur --strict -o strict.png ") + row.file);
        EXPECT_EQ(strict.status, *row.sort.warning ? 1 : 0);
        EXPECT_EQ(std::filesystem::exists(folder / "strict.png"), !*row.sort.warning);
    }
}

TEST(Picture, WarnsOfDamageThatLeavesAPicture) {
    const TemporaryFolder folder;
    Save(RandomPicture(64, 64, 3, 11), folder / "in.jpg");
    WriteFile(folder / "in.jpg", Damaged(ReadFile(folder / "in.jpg")));
    for (const char* line : {"blur in.jpg -o out.png", "guess-motion in.jpg"}) {
        const RunResult result = RunCommand(folder, line);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.ErrorLines(), 1u) << result.err;
        EXPECT_NE(result.err.find("in.jpg: warning: may be damaged"), std::string::npos) << result.err;
    }
    EXPECT_EQ(Load(folder / "out.png").height(), 64);
}

/// Written by its ending, in any case of letters, and read from standard input.
TEST(Picture, ComesBackFromEachFormat) {
    const std::vector<double> colour = {10, 100, 200, 255};
    const TemporaryFolder folder;
    Save(PlainPicture(colour, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_sRGB), folder / "in.png");
    for (const std::string ending : {"jpg", "JPEG", "png", "tif", "webp", "gif", "heic", "avif", "jxl", "ppm", "pnm"}) {
#if defined(__SANITIZE_ADDRESS__)
        if (ending == "heic" || ending == "avif") {
            continue; // libvips 8.14 reads EXIF data that it has freed, which ends the command
        }
#endif
        SCOPED_TRACE(ending);
        const std::string out = "out." + ending;
        EXPECT_EQ(RunCommand(folder, "blur in.png -o " + out).status, 0);
        const RunResult back = RunCommand(folder, "blur - --force -o back.png", {.input = out.c_str()});
        ASSERT_EQ(back.status, 0) << back.err;
        const std::vector<double> pixel = Load(folder / "back.png").getpoint(3, 3);
        for (std::size_t k = 0; k < pixel.size(); ++k) {
            EXPECT_NEAR(pixel[k], colour[k], 4) << "band " << k;
        }
    }
}

TEST(Picture, KeepsWhatTheOutputsFormatCanHoldOrWarns) {
    const std::string records("\x1C\x02\x19\0\4Kiwi", 9);
    const std::string packed = std::string("Photoshop 3.0\0"
                                           "8BIM\4\4\0\0\0\0\0\x09",
                                           26) +
                               records + '\0';
    const std::string comment("\xFF\xFE\0\7Hello", 9);
    const TemporaryFolder folder;
    VImage picture = RandomPicture(16, 16, 3, 12).copy_memory();
    vips_image_set_blob_copy(picture.get_image(), VIPS_META_IPTC_NAME, packed.data(), packed.size());
    Save(picture, folder / "in.jpg");
    WriteFile(folder / "in.jpg", ReadFile(folder / "in.jpg").insert(2, comment));
    Save(RandomPicture(16, 16, 4, 8), folder / "alpha.png");
    Save(WithMetadata(RandomPicture(16, 16, 3, 9), 1), folder / "exif.jpg");
    const std::string format = ": warning: the output's format ";
    const std::pair<std::string, std::string> rows[] = {
        {"in.jpg -o out.jpg", ""},
        {"in.jpg -o out.tif", format + "is written without EXIF, comments\n"},
        {"out.tif -o back.jpg", ""},
        {"in.jpg -o out.png", format + "is written without IPTC, comments\n"},
        {"exif.jpg -o exif.webp", ""},
        {"exif.jpg -o exif.ppm", format + "is written without EXIF, XMP, colour profile\n"},
        {"alpha.png -o alpha.jpg", format + "keeps no alpha, transparent parts turn black\n"}};
    for (const auto& [line, warning] : rows) {
        const RunResult result = RunCommand(folder, "blur " + line);
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_TRUE(warning.empty() ? result.err.empty() : result.err.ends_with(warning)) << result.err;
    }
    EXPECT_EQ(Blob(Load(folder / "out.jpg"), VIPS_META_IPTC_NAME), packed);
    EXPECT_EQ(Blob(Load(folder / "out.tif"), VIPS_META_IPTC_NAME), records);
    EXPECT_EQ(Blob(Load(folder / "back.jpg"), VIPS_META_IPTC_NAME), packed);
    EXPECT_NE(ReadFile(folder / "out.jpg").find(comment), std::string::npos);
}

TEST(Picture, JpegQualityIs92UnlessGiven) {
    const TemporaryFolder folder;
    Save(RandomPicture(64, 64, 3, 10), folder / "in.png");
    RunCommand(folder, "blur in.png -o out.png");
    for (const auto& [option, quality] : {std::pair{"", "[Q=92]"}, {" --quality 30", "[Q=30]"}}) {
        RunCommand(folder, "blur in.png --force -o out.jpg" + std::string(option));
        Save(Load(folder / "out.png"), folder / ("expected.jpg" + std::string(quality)));
        EXPECT_EQ(Samples(Load(folder / "out.jpg")), Samples(Load(folder / "expected.jpg")));
    }
}

} // namespace
