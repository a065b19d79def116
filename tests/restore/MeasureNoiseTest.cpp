// Noise of known strength, on a picture with flat parts, gradients and texture.
#include "restore/NoisyPicture.h"

#include <gtest/gtest.h>

namespace {

using claribox::SampleType;

TEST(MeasureNoise, TellsTheNoiseThatWasAdded) {
    const struct {
        int channels;
        SampleType type;
        double constant, proportional, unit;
    } rows[] = {
        {3, SampleType::UInt8, 25, 0, 1},           {3, SampleType::UInt8, 225, 0, 1},
        {1, SampleType::UInt8, 100, 0, 1},          {4, SampleType::UInt16, 64, 0, 257},
        {3, SampleType::UInt8, 4, 1.0, 1},          {3, SampleType::UInt8, 1600, 0, 1},
        {3, SampleType::Float32, 36, 0, 1.0 / 255},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.constant << " + " << row.proportional << ", " << row.channels);
        NoisyPicture picture(640, 400, row.channels, row.type);
        picture.Fill(row.constant, row.proportional, 2);
        const claribox::NoiseMeasurement found = claribox::MeasureNoise(picture.View());
        for (int channel = 0; channel < std::min(row.channels, 3); ++channel) {
            for (const double level : {80.0, 120.0, 160.0}) {
                const double expected = std::sqrt(row.constant + row.proportional * level) * row.unit;
                const double measured =
                    std::sqrt(found.noise.channels.at(static_cast<std::size_t>(channel)).Variance(level * row.unit));
                EXPECT_NEAR(measured / expected, 1.0, 0.12) << "channel " << channel << ", level " << level;
            }
        }
        EXPECT_GT(found.confidence, 0.5);
        EXPECT_GT(found.blocks, 30);
        EXPECT_TRUE(found.left >= 0 && found.right <= 640 && found.top >= 0 && found.bottom <= 400);
        for (const double part : found.noise.shape[0]) {
            EXPECT_EQ(part, 1.0) << "white noise";
        }
    }
}

TEST(MeasureNoise, FindsLittleInACleanPicture) {
    NoisyPicture picture(640, 400, 3);
    picture.Fill(0, 0, 1);
    EXPECT_LT(claribox::MeasureNoise(picture.View()).sigma, 1.0);
}

} // namespace
