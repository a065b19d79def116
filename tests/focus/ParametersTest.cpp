// What an object of CImageFocus holds, and what the operations leave in it.
#include "focus/TestKernels.h"

#include <claribox/CImageFocus.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>
#include <vector>

namespace {

auto Fields(CImageFocus& focus) {
    return std::tie(focus.m_Width, focus.m_Height, focus.m_Radius, focus.m_NoiseFactor, focus.m_Correlation,
                    focus.m_MotionLength, focus.m_MotionDegree, focus.m_EstLeft, focus.m_EstTop, focus.m_EstSize,
                    focus.m_EstBlock, focus.m_GuessedDegree);
}

TEST(FocusParameters, CopiesCarryAllFields) {
    CImageFocus focus;
    const std::tuple values(1, 2, 3333, 0.4f, 0.55f, 66, -77, 88, 99, 100, 111, 122);
    Fields(focus) = values;
    CImageFocus copy(focus);
    EXPECT_EQ(Fields(copy), values);
    CImageFocus assigned;
    EXPECT_EQ(&(assigned = focus), &assigned);
    EXPECT_EQ(Fields(assigned), values);
}

TEST(FocusParameters, SettersStoreOverTheDefaultsWithoutATest) {
    CImageFocus focus;
    focus.SetSize(640, 480);
    EXPECT_EQ(Fields(focus), std::tuple(640, 480, 3, 0.01f, 0.5f, 15, 30, 0, 0, 512, 8, 0));
    focus.SetSize(-5, 0);
    focus.SetRadius(-4);
    focus.SetNoiseFactor(-0.7f);
    focus.SetMotionLength(-9);
    focus.SetMotionDegree(12345);
    EXPECT_EQ(Fields(focus), std::tuple(-5, 0, -4, -0.7f, 0.5f, -9, 12345, 0, 0, 512, 8, 0));
    EXPECT_EQ(std::tuple(focus.GetRadius(), focus.GetNoiseFactor(), focus.GetMotionLength(), focus.GetMotionDegree()),
              std::tuple(-4, static_cast<double>(-0.7f), -9, 12345));
}

TEST(FocusParameters, OperationsStoreBackWhatTheyUsed) {
    std::vector<unsigned char> pixels(25 * 25 * 3);
    CImageFocus focus;
    focus.SetSize(25, 25);
    for (const int radius : {-4, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 50}) {
        focus.SetRadius(radius);
        focus.DeBlur(pixels.data(), FoPixelFmt_BGR24, 75);
        const int stored = std::clamp(radius, 1, 10);
        EXPECT_EQ(Fields(focus), std::tuple(25, 25, stored, DeconvNoise(stored), 0.5f, 15, 30, 0, 0, 512, 8, 0))
            << "DeBlur at radius " << radius;
    }
    const std::tuple before(25, 25, 12, 0.5f, 0.5f, 11, -390, 0, 0, 512, 8, 0);
    Fields(focus) = before;
    focus.Blur(pixels.data(), FoPixelFmt_BGR24, 75);
    focus.MotionBlur(pixels.data(), FoPixelFmt_BGR24, 75);
    EXPECT_EQ(Fields(focus), before);
}

} // namespace
