// What the command makes of pictures: pixels as the library makes them, and all around them kept.
#include "CommandRun.h"
#include "TestPictures.h"

#include <gtest/gtest.h>

using vips::VImage;

namespace {

void BlurBy2(CImageFocus& focus, unsigned char* pixels, FoPixelFmt format, int pitch) {
    focus.SetRadius(2);
    focus.Blur(pixels, format, pitch);
}

struct VerbCase {
    std::vector<std::string> arguments;
    std::function<void(CImageFocus&, unsigned char*, FoPixelFmt, int)> operation;
};

/// Options reach the operation, channels are not mixed, alpha comes back byte for byte, and grey stays grey.
TEST(Picture, PixelsAreTheLibrarysForEachVerbAndNumberOfBands) {
    const VerbCase verbs[] = {
        {{"blur", "--radius", "2"}, BlurBy2},
        {{"blur"}, [](auto& focus, auto... rest) { focus.Blur(rest...); }},
        {{"motion-blur", "--length=7", "--degree", "-45"},
         [](auto& focus, auto... rest) {
             focus.SetMotionLength(7);
             focus.SetMotionDegree(-45);
             focus.MotionBlur(rest...);
         }},
        {{"deblur", "--radius", "4"},
         [](auto& focus, auto... rest) {
             focus.SetRadius(4);
             focus.DeBlur(rest...);
         }},
        {{"demotion-blur", "--length=61", "--degree", "-45"}, // the longest that fits
         [](auto& focus, auto... rest) {
             focus.SetMotionLength(61);
             focus.SetMotionDegree(-45);
             focus.DeMotionBlur(rest...);
         }},
    };
    for (const VerbCase& verb : verbs) {
        for (int bands = 1; bands <= 4; ++bands) {
            SCOPED_TRACE(testing::PrintToString(verb.arguments) + " bands " + std::to_string(bands));
            const TemporaryFolder folder;
            const VImage picture = RandomPicture(31, 23, bands, 5);
            Save(picture, folder / "in.png");
            std::vector<std::string> arguments = verb.arguments;
            arguments.insert(arguments.end(), {"in.png", "-o", "out.png"});
            const RunResult result = RunCommand(folder, arguments);
            ASSERT_EQ(result.status, 0) << result.err;
            EXPECT_EQ(result.err, "");
            const VImage out = Load(folder / "out.png");
            EXPECT_EQ(out.bands(), bands);
            EXPECT_EQ(Samples(out), Samples(Expected(picture, verb.operation)));
        }
    }
}

TEST(Picture, StandsUprightWhateverItsOrientation) {
    for (int orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(orientation);
        const TemporaryFolder folder;
        VImage picture = RandomPicture(20, 13, 3, 6).copy_memory();
        picture.set(VIPS_META_ORIENTATION, orientation);
        Save(picture, folder / "in.tif");
        ASSERT_EQ(RunCommand(folder, {"blur", "--radius", "2", "in.tif", "-o", "out.tif"}).status, 0);
        const VImage out = Load(folder / "out.tif");
        const VImage upright = Expected(picture.autorot(), BlurBy2);
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
        const RunResult result = RunCommand(folder, {"deblur", in, "-o", out});
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

struct Conversion {
    const char* name;
    const char* file;
    std::vector<double> colour;
    VipsBandFormat format;
    VipsInterpretation space;
    const char* warning; ///< empty for none
    std::vector<int> expected;
    int tolerance; ///< 0, or 2 where colours pass through a profile or a curve
};

/// Plain pictures, which blurring leaves alone, so that the conversion alone is seen.
TEST(Picture, IsReducedToEightBitsAndRgbWithAWarningThatStrictTurnsIntoARefusal) {
    const Conversion rows[] = {
        {"16-bit",
         "in.png",
         {2570, 25700, 51400},
         VIPS_FORMAT_USHORT,
         VIPS_INTERPRETATION_RGB16,
         "16-bit samples are reduced to 8",
         {10, 100, 200},
         0},
        {"16-bit, alpha",
         "in.png",
         {2570, 25700, 51400, 40000},
         VIPS_FORMAT_USHORT,
         VIPS_INTERPRETATION_RGB16,
         "16-bit samples are reduced to 8",
         {10, 100, 200, 156},
         0},
        {"16-bit grey, alpha",
         "in.tif",
         {25700, 40000},
         VIPS_FORMAT_USHORT,
         VIPS_INTERPRETATION_GREY16,
         "16-bit samples are reduced to 8",
         {100, 156},
         0},
        {"float",
         "in.tif",
         {0.0030353, 0.127438, 0.57758},
         VIPS_FORMAT_FLOAT,
         VIPS_INTERPRETATION_scRGB,
         "floating point samples are reduced",
         {10, 100, 200},
         2},
        {"float, alpha",
         "in.tif",
         {0.0030353, 0.127438, 0.57758, 0.5},
         VIPS_FORMAT_FLOAT,
         VIPS_INTERPRETATION_scRGB,
         "floating point samples are reduced",
         {10, 100, 200, 127},
         2},
        {"float grey, alpha",
         "in.tif",
         {0.127438, 0.5},
         VIPS_FORMAT_FLOAT,
         VIPS_INTERPRETATION_B_W,
         "floating point samples are reduced",
         {100, 127},
         2},
        {"CMYK",
         "in.tif",
         {0, 0, 0, 0},
         VIPS_FORMAT_UCHAR,
         VIPS_INTERPRETATION_CMYK,
         "CMYK is converted to sRGB",
         {255, 255, 255},
         2},
        {"Lab",
         "in.tif",
         {43.2845, 15.3306, -58.4295},
         VIPS_FORMAT_FLOAT,
         VIPS_INTERPRETATION_LAB,
         "lab is converted to sRGB",
         {10, 100, 200},
         2},
        {"8-bit grey", "in.jpg", {77}, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_B_W, "", {77}, 0},
    };
    for (const Conversion& row : rows) {
        SCOPED_TRACE(row.name);
        const TemporaryFolder folder;
        Save(PlainPicture(row.colour, row.format, row.space), folder / row.file);
        const RunResult result = RunCommand(folder, {"blur", row.file, "-o", "out.png"});
        ASSERT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(result.ErrorLines(), *row.warning ? 1u : 0u) << result.err;
        EXPECT_NE(result.err.find(row.warning), std::string::npos) << result.err;
        const VImage out = Load(folder / "out.png");
        EXPECT_EQ(out.format(), VIPS_FORMAT_UCHAR);
        const std::vector<double> pixel = out.getpoint(3, 3);
        ASSERT_EQ(pixel.size(), row.expected.size());
        for (std::size_t k = 0; k < pixel.size(); ++k) {
            EXPECT_NEAR(pixel[k], row.expected[k], row.tolerance) << "band " << k;
        }
        const RunResult strict = RunCommand(folder, {"blur", "--strict", row.file, "-o", "strict.png"});
        EXPECT_EQ(strict.status, *row.warning ? 1 : 0);
        EXPECT_EQ(std::filesystem::exists(folder / "strict.png"), !*row.warning);
    }
}

TEST(Picture, WarnsWhereTheOutputsFormatKeepsLess) {
    const TemporaryFolder folder;
    Save(RandomPicture(16, 16, 4, 8), folder / "alpha.png");
    Save(WithMetadata(RandomPicture(16, 16, 3, 9), 1), folder / "exif.jpg");
    const RunResult alpha = RunCommand(folder, {"blur", "alpha.png", "-o", "out.jpg"});
    EXPECT_NE(alpha.err.find("alpha.png: warning: the output's format keeps no alpha"), std::string::npos) << alpha.err;
    const RunResult exif = RunCommand(folder, {"blur", "exif.jpg", "-o", "out.tif"});
    EXPECT_NE(exif.err.find("without EXIF"), std::string::npos) << exif.err;
}

TEST(Picture, JpegQualityIs92UnlessGiven) {
    const TemporaryFolder folder;
    Save(RandomPicture(64, 64, 3, 10), folder / "in.png");
    RunCommand(folder, {"blur", "in.png", "-o", "default.jpg"});
    RunCommand(folder, {"blur", "in.png", "-o", "92.jpg", "--quality", "92"});
    RunCommand(folder, {"blur", "in.png", "-o", "30.jpg", "--quality", "30"});
    EXPECT_FALSE(ReadFile(folder / "default.jpg").empty());
    EXPECT_EQ(ReadFile(folder / "default.jpg"), ReadFile(folder / "92.jpg"));
    EXPECT_LT(ReadFile(folder / "30.jpg").size(), ReadFile(folder / "92.jpg").size());
}

} // namespace
