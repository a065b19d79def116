// The spatial filter of every vector class, with and without a mask, against its plain form, bit for bit.
#include "common/VectorClassTest.h"
#include "focus/Picture.h"
#include "focus/TestKernels.h"
#include "reference/convolve_slow.h"

#include <algorithm>
#include <random>
#include <string>

namespace {

enum class Fill { Random, AllZero, AllWhite, Checkerboard };

struct Size {
    int width, height;
    Fill fill = Fill::Random;
};

struct Case {
    std::size_t kernel; // index into the kernels
    Size size;
    reference::Plane source;
    reference::Plane expected;
};

reference::Plane MakePlane(const Size& size, std::uint32_t seed) {
    const auto columns = static_cast<std::size_t>(size.width);
    reference::Plane plane = RandomBytes(columns * static_cast<std::size_t>(size.height), seed);
    for (std::size_t k = 0; size.fill != Fill::Random && k < plane.size(); ++k) {
        const bool white = size.fill == Fill::AllWhite || (k % columns + k / columns) % 2 == 1;
        plane[k] = size.fill != Fill::AllZero && white ? 255 : 0;
    }
    return plane;
}

// Pictures smaller than the kernel, smaller than its half, with none, one and two interior columns and rows, and large
// enough to fill vectors, to cross from one column tile to the next, and to go round a ring of rows several times.
std::vector<Size> SizesFor(const ChMatrix<float>& kernel) {
    const int kr = kernel.m_Rows / 2;
    const int kc = kernel.m_Cols / 2;
    std::vector<Size> sizes = {
        {1, 1},
        {1, 2 * kr + 3},
        {2 * kc + 3, 1},
        {std::max(kc, 1), kr + 1},
        {kc / 2 + 1, 2 * kr + 5},
        {2 * kc + 5, kr / 2 + 1},
        {std::max(2 * kc, 1), std::max(2 * kr, 1)},
        {2 * kc + 1, 2 * kr + 1},
        {2 * kc + 2, 2 * kr + 3},
    };
    if (kernel.Count() <= 31 * 31) { // the plain form takes too long for larger ones
        const int rows = 2 * kr + 9;
        const Size larger[] = {{131, rows}, {515, rows}, {1037, rows}, {19, 2 * kr + 120}};
        sizes.insert(sizes.end(), std::begin(larger), std::end(larger));
        for (const Fill fill : {Fill::AllZero, Fill::AllWhite, Fill::Checkerboard}) {
            sizes.push_back({67, rows, fill});
        }
    }
    return sizes;
}

// Made once for all vector classes: the plain form takes most of the time.
struct Cases {
    std::vector<TestKernel> kernels = AllTestKernels();
    std::vector<Case> rows;

    Cases() {
        for (std::size_t k = 0; k < kernels.size(); ++k) {
            for (const Size& size : SizesFor(kernels[k].matrix)) {
                Add(k, size);
            }
        }
        // Widths about multiples of the column tile and heights about multiples of the band, in one kernel for each
        // form of the filter; and a row so long that its bands are the shortest.
        for (const char* name :
             {"blur of radius 3", "deblur of radius 3", "motion of length 5, degree 225", "17 bits"}) {
            const auto kernel = std::find_if(kernels.begin(), kernels.end(), [&](auto& k) { return k.name == name; });
            const auto index = static_cast<std::size_t>(kernel - kernels.begin());
            for (const int width : {31,  32,  33,  63,  64,  65,  127, 128,  129,  255,  256, 257,
                                    383, 384, 385, 511, 512, 513, 518, 1023, 1024, 1025, 1031}) {
                Add(index, {width, 12});
            }
            for (const int height : {63, 64, 65, 66, 127, 128, 129, 300}) {
                Add(index, {height == 300 ? 700 : 41, height});
            }
            Add(index, {52001, 19});
        }
    }

