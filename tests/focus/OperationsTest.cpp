// Blur, MotionBlur and DeBlur on packed pixels against split, plain filter and merge: every layout a host may have.
#include "common/VectorClassTest.h"
#include "focus/ForcedCensus.h"
#include "focus/Picture.h"
#include "focus/QuantisedKernel.h"
#include "focus/TestKernels.h"
#include "reference/convolve_slow.h"

namespace {

class FocusOperationsTest : public VectorClassTest {};

TEST_P(FocusOperationsTest, EqualSplitPlainFilterAndMerge) {
    const struct {
        const char* what;
        PixelOperation operation;
        ChMatrix<float> kernel;
        int amount, degree = 0;
    } jobs[] = {
        {"Blur", &CImageFocus::Blur, BlurKernel(1), 1},
        {"Blur", &CImageFocus::Blur, BlurKernel(3), 3},
        {"Blur", &CImageFocus::Blur, BlurKernel(5), 5},
        {"Blur", &CImageFocus::Blur, BlurKernel(12), 12}, // wraps at 32 bits
        {"MotionBlur", &CImageFocus::MotionBlur, MotionKernel(15, 30), 15, 30},
        {"MotionBlur", &CImageFocus::MotionBlur, MotionKernel(4, 180), 4, 180},
        {"MotionBlur", &CImageFocus::MotionBlur, MotionKernel(5, -30), 5, -30},
        {"DeBlur", &CImageFocus::DeBlur, DeBlurKernel(1), 1},
        {"DeBlur", &CImageFocus::DeBlur, DeBlurKernel(3), 3},
        {"DeBlur", &CImageFocus::DeBlur, DeBlurKernel(10), 10},
    };
    constexpr Picture pictures[] = {
        {67, 41, FoPixelFmt_BGR24},          {67, 41, FoPixelFmt_BGRX32},         {201, 7, FoPixelFmt_BGR24, 1},
        {195, 7, FoPixelFmt_BGRX32, 8},      {37, 31, FoPixelFmt_BGR24, 0, true}, {37, 31, FoPixelFmt_BGRX32, 5, true},
        {32, 33, FoPixelFmt_BGR24, 7, true}, {5, 3, FoPixelFmt_BGR24, 2},         {3, 1, FoPixelFmt_BGRX32},
        {1, 40, FoPixelFmt_BGR24, 4},        {4, 40, FoPixelFmt_BGRX32, 0, true}, {1, 1, FoPixelFmt_BGR24},
        {345, 70, FoPixelFmt_BGRX32, 3}, // several tiles and bands
        {10901, 3, FoPixelFmt_BGR24},    // one colour at a time for the largest kernel
        {10901, 3, FoPixelFmt_BGRX32},
    };
    for (const auto& job : jobs) {
        for (const Picture& picture : pictures) {
            GuardedBuffer<std::uint8_t> expected(picture.Bytes());
            FillRandom(expected, 21);
            reference::ConvolvePicture(picture.TopRow(expected.data()), picture.width, picture.height,
                                       picture.PixelBytes(), picture.Pitch(), job.kernel);
            for (const int packages : {1, 2}) { // of more than one, DeBlur makes use
                SCOPED_TRACE(testing::Message() << job.what << " " << job.amount << " degree " << job.degree << ", "
                                                << picture << ", packages " << packages);
                const ForcedCensus census(packages, 1, 1);
                GuardedBuffer<std::uint8_t> pixels(picture.Bytes(), 1);
                FillRandom(pixels, 21);
                CImageFocus focus = MakeFocus(picture.width, picture.height, job.amount, job.degree);
                (focus.*job.operation)(picture.TopRow(pixels.data()), picture.format, picture.Pitch());
                // The whole block is compared, so that the fourth bytes and the padding must come back as they were.
                EXPECT_TRUE(SameBytes(expected, pixels, static_cast<std::size_t>(picture.RowBytes())));
                EXPECT_TRUE(pixels.GuardsIntact());
            }
        }
    }
}

CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(FocusOperationsTest);

TEST(FocusOperations, PixelsOfForeignFormatsAreNotEvenRead) {
    for (const int number : {2, -1, 77}) {
        for (const int packages : {1, 2}) {
            const ForcedCensus census(packages, 1, 1);
            const auto format = static_cast<FoPixelFmt>(number);
            CImageFocus focus = MakeFocus(70, 50);
            for (const PixelOperation operation :
                 {&CImageFocus::Blur, &CImageFocus::MotionBlur, &CImageFocus::DeBlur, &CImageFocus::DeMotionBlur}) {
                (focus.*operation)(nullptr, format, 280);
            }
            EXPECT_EQ(focus.GuessMotionDegree(nullptr, format, 280), 0) << "format " << number;
        }
    }
}

// With the filter's sums of integers, so are the pictures. The sums pinned here were taken once from the 64-bit build;
// that the kernels are right is for the other tests to say, and those of motion are pinned with the point spread
// functions.
TEST(FocusOperations, HaveTheSameKernelsOnEveryProcessorAndInBothWidths) {
    const struct {
        const char* what;
        ChMatrix<float> (*kernel)(int radius);
        int radii;
        std::uint32_t expected; // FNV-1a (Fowler, Noll and Vo) over 32-bit words
    } rows[] = {{"blur kernels", BlurKernel, 50, 3128289373u}, {"restoration kernels", DeBlurKernel, 10, 140243491u}};
    for (const auto& row : rows) {
        std::uint32_t sum = 2166136261u;
        for (int radius = 1; radius <= row.radii; ++radius) {
            const focus::QuantisedKernel kernel(row.kernel(radius));
            for (int k = 0; k < kernel.Rows() * kernel.Cols(); ++k) {
                sum = (sum ^ static_cast<std::uint32_t>(kernel.At(k / kernel.Cols(), k % kernel.Cols()))) * 16777619u;
            }
        }
        EXPECT_EQ(sum, row.expected) << row.what;
    }
}

} // namespace
