// The restorations in the frequency domain: against wide precision, in both forms, and what they leave alone.
#include "common/GuardedBuffer.h"
#include "common/VectorClassTest.h"
#include "focus/ForcedCensus.h"
#include "focus/TestKernels.h"
#include "reference/spectrum_slow.h"

#include <claribox/CImageFocus.h>
#include <claribox/ChFunctions.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <thread>
#include <vector>

namespace {

using spectrum_slow::Count;
using spectrum_slow::Plane;

constexpr int kWidth = 27; // 127 with the margin, a prime; the height makes 112
constexpr int kHeight = 12;

Plane Noise(std::size_t count, std::uint32_t seed) {
    Plane pixels(count);
    FillRandomBytes(pixels, seed);
    return pixels;
}

CImageFocus Focus(int width, int height, int length, int degree) {
    CImageFocus focus;
    focus.SetSize(width, height);
    focus.SetMotionLength(length);
    focus.SetMotionDegree(degree);
    focus.SetNoiseFactor(0.9f); // to be overwritten
    return focus;
}

Plane DeMotionBlurred(Plane pixels, int length, int degree) {
    Focus(kWidth, kHeight, length, degree).DeMotionBlur(pixels.data(), FoPixelFmt_BGR24, 3 * kWidth);
    return pixels;
}

// Equal but for values next to a half, which may fall either way.
testing::AssertionResult WithinRounding(const Plane& expected, const unsigned char* actual) {
    std::size_t differing = 0;
    for (std::size_t k = 0; k < expected.size(); ++k) {
        const int difference = expected[k] - actual[k];
        if (difference < -1 || difference > 1) {
            return testing::AssertionFailure()
                   << "pixel " << k << " is " << int{actual[k]} << ", not " << int{expected[k]};
        }
        differing += difference != 0 ? 1 : 0;
    }
    if (differing > 1 + expected.size() / 500) {
        return testing::AssertionFailure() << differing << " of " << expected.size() << " pixels differ by 1";
    }
    return testing::AssertionSuccess();
}

// One colour of packed pixels.
Plane Channel(const Plane& pixels, int channel) {
    Plane plane;
    for (std::size_t k = static_cast<std::size_t>(channel); k < pixels.size(); k += 3) {
        plane.push_back(pixels[k]);
    }
    return plane;
}

class InverseFilterTest : public VectorClassTest {};

TEST_P(InverseFilterTest, MotionDeblurEqualsItsDefinition) {
    struct Row {
        int width, height, length, degree;
    };
    for (const Row& row : {Row{7, 3, 15, 30}, Row{1, 9, 3, 200}, Row{28, 28, 40, 135}, Row{3, 7, 70, -300}}) {
        SCOPED_TRACE(testing::Message() << row.width << "x" << row.height << ", length " << row.length << ", degree "
                                        << row.degree);
        const Plane before = Noise(3 * Count(row.width, row.height), 21);
        Plane pixels = before;
        CImageFocus focus = Focus(row.width, row.height, row.length, row.degree);
        const ForcedCensus census(1, 1, 1);
        focus.DeMotionBlur(pixels.data(), FoPixelFmt_BGR24, 3 * row.width);
        EXPECT_EQ(focus.GetNoiseFactor(), 0.06f);
        for (int channel = 0; channel < 3; ++channel) {
            const Plane expected = spectrum_slow::Restore(Channel(before, channel), row.width, row.height,
                                                          MotionKernel(row.length, row.degree), 0.06f);
            EXPECT_TRUE(WithinRounding(expected, Channel(pixels, channel).data())) << "channel " << channel;
        }
    }
}

TEST_P(InverseFilterTest, FocusDeblurEqualsItsDefinition) {
    const std::size_t count = Count(kWidth, kHeight);
    for (const int radius : {1, 12}) { // not clamped
        ChMatrix<float> psf;
        ChMakeCirclePSF(psf, 2 * radius + 1, 0.66 * radius);
        CImageFocus focus = Focus(kWidth, kHeight, 1, 0);
        focus.SetRadius(radius);
        const Plane before[3] = {Noise(count, 1), Noise(count, 2), Noise(count, 3)};
        Plane planes[3] = {before[0], before[1], before[2]};
        focus.DeBlur_Inv(planes[0].data(), planes[1].data(), planes[2].data());
        EXPECT_EQ(focus.GetNoiseFactor(), 0.04f);
        for (int k = 0; k < 3; ++k) {
            EXPECT_TRUE(
                WithinRounding(spectrum_slow::Restore(before[k], kWidth, kHeight, psf, 0.04f), planes[k].data()))
                << "radius " << radius << ", plane " << k;
        }
    }
}

CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(InverseFilterTest);

TEST(DeMotionBlurTest, NothingButPixelsChanges) {
    struct Row {
        FoPixelFmt format;
        int length;
        bool isWritten;
    };
    // Lengths: usual; without weight; without a kernel; with one larger than the extended picture.
    constexpr auto unknown = static_cast<FoPixelFmt>(2);
    for (const Row& row :
         {Row{FoPixelFmt_BGR24, 15, true}, Row{FoPixelFmt_BGRX32, 15, true}, Row{unknown, 15, false},
          Row{FoPixelFmt_BGR24, 0, true}, Row{FoPixelFmt_BGR24, -7, true}, Row{FoPixelFmt_BGR24, 90, true}}) {
        SCOPED_TRACE(testing::Message() << "format " << row.format << ", length " << row.length);
        for (const int packages : {1, 2}) {
            const ForcedCensus census(packages, 1, 1);
            const int bytes = row.format == FoPixelFmt_BGRX32 ? 4 : 3;
            const int pitch = bytes * kWidth + 5; // with padding between the rows, none behind the last
            GuardedBuffer<unsigned char> pixels(static_cast<std::size_t>(pitch * kHeight - 5), 1);
            FillRandom(pixels, 9);
            const Plane before(pixels.data(), pixels.data() + pixels.size());
            CImageFocus focus = Focus(kWidth, kHeight, row.length, 30);
            focus.DeMotionBlur(pixels.data(), row.format, pitch);
            EXPECT_EQ(focus.GetNoiseFactor(), 0.06f);
            EXPECT_TRUE(pixels.GuardsIntact());
            std::size_t changed = 0;
            for (std::size_t k = 0; k < before.size(); ++k) {
                const std::size_t column = k % static_cast<std::size_t>(pitch);
                const bool isPixel =
                    column < static_cast<std::size_t>(bytes * kWidth) && column % 4 != (bytes == 4 ? 3 : 9);
                changed += isPixel && before[k] != pixels.Read(k) ? 1 : 0;
                ASSERT_TRUE(isPixel || before[k] == pixels.Read(k)) << "byte " << k;
            }
            EXPECT_EQ(changed > 0, row.isWritten);
        }
    }
}

TEST(DeMotionBlurTest, ScratchAndEarlierPlanesDoNotMatter) {
    const Plane source = Noise(Count(kWidth, kHeight), 4);
    CImageFocus focus = Focus(kWidth, kHeight, 5, 70);
    constexpr int kColumns = kWidth + 100;
    constexpr int kRows = kHeight + 100;
    DFT_Buffer inverse(kColumns * kRows, 128);
    ChPSF2OTF(inverse, MotionKernel(5, 70), kColumns, kRows);
    ChInverseOTF(inverse, kColumns, kRows, 0.06f);
    GuardedBuffer<unsigned char> scratch(Count(kColumns, kRows), 3);
    GuardedBuffer<unsigned char> planes[2] = {GuardedBuffer<unsigned char>(source.size(), 1),
                                              GuardedBuffer<unsigned char>(source.size(), 2)};
    for (GuardedBuffer<unsigned char>& plane : planes) {
        std::memcpy(plane.data(), source.data(), source.size());
        focus.InvFilter(plane.data(), scratch.data(), inverse);
        EXPECT_TRUE(plane.GuardsIntact() && scratch.GuardsIntact());
        FillRandom(scratch, 77);
    }
    EXPECT_TRUE(SameBytes(planes[0], planes[1]));
    EXPECT_FALSE(SameBytes(source.data(), planes[0].data(), source.size()));
}

TEST(DeMotionBlurThreads, BothFormsGiveTheSameBytes) {
    for (const int length : {1, 15, 60}) {
        Plane results[2];
        for (const int packages : {1, 2}) {
            const ForcedCensus census(packages, 1, 1);
            results[packages - 1] = DeMotionBlurred(Noise(3 * kWidth * kHeight, 31), length, 30);
        }
        EXPECT_EQ(results[0], results[1]) << "length " << length;
    }
}

#if defined(__GLIBC__)

// A worker that cannot start leaves its plane as it was, which tells the threaded form from the serial one.
TEST(DeMotionBlurThreads, CensusDecides) {
    struct Row {
        int packages, cores, threads;
        bool threaded;
    };
    const Plane before = Noise(3 * kWidth * kHeight, 32);
    for (const Row& row : {Row{1, 1, 1, false}, Row{2, 1, 1, true}, Row{1, 2, 1, true}, Row{1, 1, 2, false},
                           Row{-1, 1, 2, false}, Row{-1, 4, 0, true}}) {
        const ForcedCensus census(row.packages, row.cores, row.threads);
        const NoThreadCanStart noThread;
        ASSERT_FALSE(noThread.Failed());
        EXPECT_EQ(DeMotionBlurred(before, 15, 30) == before, row.threaded)
            << row.packages << " packages, " << row.cores << " cores, " << row.threads << " threads";
    }
}

#endif

TEST(DeMotionBlurThreads, SeparateObjectsWorkAtOnce) {
    const ForcedCensus census(2, 2, 1);
    constexpr std::size_t kObjects = 4;
    std::vector<Plane> pictures(kObjects);
    std::vector<Plane> expected(kObjects);
    const auto run = [](std::size_t k) {
        return DeMotionBlurred(Noise(3 * kWidth * kHeight, 40), 5 + static_cast<int>(k), 100 * static_cast<int>(k));
    };
    std::vector<std::thread> threads;
    for (std::size_t k = 0; k < kObjects; ++k) {
        threads.emplace_back([&pictures, &run, k] { pictures[k] = run(k); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (std::size_t k = 0; k < kObjects; ++k) {
        expected[k] = run(k);
    }
    EXPECT_EQ(pictures, expected);
}

} // namespace
