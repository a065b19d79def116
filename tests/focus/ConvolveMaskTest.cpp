// The masked filter against its plain form, under every vector class.
#include "common/GuardedBuffer.h"
#include "common/VectorClassTest.h"
#include "focus/TestKernels.h"
#include "reference/convolve_slow.h"

#include <claribox/CImageFocus.h>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

enum class Mask { None, All, Random, OnePixel };

struct MaskRow {
    const char* what;
    ChMatrix<float> kernel;
    int width;
    int height;
};

class ConvolveMaskTest : public VectorClassTest {};

TEST_P(ConvolveMaskTest, FiltersTheMaskedPixelsAlone) {
    MaskRow rows[] = {
        {"deblur", DeBlurKernel(3), 67, 41},
        {"motion", MotionKernel(7, 30), 131, 23},
        {"blur on a picture of 2*kc columns", BlurKernel(4), 8, 30},
        {"blur on a picture smaller than its half", BlurKernel(5), 3, 2},
        {"wide kernel", FixedPointKernel(1, 5, {1, -7, 90000, 40, 2}), 515, 3},
        {"tall kernel", FixedPointKernel(5, 1, {1, -7, 90000, 40, 2}), 5, 17},
        {"one pixel", BlurKernel(1), 1, 1},
    };
    for (MaskRow& row : rows) {
        for (const Mask kind : {Mask::None, Mask::All, Mask::Random, Mask::OnePixel}) {
            const auto count = static_cast<std::size_t>(row.width * row.height);
            reference::Plane source(count);
            FillRandomBytes(source, 11);
            GuardedBuffer<std::uint8_t> mask(count, 3);
            if (kind == Mask::Random) {
                FillRandom(mask, 12); // every value but 0 lets through, so that half of them are cleared
                std::replace_if(
                    mask.data(), mask.data() + count, [](std::uint8_t m) { return m < 128; }, std::uint8_t{0});
            } else if (kind == Mask::OnePixel) {
                mask.Write(count / 2, 1);
            } else {
                std::fill_n(mask.data(), count, kind == Mask::All ? std::uint8_t{255} : std::uint8_t{0});
            }
            const reference::Plane maskBefore(mask.data(), mask.data() + count);
            const reference::Plane expected =
                kind == Mask::None  ? source
                : kind == Mask::All ? reference::ConvolvePlane(source, row.width, row.height, row.kernel)
                                    : reference::ConvolvePlane(source, row.width, row.height, row.kernel, mask.data());

            GuardedBuffer<std::uint8_t> plane(count, 1);
            std::copy(source.begin(), source.end(), plane.data());
            CImageFocus focus;
            focus.SetSize(row.width, row.height);
            focus.ConvolvePlane_Mask(plane.data(), row.kernel, mask.data());
            const auto columns = static_cast<std::size_t>(row.width);
            EXPECT_TRUE(SameBytes(expected.data(), plane.data(), count, columns))
                << row.what << ", mask " << static_cast<int>(kind);
            EXPECT_TRUE(SameBytes(maskBefore.data(), mask.data(), count, columns)) << row.what;
            EXPECT_TRUE(plane.GuardsIntact() && mask.GuardsIntact()) << row.what;
        }
    }
}

CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(ConvolveMaskTest);

// A dark pixel beside a masked bright one still sees it.
TEST(ConvolveMask, SamplesUnderAZeroMaskTakePart) {
    reference::Plane plane = {0, 90, 0};
    const reference::Plane mask = {1, 0, 1};
    ChMatrix<float> box = FixedPointKernel(1, 3, {65536, 65536, 65536});
    CImageFocus focus;
    focus.SetSize(3, 1);
    focus.ConvolvePlane_Mask(plane.data(), box, reference::Plane(mask).data());
    EXPECT_EQ(plane, (reference::Plane{45, 90, 45}));
}

} // namespace