    void Add(std::size_t kernel, const Size& size) {
        Case row{kernel, size, MakePlane(size, static_cast<std::uint32_t>(rows.size())), {}};
        row.expected = reference::ConvolvePlane(row.source, size.width, size.height, kernels.at(kernel).matrix);
        rows.push_back(std::move(row));
    }
};

// Lets all pixels through, none, one, or a random half by bytes of every value but 0.
void FillMask(GuardedBuffer<std::uint8_t>& mask, std::size_t kind) {
    FillRandom(mask, 12);
    for (std::size_t k = 0; k < mask.size(); ++k) {
        const std::uint8_t noise = mask.Read(k);
        const int bytes[] = {255, 0, k == mask.size() / 2 ? 1 : 0, noise < 128 ? 0 : noise};
        mask.Write(k, static_cast<std::uint8_t>(bytes[kind]));
    }
}

class ConvolvePlaneTest : public VectorClassTest {};

TEST_P(ConvolvePlaneTest, EqualsThePlainForm) {
    static Cases cases;
    for (std::size_t c = 0; c < cases.rows.size(); ++c) {
        const auto& [kernelIndex, size, source, expected] = cases.rows[c];
        TestKernel& kernel = cases.kernels[kernelIndex];
        const std::size_t maskKind = (c + kernelIndex) % 4;
        SCOPED_TRACE(testing::Message() << kernel.name << ", kernel of " << kernel.matrix.m_Rows << " rows and "
                                        << kernel.matrix.m_Cols << " columns, picture of " << size.width << " by "
                                        << size.height << ", fill " << static_cast<int>(size.fill) << ", seed " << c
                                        << ", mask " << maskKind);
        const auto columns = static_cast<std::size_t>(size.width);
        GuardedBuffer<std::uint8_t> plane(source.size(), c % 7);
        std::copy(source.begin(), source.end(), plane.data());
        CImageFocus focus = MakeFocus(size.width, size.height);
        focus.ConvolvePlane(plane.data(), kernel.matrix);
        EXPECT_TRUE(SameBytes(expected.data(), plane.data(), plane.size(), columns));
        EXPECT_TRUE(plane.GuardsIntact());

        // Pixels under a zero keep their sample, which those beside them still see.
        GuardedBuffer<std::uint8_t> mask(source.size(), (c + 3) % 7);
        FillMask(mask, maskKind);
        const reference::Plane maskBefore(mask.data(), mask.data() + mask.size());
        reference::Plane masked = expected;
        for (std::size_t k = 0; k < masked.size(); ++k) {
            masked[k] = mask.Read(k) != 0 ? masked[k] : source[k];
        }
        std::copy(source.begin(), source.end(), plane.data());
        focus.ConvolvePlane_Mask(plane.data(), kernel.matrix, mask.data());
        EXPECT_TRUE(SameBytes(masked.data(), plane.data(), plane.size(), columns)) << "masked";
        EXPECT_TRUE(SameBytes(maskBefore.data(), mask.data(), mask.size()));
        EXPECT_TRUE(plane.GuardsIntact() && mask.GuardsIntact());
        ASSERT_FALSE(HasFailure()) << "further cases were not tried";
    }
}

// The kernel (1, d, -1) has the divisor d and, over a ramp that rises or falls by one in two columns, sums just above
// or below a multiple of d, where a quotient that is off by the least amount shows.
TEST_P(ConvolvePlaneTest, QuotientsAreExact) {
    std::vector<int> divisors = {3, -3, 7, 46341, 65535, 65536, 65537, 8421503, 8421504, 8421505, 1 << 30, -(1 << 30)};
    std::mt19937 generator(5);
    for (int k = 0; k < 300; ++k) {
        const auto bits = static_cast<std::uint32_t>(generator()) >> generator() % 24;
        divisors.push_back(static_cast<std::int32_t>(bits) / 2 | 4);
    }
    constexpr int kWidth = 1024;
    reference::Plane ramp(kWidth);
    for (int x = 0; x < kWidth; ++x) {
        ramp[static_cast<std::size_t>(x)] = static_cast<std::uint8_t>(std::min(x, kWidth - 1 - x) / 2);
    }
    CImageFocus focus = MakeFocus(kWidth, 1);
    for (const int divisor : divisors) {
        ChMatrix<float> kernel = FixedPointKernel(1, 3, {1, divisor, -1});
        reference::Plane plane = ramp;
        focus.ConvolvePlane(plane.data(), kernel);
        const reference::Plane expected = reference::ConvolvePlane(ramp, kWidth, 1, kernel);
        ASSERT_TRUE(SameBytes(expected.data(), plane.data(), plane.size())) << "divisor " << divisor;
    }
}

CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(ConvolvePlaneTest);

// What the definition gives, worked out by hand, so that filter and plain form cannot be wrong together.
TEST(ConvolvePlane, KnownAnswersHoldForFilterAndPlainForm) {
    const struct {
        const char* what;
        int width, height;
        reference::Plane source;
        int rows, cols;
        std::vector<int> coefficients; // in 65536ths
        reference::Plane expected;
    } answers[] = {
        // (10 + 20 + 40 + 50) / 4, (10 + ... + 60) / 6 and so on: only samples inside the picture weigh.
        {"border", 3, 2, {10, 20, 30, 40, 50, 60}, 3, 3, std::vector<int>(9, 7281), {30, 35, 40, 30, 35, 40}},
        {"correlation, not flipped", 3, 1, {10, 20, 40}, 1, 3, {65536, 131072, 0}, {10, 16, 33}},
        {"even side reaches further left", 4, 1, {4, 8, 100, 200}, 1, 2, {65536, 65536}, {4, 6, 54, 150}},
        {"sum of weights is free", 2, 1, {90, 30}, 1, 3, {0, 131072, 65536}, {70, 30}},
        {"truncates, does not round", 2, 1, {200, 197}, 1, 3, {0, 65535, 1}, {199, 197}},
        {"overshoot clamps", 3, 1, {100, 200, 100}, 1, 3, {-65536, 196608, -65536}, {50, 255, 50}},
        {"undershoot clamps", 3, 1, {200, 100, 200}, 1, 3, {-65536, 196608, -65536}, {250, 0, 250}},
        {"negative sum of weights", 3, 1, {10, 20, 40}, 1, 3, {-65536, -65536, -65536}, {15, 23, 30}},
        // 255 * 2^24 wraps to -2^24 and 128 * 2^24 to -2^31; the quotients are -1 and -128.
        {"one product wraps", 3, 1, {255, 128, 127}, 1, 1, {1 << 24}, {0, 0, 127}},
        // The weights wrap to -2^30 in the middle and to -2^31 at the ends, the products to 2^30, -2^30 and -2^31.
        {"sum of weights wraps", 3, 1, {1, 0, 2}, 1, 3, {1 << 30, 1 << 30, 1 << 30}, {0, 1, 1}}};
    for (const auto& row : answers) {
        ChMatrix<float> kernel = FixedPointKernel(row.rows, row.cols, row.coefficients);
        EXPECT_EQ(reference::ConvolvePlane(row.source, row.width, row.height, kernel), row.expected) << row.what;
        reference::Plane plane = row.source;
        MakeFocus(row.width, row.height).ConvolvePlane(plane.data(), kernel);
        EXPECT_EQ(plane, row.expected) << row.what;
    }
}

} // namespace
