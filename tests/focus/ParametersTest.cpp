// What an object of CImageFocus holds, and what the operations leave in it.
#include "focus/TestKernels.h"

#include <claribox/CImageFocus.h>

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

namespace {

auto Fields(CImageFocus& focus) {
    return std::tie(focus.m_Width, focus.m_Height, focus.m_Radius, focus.m_NoiseFactor, focus.m_Correlation,
                    focus.m_MotionLength, focus.m_MotionDegree, focus.m_EstLeft, focus.m_EstTop, focus.m_EstSize,
                    focus.m_EstBlock, focus.m_GuessedDegree);
}

TEST(FocusParameters, Defaults) {
    CImageFocus focus;
    focus.SetSize(640, 480);
    EXPECT_EQ(Fields(focus), std::tuple(640, 480, 3, 0.01f, 0.5f, 15, 30, 0, 0, 512, 8, 0));
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
    CImageFocus& same = assigned;
    assigned = same;
    EXPECT_EQ(Fields(assigned), values);
}

TEST(FocusParameters, SettersStoreWithoutATest) {
    CImageFocus focus;
    focus.SetSize(-5, 0);
    focus.SetRadius(-4);
    focus.SetNoiseFactor(-0.7f);
    focus.SetMotionLength(-9);
    focus.SetMotionDegree(12345);
    EXPECT_EQ(Fields(focus), std::tuple(-5, 0, -4, -0.7f, 0.5f, -9, 12345, 0, 0, 512, 8, 0));
    EXPECT_EQ(focus.GetRadius(), -4);
    EXPECT_EQ(focus.GetNoiseFactor(), static_cast<double>(-0.7f));
    EXPECT_EQ(focus.GetMotionLength(), -9);
    EXPECT_EQ(focus.GetMotionDegree(), 12345);
}

TEST(FocusParameters, OperationsStoreBackWhatTheyUsed) {
    struct Row {
        int radius;
        int stored;
    };
    std::vector<unsigned char> pixels(25 * 25 * 3);
    for (const Row& row : {Row{-4, 1},
                           {0, 1},
                           {1, 1},
                           {2, 2},
                           {3, 3},
                           {4, 4},
                           {5, 5},
                           {6, 6},
                           {7, 7},
                           {8, 8},
                           {9, 9},
                           {10, 10},
                           {11, 10},
                           {50, 10}}) {
        CImageFocus focus;
        focus.SetSize(25, 25);
        focus.SetRadius(row.radius);
        focus.SetNoiseFactor(0.5f);
        focus.DeBlur(pixels.data(), FoPixelFmt_BGR24, 75);
        EXPECT_EQ(Fields(focus), std::tuple(25, 25, row.stored, DeconvNoise(row.stored), 0.5f, 15, 30, 0, 0, 512, 8, 0))
            << "DeBlur at radius " << row.radius;
    }
    CImageFocus focus;
    focus.SetSize(25, 25);
    focus.SetRadius(12);
    focus.SetNoiseFactor(0.5f);
    focus.SetMotionLength(11);
    focus.SetMotionDegree(-390);
    focus.Blur(pixels.data(), FoPixelFmt_BGR24, 75);
    focus.MotionBlur(pixels.data(), FoPixelFmt_BGR24, 75);
    EXPECT_EQ(Fields(focus), std::tuple(25, 25, 12, 0.5f, 0.5f, 11, -390, 0, 0, 512, 8, 0));
}

} // namespace
