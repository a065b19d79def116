// The verbs on noise: what they make of pictures, and what they tell.
#include "CommandRun.h"
#include "TestPictures.h"

#include <claribox/CImageDenoiser.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>

namespace {

constexpr int kWidth = 131;
constexpr int kHeight = 107;

/// A flat grey of 128 with noise of deviation 10 in each band.
vips::VImage NoisyPicture(int bands) {
    std::mt19937 generator(11);
    std::normal_distribution<double> noise(128.0, 10.0);
    std::vector<unsigned char> samples(static_cast<std::size_t>(kWidth * kHeight * bands));
    for (unsigned char& sample : samples) {
        sample = static_cast<unsigned char>(std::lround(noise(generator)));
    }
    const auto space = bands < 3 ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB;
    return vips::VImage::new_from_memory(samples.data(), samples.size(), kWidth, kHeight, bands, VIPS_FORMAT_UCHAR)
        .copy(vips::VImage::option()->set("interpretation", space))
        .copy_memory();
}

// Greyscale is its own luminance, so that the library's answer is the picture's.
TEST(Denoise, GreyscaleIsTheLibrarysForEachVerb) {
    const struct {
        const char* line;
        bool measured;
        int type;
        int band; // -1: `denoise`
    } cases[] = {{"denoise", true, 0, -1},
                 {"denoise --threshold 7.5 --rule hard", false, 1, -1},
                 {"denoise --rule garrote --threshold=auto", true, 2, -1},
                 {"band --band 0", true, 0, 0},
                 {"band --band 2", true, 0, 2}};
    for (const auto& row : cases) {
        SCOPED_TRACE(row.line);
        const vips::VImage picture = NoisyPicture(1);
        std::vector<unsigned char> expected = Samples(picture);
        std::vector<unsigned char> u(expected.size(), 128), v(u);
        CImageDenoiser denoiser;
        denoiser.SetSize(kWidth, kHeight);
        denoiser.SetAutoMeasure(row.measured);
        denoiser.SetThreshold(7.5f, -1.0f);
        denoiser.SetThresholdType(row.type);
        if (row.band < 0) {
            denoiser.Denoise_YUV(expected.data(), u.data(), v.data());
        } else {
            denoiser.ShowFreqBand(expected.data(), row.band);
        }
        EXPECT_EQ(Samples(Made(picture, row.line)), expected);
    }
}

// One colour everywhere has no noise: only the conversion and back is left, and alpha is not touched at all.
TEST(Denoise, ColoursSurviveTheConversionAndAlphaIsKept) {
    std::mt19937 generator(12);
    for (int k = 0; k < 12; ++k) {
        std::vector<double> colour(4);
        std::ranges::generate(colour, [&] { return static_cast<double>(generator() % 256); });
        const vips::VImage picture = PlainPicture(colour, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_sRGB);
        const std::vector<unsigned char> out = Samples(Made(picture, "denoise --threshold 5"));
        for (std::size_t at = 0; at < out.size(); ++at) {
            const int allowed = at % 4 == 3 ? 0 : 2; // of luminance and chrominance, each rounded to bytes
            ASSERT_LE(std::abs(out[at] - static_cast<int>(colour[at % 4])), allowed) << testing::PrintToString(colour);
        }
    }
}

// The weights of BT.601: 0.299, 0.587 and 0.114.
TEST(Denoise, BandShowsTheLuminanceOfBt601) {
    const struct {
        std::vector<double> colour;
        int luminance;
    } rows[] = {{{255, 0, 0, 9}, 76}, {{0, 255, 0, 9}, 150}, {{0, 0, 255, 9}, 29}};
    for (const auto& row : rows) {
        const vips::VImage picture = PlainPicture(row.colour, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_sRGB);
        const std::vector<unsigned char> out = Samples(Made(picture, "band --band 2"));
        for (std::size_t at = 0; at < out.size(); ++at) {
            ASSERT_EQ(out[at], at % 4 == 3 ? 9 : row.luminance) << testing::PrintToString(row.colour);
        }
    }
}

TEST(Denoise, TellsThresholdAndRegionAndLessensTheNoise) {
    const TemporaryFolder folder;
    const vips::VImage picture = NoisyPicture(3);
    Save(picture, folder / "in.png");
    const RunResult result = RunCommand(folder, "denoise in.png -o out.png --verbose");
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_NE(result.err.find("in.png: threshold "), std::string::npos) << result.err;
    EXPECT_NE(result.err.find(", measured on columns "), std::string::npos) << result.err;
    EXPECT_LT(Load(folder / "out.png").deviate(), 0.5 * picture.deviate());
}

} // namespace
