// Which form of DeBlur runs, that both give the same bytes, and that separate objects may work at once.
#include "common/GuardedBuffer.h"
#include "focus/TestKernels.h"
#include "processor/ProcessorCensus.h"
#include "reference/convolve_slow.h"

#include <claribox/CImageFocus.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <thread>
#include <vector>

#if defined(__linux__)
#include <pthread.h>
#endif

namespace {

// Puts chosen counts in the census for the length of a scope.
class ForcedCensus {
public:
    ForcedCensus(int packages, int cores, int threads) {
        CensusPackages = packages;
        CensusCoresPerPackage = cores;
        CensusThreadsPerCore = threads;
    }
    ~ForcedCensus() {
        CensusPackages = m_Packages;
        CensusCoresPerPackage = m_Cores;
        CensusThreadsPerCore = m_Threads;
    }
    ForcedCensus(const ForcedCensus&) = delete;
    ForcedCensus& operator=(const ForcedCensus&) = delete;

private:
    int m_Packages = CensusPackages;
    int m_Cores = CensusCoresPerPackage;
    int m_Threads = CensusThreadsPerCore;
};

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

// While it lives, no thread can start: the stack that the system hands to new threads is larger than the address space.
class NoThreadCanStart {
public:
    NoThreadCanStart() {
        pthread_getattr_default_np(&m_Before);
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        pthread_attr_setstacksize(&attributes, (SIZE_MAX >> 20) * 15 << 16);
        m_Failed = pthread_setattr_default_np(&attributes) != 0;
        pthread_attr_destroy(&attributes);
    }
    ~NoThreadCanStart() {
        pthread_setattr_default_np(&m_Before);
        pthread_attr_destroy(&m_Before);
    }
    NoThreadCanStart(const NoThreadCanStart&) = delete;
    NoThreadCanStart& operator=(const NoThreadCanStart&) = delete;

    bool Failed() const { return m_Failed; }

private:
    pthread_attr_t m_Before;
    bool m_Failed = false;
};

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
