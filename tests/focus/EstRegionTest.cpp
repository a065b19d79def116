// The estimation region, the edge map and the luminance plane against their plain forms.
#include "common/VectorClassTest.h"
#include "focus/GuessFills.h"
#include "focus/Picture.h"
#include "reference/guess_slow.h"

#include <tuple>

namespace {

class EstRegionTest : public VectorClassTest {};

TEST_P(EstRegionTest, TheBusiestSquareIsTheFirstOfTheBest) {
    constexpr reference::Region kKept = {-1, -1}; // what an earlier picture left
    const struct {
        const char* what;
        int size; // of the region
        int width, height;
        Fill fill;
        reference::Region expected = {-2, -2}; // -2: as the plain form tells
    } rows[] = {
        {"fits", 512, 512, 512, kNoise, {0, 0}},
        {"a pixel more", 512, 513, 513, kNoise, kKept},
        {"a pixel too narrow", 512, 519, 600, kNoise, kKept},
        {"a pixel too low", 512, 600, 519, kNoise, kKept},
        {"one window", 512, 520, 520, kNoise, {0, 0}},
        {"too low", 512, 600, 300, kNoise, kKept},
        {"too narrow", 512, 300, 600, kNoise, kKept},
        {"narrower than a block", 512, 7, 5000, kNoise, kKept},
        {"one value", 512, 700, 700, kConstant, {0, 0}},
        {"busy patch", 512, 1024, 1024, kBusyPatch, {184, 320}},
        {"half of a camera's", 512, 1600, 1000, kSmeared},
        {"largest scores", 512, 600, 640, kBlackOrWhite},
        {"near ties", 512, 728, 650, kEqualBlocks},
        {"small, noise", 16, 203, 119, kNoise},
        {"small, odd number of blocks", 24, 8 * 7 + 5, 8 * 5 + 3, kNoise},
        {"small, ties", 32, 330, 150, kEqualBlocks},
        {"small, smooth", 64, 97, 250, kSmeared},
        {"one block", 8, 17, 300, kSmeared},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        GuardedBuffer<std::uint8_t> plane(static_cast<std::size_t>(row.width) * static_cast<std::size_t>(row.height),
                                          3);
        FillPlane(plane, row.width, row.fill);
        reference::Region expected = row.expected;
        if (expected.left == -2) {
            reference::ProbeRegion<long double>(CopyOf(plane), row.width, row.height, expected, row.size);
        }
        CImageFocus focus;
        focus.m_EstSize = row.size;
        focus.m_EstLeft = kKept.left;
        focus.m_EstTop = kKept.top;
        focus.Probe_Region(plane.data(), row.width, row.height);
        EXPECT_EQ(std::pair(focus.m_EstLeft, focus.m_EstTop), std::pair(expected.left, expected.top));
    }
}

TEST_P(EstRegionTest, TheEdgeMapIsTheDistanceFromTheMean) {
    using Row = std::tuple<int, int, int, Fill>;
    for (const auto& [width, height, threshold, fill] :
         {Row(40, 30, 20, kNoise), Row(40, 30, 1, kConstant), Row(64, 21, 0, kSmeared), Row(33, 25, 256, kNoise),
          Row(50, 10, 60, kNoise), Row(11, 11, 10, kNoise), Row(12, 12, -5, kNoise), Row(10, 20, 7, kNoise),
          Row(5, 13, 3, kNoise), Row(1, 40, 3, kNoise), Row(6, 11, 0, kConstant), Row(300, 40, 90, kBlackOrWhite)}) {
        const auto count = static_cast<std::size_t>(width * height);
        GuardedBuffer<std::uint8_t> plane(count, 1);
        GuardedBuffer<std::uint8_t> map(count, 5);
        FillPlane(plane, width, fill);
        FillRandom(map, 1);
        CImageFocus focus = MakeFocus(width, height);
        focus.GetEdgeMap(plane.data(), map.data(), -1, threshold);
        const reference::Plane expected = reference::EdgeMap(CopyOf(plane), width, height, threshold);
        EXPECT_TRUE(SameBytes(expected.data(), map.data(), count, static_cast<std::size_t>(width)))
            << width << " by " << height << ", threshold " << threshold;
        EXPECT_TRUE(map.GuardsIntact());
    }
}

TEST_P(EstRegionTest, TheLuminancePlaneIsWeighedWith65535Parts) {
    constexpr int kWidth = 129;
    constexpr int kHeight = 97; // a weight that is off by one shows in one of a thousand samples
    GuardedBuffer<std::uint8_t> y(kWidth * kHeight, 4);
    reference::Plane planes[3];
    for (std::uint32_t k = 0; k < 3; ++k) {
        planes[k] = RandomBytes(y.size(), k);
        for (std::uint32_t pixel = 0; pixel <= 3; ++pixel) { // white, and the colours
            planes[k][pixel] = pixel == 0 || pixel - 1 == k ? 255 : 0;
        }
    }
    MakeFocus(kWidth, kHeight).CvtToPlaneY(y.data(), planes[0].data(), planes[1].data(), planes[2].data());
    for (std::size_t i = 0; i < y.size(); ++i) {
        ASSERT_EQ(y.Read(i), (19595u * planes[0][i] + 38469u * planes[1][i] + 7471u * planes[2][i]) >> 16) << i;
    }
    EXPECT_EQ(y.Read(0), 254);
    EXPECT_TRUE(y.GuardsIntact());
}

CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(EstRegionTest);

TEST(EstRectTest, IsToldByTheFullSize) {
    const struct {
        int width, height;
        reference::Region region;
        int rect[4], actual[4];
    } rows[] = {
        {512, 512, {0, 0}, {0, 0, 511, 511}, {0, 0, 511, 511}},
        {513, 513, {0, 0}, {0, 0, 512, 512}, {0, 0, 512, 512}},
        {513, 513, {40, 8}, {40, 8, 552, 520}, {40, 8, 552, 520}}, // kept from an earlier picture
        {600, 300, {0, 0}, {0, 0, 512, 299}, {0, 0, 512, 299}},
        {300, 600, {8, 16}, {8, 16, 299, 528}, {8, 16, 299, 528}},
        {1699999, 1, {8, 0}, {8, 0, 520, 0}, {8, 0, 520, 0}},
        {1700, 1000, {88, 16}, {88, 16, 600, 528}, {88, 16, 600, 528}}, // looked at in half size, told as it is
        {566667, 3, {88, 0}, {88, 0, 600, 2}, {176, 0, 1200, 1024}},    // 1700001 pixels
        {4000, 3000, {1480, 980}, {1480, 980, 1992, 1492}, {2960, 1960, 3984, 2984}},
    };
    for (const auto& row : rows) {
        CImageFocus focus = MakeFocus(row.width, row.height);
        focus.m_EstLeft = row.region.left;
        focus.m_EstTop = row.region.top;
        int rect[4];
        focus.GetEstRect(rect[0], rect[1], rect[2], rect[3]);
        EXPECT_TRUE(SameBytes(row.rect, rect, 4)) << row.width << " by " << row.height;
        focus.GetEstRectActSize(rect[0], rect[1], rect[2], rect[3]);
        EXPECT_TRUE(SameBytes(row.actual, rect, 4)) << row.width << " by " << row.height << ", actual size";
    }
}

} // namespace
