// The guess of a motion's direction against its plain form: all costs exactly, and the whole on packed pixels.
#include "common/VectorClassTest.h"
#include "focus/GuessFills.h"
#include "focus/Luminance.h"
#include "focus/MotionCosts.h"
#include "focus/Picture.h"
#include "reference/guess_slow.h"

#include <claribox/ChFunctions.h>

#include <algorithm>
#include <cmath>

namespace {

long double Value(const focus::MotionCost& cost) {
    return static_cast<long double>(cost.whole) + std::ldexp(static_cast<long double>(cost.fraction), -29);
}

TEST(MotionTanTableTest, HoldsTheGivenDigits) {
    std::uint32_t sum = 2166136261u; // FNV-1a over millionths
    for (int i = 0; i < 45; ++i) {
        const double slope = static_cast<double>(focus::MotionTanTable[i]);
        EXPECT_NEAR(slope, std::tan(i * std::acos(-1.0) / 180.0), 1.1e-6) << i;
        sum = (sum ^ static_cast<std::uint32_t>(std::lround(slope * 1e6))) * 16777619u;
    }
    EXPECT_EQ(sum, 3872150526u);
}

class MotionGuessTest : public VectorClassTest {};

TEST_P(MotionGuessTest, CostsAreExact) {
    const struct {
        const char* what;
        int width, height;
        focus::EstRect rect;
        Fill fill;
        int expected = -1; // degree
    } rows[] = {
        {"one pixel", 3, 3, {0, 0, 3, 3}, kNoise},
        {"no column", 9, 9, {3, 0, 5, 9}, kNoise, 0},
        {"no row", 9, 9, {0, 4, 9, 2}, kNoise, 0},
        {"a vector and one", 67, 9, {0, 0, 67, 9}, kNoise},
        {"a pixel less than a vector", 70, 9, {2, 1, 19, 8}, kNoise},
        {"several pieces", 1100, 6, {5, 0, 1090, 6}, kSmeared},
        {"one piece", 514, 5, {0, 0, 514, 5}, kBlackOrWhite},
        {"smooth", 150, 90, {3, 7, 140, 80}, kSmeared},
        {"noise", 131, 71, {0, 0, 130, 70}, kNoise},
        {"extremes", 131, 71, {0, 0, 130, 70}, kBlackOrWhite},
        {"beyond the width", 40, 60, {20, 10, 100, 58}, kNoise},
        {"all beyond the width", 40, 60, {200, 10, 300, 53}, kSmeared},
        {"one value", 90, 50, {0, 0, 89, 49}, kConstant, 0},
        {"rows", 90, 50, {0, 0, 89, 49}, kRows, 44},
        {"columns", 90, 50, {0, 0, 89, 49}, kColumns, 45},
        {"rising lines", 90, 50, {0, 0, 89, 49}, kRisingLines, 0},
        {"falling lines", 90, 50, {0, 0, 89, 49}, kFallingLines, 90},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        GuardedBuffer<std::uint8_t> plane(static_cast<std::size_t>(row.width * row.height), 7);
        FillPlane(plane, row.width, row.fill);
        const reference::Plane copy = CopyOf(plane);
        const reference::Rect rect = {row.rect.left, row.rect.top, row.rect.right, row.rect.bottom};
        const auto expected = reference::MotionCosts<long double>(copy, row.width, rect);
        const auto costs = focus::MotionCosts(plane.data(), row.width, row.rect);
        for (std::size_t degree = 0; degree < costs.size(); ++degree) {
            ASSERT_EQ(Value(costs[degree]), expected[degree]) << "degree " << degree;
        }
        const int guess = ChGuessMotionDirection(plane.data(), row.width, -1, rect.left, rect.top, rect.right, //
                                                 rect.bottom);
        EXPECT_EQ(guess, reference::GuessMotionDirection<long double>(copy, row.width, rect));
        EXPECT_TRUE(row.expected == -1 || guess == row.expected) << guess;
    }
}

// More pixels than the 32 bits of a packed sum hold, all of them far from their neighbours and between two of them.
TEST(MotionGuess, CostsOfManyPixelsDoNotOverflow) {
    constexpr int kPeriod = 4; // columns
    constexpr int kPeriods = (9 << 21) / kPeriod;
    const auto costsOf = [](int periods) {
        constexpr std::uint8_t kSamples[3][kPeriod] = {{255, 0, 255, 0}, {254, 1, 253, 2}, {0, 255, 0, 255}};
        const int width = kPeriod * periods;
        GuardedBuffer<std::uint8_t> plane(3 * static_cast<std::size_t>(width + 2));
        for (std::size_t i = 0; i < plane.size(); ++i) {
            const std::size_t columns = plane.size() / 3;
            plane.data()[i] = kSamples[i / columns][i % columns % kPeriod];
        }
        return focus::MotionCosts(plane.data(), width + 2, {0, 0, width + 2, 3});
    };
    const auto once = costsOf(1);
    const auto often = costsOf(kPeriods);
    for (std::size_t degree = 0; degree < once.size(); ++degree) {
        ASSERT_EQ(Value(often[degree]), Value(once[degree]) * kPeriods) << "degree " << degree;
    }
}

// In colours that differ.
void Paint(const Picture& picture, Fill fill, unsigned char* top) {
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const int sample = fill(x, y);
            unsigned char* const pixel = top + y * picture.Pitch() + x * picture.PixelBytes();
            pixel[0] = static_cast<unsigned char>(255 - sample);
            pixel[1] = static_cast<unsigned char>(sample);
            pixel[2] = static_cast<unsigned char>(sample / 2 + x % 7);
        }
    }
}

