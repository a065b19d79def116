// The verb `spectrum`: what it makes of luminance, and where the zero frequency lies.
#include "CommandRun.h"
#include "TestPictures.h"

#include <claribox/ChFunctions.h>

#include <gtest/gtest.h>

namespace {

/// The luminance of BT.601, which the samples of greyscale are themselves.
std::vector<unsigned char> Luminance(const vips::VImage& picture) {
    const std::vector<unsigned char> samples = Samples(picture);
    const auto bands = static_cast<std::size_t>(picture.bands());
    std::vector<unsigned char> luminance(samples.size() / bands);
    for (std::size_t k = 0; k < luminance.size(); ++k) {
        const unsigned char* const at = &samples[k * bands];
        luminance[k] = bands < 3
                           ? at[0]
                           : static_cast<unsigned char>((19595 * at[0] + 38470 * at[1] + 7471 * at[2] + 32768) >> 16);
    }
    return luminance;
}

// Odd and even sides: the middle of an even one is the first element of its second half.
TEST(Spectrum, IsOneGreyPictureThatCentringShiftsByHalf) {
    for (const auto& [width, height] : {std::pair{31, 23}, {32, 24}}) {
        for (int bands = 1; bands <= 4; ++bands) {
            SCOPED_TRACE(testing::Message() << width << "x" << height << ", bands " << bands);
            const TemporaryFolder folder;
            const vips::VImage picture = RandomPicture(width, height, bands, 21);
            Save(picture, folder / "a.png");
            Save(picture, folder / "b.png");
            const RunResult plain = RunCommand(folder, "spectrum --strict a.png -o out.jpg");
            ASSERT_EQ(plain.status, 0) << plain.err; // JPEG has no alpha, and there is none
            ASSERT_EQ(RunCommand(folder, "spectrum a.png -o out.png").status, 0);
            const RunResult batch = RunCommand(folder, "spectrum --centered a.png b.png -o centred");
            ASSERT_EQ(batch.status, 0) << batch.err;

            std::vector<unsigned char> expected = Luminance(picture);
            ChShowPowerSpectrum(expected.data(), width, height);
            EXPECT_GE(expected[0], 254);
            const vips::VImage out = Load(folder / "out.png");
            EXPECT_EQ(out.bands(), 1);
            EXPECT_EQ(Samples(out), expected);
            std::vector<unsigned char> shifted(expected.size());
            for (int y = 0; y < height; ++y) {
                for (int x = 0; x < width; ++x) {
                    const int to = (y + height / 2) % height * width + (x + width / 2) % width;
                    shifted[static_cast<std::size_t>(to)] = expected[static_cast<std::size_t>(y * width + x)];
                }
            }
            EXPECT_EQ(Samples(Load(folder / "centred/b.png")), shifted);
        }
    }
}

} // namespace
