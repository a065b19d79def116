// Denoising of whole pictures: what it removes, what it leaves, and on what its bytes do not depend.
#include "common/ForcedVectorClass.h"
#include "common/VectorClassTest.h"
#include "restore/DenoiseInRegions.h"
#include "restore/NoisyPicture.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using claribox::DenoiseOptions;
using claribox::Noise;
using claribox::SampleType;

NoisyPicture Noisy(int width, int height, int channels = 3, SampleType type = SampleType::UInt8, double sigma = 12) {
    NoisyPicture picture(width, height, channels, type);
    picture.Fill(sigma * sigma, 0, 5);
    return picture;
}

double UnitOf(SampleType type) {
    return type == SampleType::UInt8 ? 1.0 : type == SampleType::UInt16 ? 257.0 : 1.0 / 255.0;
}

TEST(Denoise, RemovesNoiseFromEveryKindOfPicture) {
    const struct {
        int width, height, channels;
        SampleType type;
        bool isMeasured;
    } rows[] = {
        {199, 151, 3, SampleType::UInt8, true},  {128, 96, 1, SampleType::UInt8, true},
        {97, 130, 4, SampleType::UInt8, false},  {150, 100, 3, SampleType::UInt16, true},
        {131, 64, 3, SampleType::Float32, true}, {16, 16, 1, SampleType::UInt8, false},
        {17, 300, 3, SampleType::UInt8, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.width << " by " << row.height << ", " << row.channels << " channels");
        NoisyPicture picture = Noisy(row.width, row.height, row.channels, row.type);
        const NoisyPicture before = picture;
        const double error = picture.Error();
        DenoiseOptions options;
        if (!row.isMeasured) {
            options.noise = Noise::White(12 * UnitOf(row.type));
        }
        claribox::Denoise(picture.View(), options);
        EXPECT_LT(picture.Error(), (row.channels == 1 ? 0.45 : 0.3) * error);
        for (int k = 0; k < row.width * row.height && row.channels == 4; ++k) {
            ASSERT_EQ(picture.Get(k % row.width, k / row.width, 3), before.Get(k % row.width, k / row.width, 3));
        }
    }
}

// Upside down in memory, in the other order of colours, in small regions and on any number of threads.
TEST(Denoise, BytesDependOnTheSamplesAlone) {
    const DenoiseOptions options = {.noise = Noise::White(12), .threads = 1};
    NoisyPicture expected = Noisy(531, 77);
    claribox::Denoise(expected.View(), options);
    for (const int threads : {2, 3}) {
        NoisyPicture picture = Noisy(531, 77);
        DenoiseOptions other = options;
        other.threads = threads;
        claribox::Denoise(picture.View(), other);
        EXPECT_EQ(picture.Content(), expected.Content()) << threads << " threads";
    }
    for (const int side : {16, 50, 250}) {
        NoisyPicture picture = Noisy(531, 77);
        restore::DenoiseInRegions(picture.View(), *options.noise, options, {.largestWhole = 0, .side = side});
        EXPECT_EQ(picture.Content(), expected.Content()) << "regions of " << side;
    }
    for (const simd::VectorClass vectorClass : simd::kVectorClasses) {
        const ForcedVectorClass forced(vectorClass);
        NoisyPicture picture = Noisy(531, 77);
        claribox::Denoise(picture.View(), options);
        EXPECT_EQ(picture.Content(), expected.Content()) << simd::Name(vectorClass);
    }
    NoisyPicture flipped = Noisy(200, 64);
    NoisyPicture upright = flipped;
    claribox::Denoise(upright.View(), options);
    flipped.View().pixels = static_cast<unsigned char*>(flipped.View().pixels) + 63 * flipped.View().rowBytes;
    flipped.View().rowBytes *= -1;
    claribox::Denoise(flipped.View(), options);
    double difference = 0; // rows are summed up from the other end: the last digits may differ
    for (std::size_t k = 0; k < upright.Content().size(); ++k) {
        difference = std::max(difference, std::fabs(double{1} * upright.Content()[k] - flipped.Content()[k]));
    }
    EXPECT_LE(difference, 1);
}

TEST(Denoise, StrengthAndCancelling) {
    const NoisyPicture before = Noisy(300, 200);
    const auto run = [&](const DenoiseOptions& options, bool isThrown) {
        NoisyPicture picture = before;
        bool thrown = false;
        try {
            claribox::Denoise(picture.View(), options);
        } catch (const claribox::Cancelled&) {
            thrown = true;
        }
        EXPECT_EQ(thrown, isThrown);
        return picture;
    };
    EXPECT_EQ(run({.strength = 0}, false).Content(), before.Content());
    EXPECT_EQ(run({.noise = Noise::White(0)}, false).Content(), before.Content());
    EXPECT_EQ(run({.noise = Noise::White(12), .luminance = 0, .colour = 0}, false).Content(), before.Content());
    const double all = run({.noise = Noise::White(12)}, false).Error();
    const double half = run({.noise = Noise::White(12), .strength = 0.5}, false).Error();
    const double luminance = run({.noise = Noise::White(12), .colour = 0}, false).Error();
    const double colour = run({.noise = Noise::White(12), .luminance = 0}, false).Error();
    EXPECT_LT(all, half);
    EXPECT_LT(std::max({half, luminance, colour}), before.Error());
    EXPECT_LT(colour, luminance); // two of three planes
    for (const int calls : {1, 3}) {
        int seen = 0;
        double last = 0.0;
        const auto progress = [&](double done) {
            EXPECT_GE(done, last);
            EXPECT_LE(last = done, 1.0);
            return ++seen < calls;
        };
        EXPECT_EQ(run({.noise = Noise::White(12), .threads = 2, .progress = progress}, true).Content(),
                  before.Content());
        EXPECT_EQ(seen, calls);
    }
}

TEST(Denoise, RefusesWhatCannotBeInOneSentence) {
    using Change = void (*)(claribox::PictureView&, DenoiseOptions&);
    const struct {
        Change change;
        const char* part;
    } rows[] = {
        {[](auto& p, auto&) { p.pixels = nullptr; }, "no pixels"},
        {[](auto& p, auto&) { p.width = 15; }, "give one of 16 by 16"},
        {[](auto& p, auto&) { p.height = -3; }, "give one of 16 by 16"},
        {[](auto& p, auto&) { p.channels = 2; }, "1, 3 or 4 channels, not 2"},
        {[](auto& p, auto&) { p.rowBytes = 95; }, "96 bytes or more"},
        {[](auto& p, auto&) {
             p.type = SampleType::UInt16;
             p.rowBytes = 193;
         },
         "whole samples, not 193"},
        {[](auto&, auto& o) { o.strength = 1.5; }, "strength goes from 0 to 1"},
        {[](auto&, auto& o) { o.colour = std::nan(""); }, "colour goes from 0 to 1"},
        {[](auto&, auto& o) { o.threads = -1; }, "threads"},
        {[](auto&, auto& o) { o.noise = Noise::White(std::nan("")); }, "variance"},
        {[](auto&, auto& o) { o.noise = Noise{}; }, "shape"},
    };
    for (const auto& row : rows) {
        NoisyPicture picture(32, 32, 3);
        claribox::PictureView view = picture.View();
        DenoiseOptions options;
        row.change(view, options);
        try {
            claribox::Denoise(view, options);
            ADD_FAILURE() << "no exception: " << row.part;
        } catch (const std::invalid_argument& error) {
            EXPECT_NE(std::string(error.what()).find(row.part), std::string::npos) << error.what();
        }
    }
}

} // namespace