// The plain form takes a while, so that all classes share its result here; the tests above report each of them.
TEST(MotionGuess, OfPackedPixelsIsThatOfThePlainForm) {
    constexpr struct {
        Picture picture;
        Fill fill;
        reference::Region kept = {}; // what an earlier picture left
    } rows[] = {
        {{97, 61}, kSmeared},
        {{97, 61, FoPixelFmt_BGRX32, 12, true}, kNoise},
        {{97, 61}, kConstant},
        {{1, 1}, kNoise},
        {{2, 700}, kNoise, {0, 8}},
        {{512, 300, FoPixelFmt_BGR24, 1}, kSmeared},
        {{513, 513}, kNoise, {40, 24}}, // reaches beyond the plane at the right and bottom
        {{600, 300, FoPixelFmt_BGRX32, 0, true}, kRisingLines, {320, 48}},
        {{600, 640, FoPixelFmt_BGRX32, 4}, kSmeared},
        {{1699999, 1}, kNoise},
        {{1709, 995, FoPixelFmt_BGR24, 2}, kSmeared},        // 1700455: half size, odd
        {{1307, 1300}, kSmeared},                            // 1699100: the largest kind of full size
        {{1700, 1000, FoPixelFmt_BGR24, 0, true}, kSmeared}, // 1700000: half size, its rectangle leaves the plane
        {{2200, 800, FoPixelFmt_BGRX32, 8}, kSmeared},       // the same, further
        {{800, 2200}, kColumns},                             // to the right of the plane
        {{800000, 3}, kNoise},
        {{3, 800000}, kNoise},
        {{1, 1700000}, kNoise}, // half of it has no columns
    };
    const simd::VectorClass before = simd::ActiveVectorClass();
    for (const auto& [picture, fill, kept] : rows) {
        SCOPED_TRACE(picture);
        GuardedBuffer<std::uint8_t> pixels(picture.Bytes(), 1);
        FillRandom(pixels, 3);
        unsigned char* const top = picture.TopRow(pixels.data());
        Paint(picture, fill, top);
        const reference::Plane original = CopyOf(pixels);
        reference::Region region = kept;
        const int expected = reference::GuessMotionDegree<long double>(top, picture.width, picture.height,
                                                                       picture.PixelBytes(), picture.Pitch(), region);
        for (const simd::VectorClass vectorClass : simd::kVectorClasses) {
            if (!simd::IsSupported(vectorClass)) {
                continue;
            }
            SCOPED_TRACE(simd::Name(vectorClass));
            simd::ForceVectorClass(vectorClass);
            CImageFocus focus = MakeFocus(picture.width, picture.height, 3, 77);
            focus.m_EstLeft = kept.left;
            focus.m_EstTop = kept.top;
            EXPECT_EQ(focus.GuessMotionDegree(top, picture.format, picture.Pitch()), expected);
            EXPECT_EQ(std::tuple(focus.m_GuessedDegree, focus.m_EstLeft, focus.m_EstTop, focus.GetMotionDegree()),
                      std::tuple(expected, region.left, region.top, 77));
        }
        EXPECT_TRUE(SameBytes(original.data(), pixels.data(), pixels.size()));
    }
    simd::ForceVectorClass(before);
}

TEST_P(MotionGuessTest, LuminanceIsWeighedWith256PartsAndPicked) {
    for (const Picture& picture : {Picture{70, 3}, Picture{4201, 5, FoPixelFmt_BGR24, 5},
                                   Picture{4201, 5, FoPixelFmt_BGRX32, 0, true}, Picture{4, 2}}) {
        SCOPED_TRACE(picture);
        GuardedBuffer<std::uint8_t> pixels(picture.Bytes(), 1);
        unsigned char* const top = picture.TopRow(pixels.data());
        Paint(picture, kNoise, top);
        constexpr std::uint8_t kColours[] = {255, 255, 255, 0, 0, 255}; // white, then red
        std::copy_n(kColours, 3, top);
        std::copy_n(kColours + 3, 3, top + 2 * picture.PixelBytes());
        const reference::Plane full = reference::Luminance(
            reference::Split(top, picture.width, picture.height, picture.PixelBytes(), picture.Pitch()));
        EXPECT_EQ(full[0], 255);
        EXPECT_EQ(full[2], 76);
        for (const int step : {1, 2}) {
            const reference::Plane expected = step == 1 ? full : reference::Halve(full, picture.width, picture.height);
            const focus::LuminancePlane plane(top, picture.format, picture.Pitch(), picture.width, picture.height,
                                              step);
            ASSERT_EQ(static_cast<std::size_t>(plane.Width() * plane.Height()), expected.size());
            EXPECT_TRUE(SameBytes(expected.data(), plane.Samples(), expected.size())) << "step " << step;
        }
    }
}

CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(MotionGuessTest);

TEST(TrimBottomTest, KeepsAsManyRowsAsLieInThePlane) {
    for (int k = 0; k < 5 * 6 * 18 * 11; ++k) { // all of these sides, right and bottom edges
        const int width = 1 + k % 5;
        const int height = 1 + k / 5 % 6;
        const int right = k / (5 * 6) % 18;
        const int bottom = k / (5 * 6 * 18) - 1;
        int expected = bottom;
        while (expected > 0 && (expected - 1) * width + std::max(right, 1) - 1 >= width * height) {
            --expected;
        }
        const focus::EstRect trimmed = focus::TrimBottom({0, 0, right, bottom}, width, height);
        // Below 1 there are no pixels, however far.
        ASSERT_EQ(std::pair(std::max(trimmed.bottom, 0), trimmed.right), std::pair(std::max(expected, 0), right))
            << width << " by " << height << ", right " << right << ", bottom " << bottom;
    }
}

} // namespace
