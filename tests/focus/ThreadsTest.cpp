// Which form of DeBlur runs, that both give the same bytes, and that separate objects may work at once.
#include "common/GuardedBuffer.h"
#include "focus/ForcedCensus.h"
#include "focus/TestKernels.h"
#include "reference/convolve_slow.h"

#include <claribox/CImageFocus.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <thread>
#include <vector>

namespace {

constexpr int kWidth = 67;
constexpr int kHeight = 45;

std::vector<unsigned char> Noise(std::uint32_t seed) {
    std::vector<unsigned char> pixels(kWidth * kHeight * 3);
    FillRandomBytes(pixels, seed);
    return pixels;
}

std::vector<unsigned char> DeBlurred(std::vector<unsigned char> pixels, int radius) {
    CImageFocus focus;
    focus.SetSize(kWidth, kHeight);
    focus.SetRadius(radius);
    focus.DeBlur(pixels.data(), FoPixelFmt_BGR24, 3 * kWidth);
    return pixels;
}

TEST(DeBlurThreads, BothFormsGiveTheSameBytes) {
    for (const int radius : {1, 4, 10}) {
        std::vector<unsigned char> expected = Noise(31);
        reference::ConvolvePicture(expected.data(), kWidth, kHeight, 3, 3 * kWidth, DeBlurKernel(radius));
        for (const int packages : {1, 2}) {
            const ForcedCensus census(packages, 1, 1);
            EXPECT_EQ(DeBlurred(Noise(31), radius), expected) << "radius " << radius << ", packages " << packages;
        }
    }
}

#if defined(__GLIBC__)

// A worker that cannot start leaves its plane as it was, which tells the threaded form from the serial one.
TEST(DeBlurThreads, CensusDecides) {
    struct Row {
        int packages;
        int cores;
        int threads;
        bool threaded;
    };
    constexpr Row rows[] = {
        {1, 1, 1, false}, {2, 1, 1, true},   {1, 2, 1, true},  {1, 1, 2, true},
        {8, 16, 2, true}, {-1, 1, 1, false}, {-1, 1, 2, true}, {0, 1, 0, false},
    };
    const std::vector<unsigned char> before = Noise(32);
    const std::vector<unsigned char> filtered = DeBlurred(before, 3);
    ASSERT_NE(filtered, before);
    for (const Row& row : rows) {
        const ForcedCensus census(row.packages, row.cores, row.threads);
        const NoThreadCanStart noThread;
        ASSERT_FALSE(noThread.Failed());
        EXPECT_EQ(DeBlurred(before, 3), row.threaded ? before : filtered)
            << row.packages << " packages, " << row.cores << " cores, " << row.threads << " threads";
    }
}

#endif

TEST(FocusThreads, SeparateObjectsWorkAtOnce) {
    const ForcedCensus census(2, 2, 1);
    constexpr int kObjects = 4;
    std::vector<std::vector<unsigned char>> pictures;
    std::vector<std::vector<unsigned char>> expected;
    for (int k = 0; k < kObjects; ++k) {
        pictures.push_back(Noise(40u + static_cast<std::uint32_t>(k)));
        expected.push_back(pictures.back());
        for (const ChMatrix<float>& kernel : {BlurKernel(k + 1), MotionKernel(5 + k, 100 * k), DeBlurKernel(k + 1)}) {
            reference::ConvolvePicture(expected.back().data(), kWidth, kHeight, 3, 3 * kWidth, kernel);
        }
    }
    std::vector<std::thread> threads;
    for (int k = 0; k < kObjects; ++k) {
        threads.emplace_back([k, pixels = pictures[static_cast<std::size_t>(k)].data()] {
            CImageFocus focus;
            focus.SetSize(kWidth, kHeight);
            focus.SetRadius(k + 1);
            focus.SetMotionLength(5 + k);
            focus.SetMotionDegree(100 * k);
            focus.Blur(pixels, FoPixelFmt_BGR24, 3 * kWidth);
            focus.MotionBlur(pixels, FoPixelFmt_BGR24, 3 * kWidth);
            focus.DeBlur(pixels, FoPixelFmt_BGR24, 3 * kWidth);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(pictures, expected);
}

} // namespace
