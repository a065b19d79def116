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
    return FromSamples(samples, kWidth, kHeight, bands);
}

// Greyscale is its own luminance, so that the library's answer is the picture's.
TEST(Denoise, GreyscaleIsTheLibrarysForEachVerb) {
    const struct {
        const char* line;
        bool measured;
        int type;
        int band; // -1: `denoise`
    } cases[] = {{"denoise --exact", true, 0, -1},
                 {"denoise --threshold 7.5 --rule hard", false, 1, -1},
                 {"denoise --rule garrote --threshold=auto --exact", true, 2, -1},
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

// One colour everywhere has no noise, and nothing of it changes. The library's own result goes through luminance and
// chrominance, each rounded to bytes; alpha is not touched at all.
TEST(Denoise, ColoursAndAlphaAreKept) {
    std::mt19937 generator(12);
    for (int k = 0; k < 12; ++k) {
        std::vector<double> colour(4);
        std::ranges::generate(colour, [&] { return static_cast<double>(generator() % 256); });
        const vips::VImage picture = PlainPicture(colour, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_sRGB);
        const bool exact = k % 2 == 1;
        const std::vector<unsigned char> out =
            Samples(Made(picture, exact ? "denoise --threshold 5 --exact" : "denoise --threshold 5"));
        for (std::size_t at = 0; at < out.size(); ++at) {
            const int allowed = exact && at % 4 != 3 ? 2 : 0;
            ASSERT_LE(std::abs(out[at] - static_cast<int>(colour[at % 4])), allowed) << testing::PrintToString(colour);
        }
    }
}

// The library's means of chrominance are truncated and lose most of a level, which tints what they are made of green.
TEST(Denoise, NeitherTintsNorColoursGreyNorTouchesACleanPicture) {
    const vips::VImage noisy = NoisyPicture(3);
    const vips::VImage grey = NoisyPicture(1);
    const vips::VImage clean = noisy.linear(0.1, 90.0).cast(VIPS_FORMAT_UCHAR); // noise of 1
    for (const char* const rule : {"soft", "hard", "garrote"}) {
        for (const char* const threshold : {" --threshold 9", ""}) {
            const std::string line = "denoise --rule " + std::string(rule) + threshold;
            const vips::VImage out = Made(noisy, line);
            for (int band = 0; band < 3; ++band) {
                EXPECT_NEAR(out[band].avg(), noisy[band].avg(), 0.2) << line << " band " << band;
            }
            const vips::VImage colours = grey.bandjoin(grey).bandjoin(grey).copy(
                vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
            const vips::VImage still = Made(colours, line);
            EXPECT_EQ(Samples(still[0]), Samples(still[1])) << line;
            EXPECT_EQ(Samples(still[0]), Samples(still[2])) << line;
            EXPECT_EQ(Samples(still[0]), Samples(Made(grey, line))) << line;
        }
        EXPECT_EQ(Samples(Made(clean, "denoise --rule " + std::string(rule))), Samples(clean));
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
    for (const char* const part :
         {"in.png: noise ", ", measured on columns ", ": threshold ", "% of the change applied"}) {
        EXPECT_NE(result.err.find(part), std::string::npos) << result.err;
    }
    EXPECT_LT(Load(folder / "out.png").deviate(), 0.5 * picture.deviate());
}

} // namespace
