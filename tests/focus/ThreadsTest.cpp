// Which form of an operation runs, and that separate objects may work at once.
#include "focus/ForcedCensus.h"
#include "focus/Picture.h"

#include <thread>

namespace {

constexpr int kWidth = 67;
constexpr int kHeight = 45;

std::vector<unsigned char> Worked(std::uint32_t k, std::initializer_list<PixelOperation> operations) {
    std::vector<unsigned char> pixels = RandomBytes(3 * kWidth * kHeight, k);
    CImageFocus focus = MakeFocus(kWidth, kHeight, 3 + static_cast<int>(k), 100 * static_cast<int>(k));
    for (const PixelOperation operation : operations) {
        (focus.*operation)(pixels.data(), FoPixelFmt_BGR24, 3 * kWidth);
    }
    return pixels;
}

#if defined(__GLIBC__)

// A worker that cannot start leaves its plane as it was, which tells the threaded form from the serial one.
TEST(DeMotionBlurThreads, CensusDecides) {
    constexpr struct {
        int packages, cores, threads;
        bool deBlur, deMotionBlur; // whether on threads
    } rows[] = {
        {1, 1, 1, false, false}, {2, 1, 1, true, true},   {1, 2, 1, true, true},
        {1, 1, 2, true, false},  {8, 16, 2, true, true},  {-1, 1, 1, false, false},
        {-1, 1, 2, true, false}, {0, 1, 0, false, false}, {-1, 4, 0, true, true},
    };
    const std::vector<unsigned char> before = Worked(0, {});
    for (const auto& row : rows) {
        const ForcedCensus census(row.packages, row.cores, row.threads);
        const NoThreadCanStart noThread;
        ASSERT_FALSE(noThread.Failed());
        const auto where = testing::Message()
                           << row.packages << " packages, " << row.cores << " cores, " << row.threads << " threads";
        EXPECT_EQ(Worked(0, {&CImageFocus::DeBlur}) == before, row.deBlur) << where;
        EXPECT_EQ(Worked(0, {&CImageFocus::DeMotionBlur}) == before, row.deMotionBlur) << where;
    }
}

#endif

TEST(FocusThreads, SeparateObjectsWorkAtOnce) {
    const ForcedCensus census(2, 2, 1);
    constexpr std::size_t kObjects = 4;
    const auto work = [](std::size_t k) {
        return Worked(static_cast<std::uint32_t>(k),
                      {&CImageFocus::Blur, &CImageFocus::MotionBlur, &CImageFocus::DeBlur, &CImageFocus::DeMotionBlur});
    };
    std::vector<unsigned char> pictures[kObjects];
    std::vector<std::thread> threads;
    for (std::size_t k = 0; k < kObjects; ++k) {
        threads.emplace_back([&pictures, &work, k] { pictures[k] = work(k); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (std::size_t k = 0; k < kObjects; ++k) {
        EXPECT_EQ(pictures[k], work(k)) << "object " << k;
    }
}

} // namespace
