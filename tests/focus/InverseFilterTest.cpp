// The restorations in the frequency domain: against wide precision, in both forms, and what they leave alone.
#include "common/VectorClassTest.h"
#include "focus/ForcedCensus.h"
#include "focus/Picture.h"
#include "focus/TestKernels.h"
#include "reference/convolve_slow.h"
#include "reference/spectrum_slow.h"

#include <claribox/ChFunctions.h>

namespace {

using spectrum_slow::Plane;

// Equal but for values next to a half, which may fall either way.
void ExpectWithinRounding(const Plane& expected, const unsigned char* actual) {
    std::size_t differing = 0;
    for (std::size_t k = 0; k < expected.size(); ++k) {
        ASSERT_NEAR(expected[k], actual[k], 1) << "pixel " << k;
        differing += expected[k] != actual[k] ? 1 : 0;
    }
    EXPECT_LE(differing, 1 + expected.size() / 500);
}

class InverseFilterTest : public VectorClassTest {};

TEST_P(InverseFilterTest, MotionDeblurEqualsItsDefinitionInBothForms) {
    constexpr struct {
        Picture picture;
        int length, degree;
        bool isDefined = true;
    } rows[] = {
        {{7, 3, FoPixelFmt_BGR24, 5}, 15, 30},
        {{1, 9, FoPixelFmt_BGRX32, 4}, 3, 200},
        {{28, 28, FoPixelFmt_BGR24, 0, true}, 40, 135},
        {{3, 7, FoPixelFmt_BGRX32, 1, true}, 70, -300}, // a kernel larger than the extended picture
        {{27, 12, FoPixelFmt_BGRX32}, 0, 30, false},    // one without weight
        {{27, 12, FoPixelFmt_BGR24, 5}, -7, 30, false}, // none
    };
    for (const auto& [picture, length, degree, isDefined] : rows) {
        SCOPED_TRACE(testing::Message() << picture << ", length " << length << ", degree " << degree);
        GuardedBuffer<std::uint8_t> before(picture.Bytes());
        FillRandom(before, 21);
        GuardedBuffer<std::uint8_t> serial(before.size(), 1);
        GuardedBuffer<std::uint8_t> threaded(before.size(), 2);
        for (GuardedBuffer<std::uint8_t>* const pixels : {&serial, &threaded}) {
            const ForcedCensus census(pixels == &serial ? 1 : 2, 1, 1);
            FillRandom(*pixels, 21);
            CImageFocus focus = MakeFocus(picture.width, picture.height, length, degree);
            focus.DeMotionBlur(picture.TopRow(pixels->data()), picture.format, picture.Pitch());
            EXPECT_EQ(focus.GetNoiseFactor(), 0.06f);
            EXPECT_TRUE(pixels->GuardsIntact());
        }
        EXPECT_TRUE(SameBytes(serial, threaded));
        const auto split = [&picture = picture](GuardedBuffer<std::uint8_t>& pixels) {
            return reference::Split(picture.TopRow(pixels.data()), picture.width, picture.height, picture.PixelBytes(),
                                    picture.Pitch());
        };
        const auto sources = split(before);
        const auto restored = split(serial);
        for (std::size_t k = 0; k < 3; ++k) {
            SCOPED_TRACE(testing::Message() << "plane " << k);
            EXPECT_NE(restored[k], sources[k]);
            if (isDefined) {
                ExpectWithinRounding(spectrum_slow::Restore(sources[k], picture.width, picture.height,
                                                            MotionKernel(length, degree), 0.06f),
                                     restored[k].data());
            }
        }
        reference::Merge(restored, picture.TopRow(before.data()), picture.width, picture.height, picture.PixelBytes(),
                         picture.Pitch());
        EXPECT_TRUE(SameBytes(before, serial)) << "bytes that belong to no pixel";
    }
}

TEST_P(InverseFilterTest, FocusDeblurEqualsItsDefinition) {
    constexpr int kWidth = 27; // 127 with the margin, a prime; the height makes 112
    constexpr int kHeight = 12;
    for (const int radius : {1, 12}) { // not clamped
        ChMatrix<float> psf;
        ChMakeCirclePSF(psf, 2 * radius + 1, 0.66 * radius);
        GuardedBuffer<std::uint8_t> planes[3] = {GuardedBuffer<std::uint8_t>(kWidth * kHeight, 1),
                                                 GuardedBuffer<std::uint8_t>(kWidth * kHeight, 2),
                                                 GuardedBuffer<std::uint8_t>(kWidth * kHeight, 3)};
        for (std::uint32_t k = 0; k < 3; ++k) {
            FillRandom(planes[k], k);
        }
        CImageFocus focus = MakeFocus(kWidth, kHeight, radius);
        focus.DeBlur_Inv(planes[0].data(), planes[1].data(), planes[2].data());
        EXPECT_EQ(focus.GetNoiseFactor(), 0.04f);
        for (std::uint32_t k = 0; k < 3; ++k) {
            SCOPED_TRACE(testing::Message() << "radius " << radius << ", plane " << k);
            const Plane source = RandomBytes(planes[k].size(), k);
            ExpectWithinRounding(spectrum_slow::Restore(source, kWidth, kHeight, psf, 0.04f), planes[k].data());
            EXPECT_TRUE(planes[k].GuardsIntact());
        }
    }
}

CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(InverseFilterTest);

} // namespace
