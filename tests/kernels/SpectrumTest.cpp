// The free functions of the frequency road, each against its definition in wide precision.
#include "common/ForcedVectorClass.h"
#include "common/GuardedBuffer.h"
#include "common/VectorClassTest.h"
#include "kernels/spectra/RealTransform.h"
#include "kernels/spectra/SpectrumPasses.h"
#include "reference/spectrum_slow.h"

#include <claribox/ChFunctions.h>
#include <claribox/DFT_Buffer.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <random>
#include <tuple>
#include <type_traits>

namespace {

using spectrum_slow::Count;
using spectrum_slow::Plane;

Plane Noise(int width, int height, std::uint32_t seed) {
    Plane plane(Count(width, height));
    FillRandomBytes(plane, seed);
    return plane;
}

ChMatrix<float> Numbered(int rows, int cols) {
    ChMatrix<float> psf(rows, cols);
    for (std::size_t k = 0; k < psf.Count(); ++k) {
        psf.m_Data[k] = static_cast<float>(k % 7) - 2.0f;
    }
    return psf;
}

std::vector<dft::Complex<float>> Elements(const DFT_Buffer& buffer, std::size_t count) {
    std::vector<dft::Complex<float>> elements;
    for (std::size_t k = 0; k < count; ++k) {
        elements.push_back({buffer.m_Spectrum[k].re, buffer.m_Spectrum[k].im});
    }
    return elements;
}

class SpectrumTest : public VectorClassTest {};

TEST(SpectrumPaddingTest, RepeatsTheNearestPixelAndCropsItBack) {
    for (const auto& [width, height, pad] :
         {std::tuple(1, 1, 2), {2, 2, 1}, {5, 4, 0}, {3, 2, 9}, {1, 70, 3}, {131, 1, 64}, {64, 5, 50}}) {
        SCOPED_TRACE(testing::Message() << width << "x" << height << " by " << pad);
        Plane source = Noise(width, height, 3);
        const Plane expected = spectrum_slow::Extend(source, width, height, pad);
        GuardedBuffer<unsigned char> padded(expected.size(), 1);
        ChEntendBuffer(source.data(), width, height, padded.data(), pad);
        EXPECT_TRUE(
            SameBytes(expected.data(), padded.data(), expected.size(), static_cast<std::size_t>(width + 2 * pad)));
        GuardedBuffer<unsigned char> cropped(source.size(), 3);
        ChCropBuffer(cropped.data(), width, height, padded.data(), pad);
        EXPECT_TRUE(SameBytes(source.data(), cropped.data(), source.size()));
        EXPECT_TRUE(padded.GuardsIntact() && cropped.GuardsIntact());
    }
    GuardedBuffer<unsigned char> none(0); // an empty plane has no pixel to repeat
    ChEntendBuffer(none.data(), 0, 3, none.data(), 0);
    EXPECT_TRUE(none.GuardsIntact());
}

TEST(SpectrumBufferTest, LayoutIsThatOfTheBinaryInterface) {
    const DFT_Buffer buffer(3, 128);
    EXPECT_EQ(buffer.m_Head, 128u);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer.m_Spectrum) % 64, 0u);
    EXPECT_EQ(static_cast<const void*>(&buffer.m_Head), static_cast<const void*>(&buffer));
    EXPECT_EQ(sizeof(DFT_Buffer), 2 * sizeof(void*));
    static_assert(!std::is_polymorphic_v<DFT_Buffer>);
}

TEST_P(SpectrumTest, TransferFunctions) {
    struct Row {
        int rows, cols, width, height;
        float sum; // of the elements that fit, by hand
    };
    const Row rows[] = {
        {1, 1, 5, 4, -2}, {3, 3, 7, 6, 4},  {3, 5, 5, 3, 12}, {2, 4, 8, 8, 5},
        {4, 1, 1, 9, -2}, {1, 1, 1, 1, -2}, {0, 0, 3, 2, 0},  {31, 31, 131, 37, 956}, // a picture with prime sides
        {1, 5, 3, 1, 0},  {1, 5, 2, 1, -1}, {5, 1, 2, 2, -1}, // larger than the picture: the middle is kept
        {9, 8, 4, 3, 3},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.rows << "x" << row.cols << " in " << row.width << "x" << row.height);
        const ChMatrix<float> psf = Numbered(row.rows, row.cols);
        const std::size_t count = Count(row.width, row.height);
        DFT_Buffer otf(static_cast<std::uint32_t>(count), 8);
        ChPSF2OTF(otf, psf, row.width, row.height);
        EXPECT_NEAR(otf.m_Spectrum[0].re, row.sum, 1e-4 * std::fabs(row.sum) + 1e-5);
        EXPECT_LT(
            dft_slow::RelativeError(Elements(otf, count), spectrum_slow::TransferFunction(psf, row.width, row.height)),
            1e-6);
    }
}

TEST_P(SpectrumTest, InverseOfOneElement) {
    const float floor = 0.01f;
    const struct {
        ChComplex element;
        float noise;
        ChComplex inverse;
    } rows[] = {
        {{0.0f, 0.0f}, 0.0f, {0.0f, -0.0f}}, // raised from 0
        {{1.0f, 0.0f}, 0.04f, {1.0f / 1.04f, -0.0f}},
        {{0.0f, -2.0f}, 0.0f, {0.0f, 0.5f}},
        {{3.0f, 4.0f}, 0.0f, {0.12f, -0.16f}},
        {{0.09f, 0.0f}, 0.0f, {static_cast<float>(0.09 / 0.0181), -0.0f}}, // raised, not clamped
        {{0.2f, 0.0f}, 0.0f, {5.0f, -0.0f}},
        {{0x1p-30f, 0.0f}, floor, {static_cast<float>(0x1p-30 / static_cast<double>(floor)), -0.0f}}, // not below it
        {{0x1p-30f, 0.0f}, std::nextafter(floor, 0.0f), {0x1p-31f / floor, -0.0f}},
        {{1e-30f, 1e30f}, 0.06f, {0.0f, -1e-30f}}, // squares beyond the range of floats
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.element.re << " + i " << row.element.im);
        DFT_Buffer otf(1, 0);
        *otf.m_Spectrum = row.element;
        ChInverseOTF(otf, 1, 1, row.noise);
        EXPECT_FLOAT_EQ(otf.m_Spectrum->re, row.inverse.re);
        EXPECT_FLOAT_EQ(otf.m_Spectrum->im, row.inverse.im);
        EXPECT_EQ(std::signbit(otf.m_Spectrum->im), std::signbit(row.inverse.im));
    }
}

// The library's own x87 code may compute in more than double precision, and so does this file where it is built for
// it: there the numbers are so short that all but quotients are exact.
constexpr bool kIsDoubleExact = FLT_EVAL_METHOD == 0;

std::vector<ChComplex> RandomElements(std::size_t count, std::mt19937& generator) {
    const auto part = [&generator] {
        const auto bits = static_cast<std::int32_t>(generator() >> (kIsDoubleExact ? 8 : 20));
        return std::ldexp(static_cast<float>(bits) - (kIsDoubleExact ? 0x1p23f : 0x1p11f), kIsDoubleExact ? -23 : -11);
    };
    std::vector<ChComplex> elements(count);
    for (ChComplex& element : elements) {
        element.re = part();
        element.im = part();
    }
    return elements;
}

// Rounds once, to nearest, as a float in memory is.
float Rounded(double value) {
    volatile float rounded = static_cast<float>(value);
    return rounded;
}

TEST_P(SpectrumTest, PassesRoundAsTold) {
    std::mt19937 generator(5);
    const float scale = 1.0f / 10403.0f;
    const float noise = 0.06f;
    for (const std::size_t count : {0u, 1u, 3u, 4u, 7u, 8u, 15u, 16u, 17u, 33u, 500u}) {
        std::vector<ChComplex> otf = RandomElements(count, generator);
        std::vector<ChComplex> spectrum = RandomElements(count, generator);
        for (std::size_t k = 0; kIsDoubleExact && k < count; k += 3) {
            // c * (a - b) and t almost cancel: what is left is their rounding, in which a fused product would differ.
            otf[k] = {std::ldexp(otf[k].re, -40), 1.0f + 0x1p-10f * spectrum[k].im};
            spectrum[k] = {1.0f + spectrum[k].re / 2, std::ldexp(spectrum[k].im, -40)};
        }
        if (count > 0) { // three multiplications: the real part, ac - bd, would be -2^-80 by four
            otf[0] = {0x1p-90f, 1.0f};
            spectrum[0] = {1.0f, 0x1p-80f};
        }
        GuardedBuffer<ChComplex> work(count, 4);
        GuardedBuffer<ChComplex> transfer(count, 4);
        std::copy_n(spectrum.data(), count, work.data());
        std::copy_n(otf.data(), count, transfer.data());
        kernels::ActiveSpectrumPasses().MultiplyAndScale(transfer.data(), work.data(), count, scale);
        EXPECT_TRUE(count == 0 || SameBytes(otf.data(), transfer.data(), count));
        kernels::ActiveSpectrumPasses().Invert(transfer.data(), count, noise);
        for (std::size_t k = 0; k < count; ++k) {
            const double a = static_cast<double>(otf[k].re);
            const double b = static_cast<double>(otf[k].im);
            const double c = static_cast<double>(spectrum[k].re);
            const double d = static_cast<double>(spectrum[k].im);
            const double t = b * (c - d);
            const float re = Rounded(c * (a - b) + t);
            const float im = Rounded(d * (a + b) + t);
            const double den = (a * a + static_cast<double>(noise)) + b * b;
            const ChComplex expected[2] = {{Rounded(static_cast<double>(re) * static_cast<double>(scale)),
                                            Rounded(static_cast<double>(im) * static_cast<double>(scale))},
                                           {Rounded(a / den), Rounded(b / -den)}};
            const ChComplex actual[2] = {work.Read(k), transfer.Read(k)};
            for (int pass = 0; pass < 2; ++pass) {
                ASSERT_EQ(std::pair(actual[pass].re, actual[pass].im), std::pair(expected[pass].re, expected[pass].im))
                    << "pass " << pass << ", element " << k << " of " << count;
            }
        }
        EXPECT_TRUE(work.GuardsIntact() && transfer.GuardsIntact());
    }
}

// Where whole passes end and the rest begins, which rounds in another way, shows on a value between two pixels.
TEST_P(SpectrumTest, FilterPacksThePlaneInOneCall) {
    for (const auto& [width, height] : {std::tuple(1, 1), {1, 40}, {16, 8}, {19, 3}, {37, 29}}) {
        const std::size_t count = Count(width, height);
        DFT_Buffer otf(static_cast<std::uint32_t>(count), 0);
        std::vector<ChComplex> parts(count, ChComplex{100.7f, 0.0f});
        std::fill_n(otf.m_Spectrum, count, ChComplex{1.007f, 0.0f});
        Plane expected(count);
        KernelTable.PackComplexToU8(parts.data(), expected.data(), static_cast<std::uint32_t>(count));
        GuardedBuffer<unsigned char> plane(count, 5);
        std::fill_n(plane.data(), count, std::uint8_t{100});
        ChInverseFilter(plane.data(), width, height, otf);
        EXPECT_TRUE(SameBytes(expected.data(), plane.data(), count)) << width << "x" << height;
        EXPECT_TRUE(plane.GuardsIntact());
        EXPECT_EQ(otf.m_Spectrum[count - 1].re, 1.007f);
    }
}

TEST_P(SpectrumTest, PowerSpectra) {
    // of all pixels; -1: noise
    for (const auto& [width, height, value] :
         {std::tuple(4, 4, 100), {7, 3, 0}, {1, 1, 0}, {1, 1, 1}, {3, 2, -1}, {17, 13, -1}, {32, 9, -1}}) {
        SCOPED_TRACE(testing::Message() << width << "x" << height << " of " << value);
        Plane source = Noise(width, height, 4);
        if (value >= 0) {
            std::fill(source.begin(), source.end(), static_cast<unsigned char>(value));
        }
        const spectrum_slow::WideLine wide = spectrum_slow::Spectrum(source, width, height);
        const double peak = std::log((static_cast<double>(wide[0].real() * wide[0].real()) + 1.0)); // a whole number
        GuardedBuffer<unsigned char> plane(source.size(), 1);
        std::memcpy(plane.data(), source.data(), source.size());
        ChShowPowerSpectrum(plane.data(), width, height);
        EXPECT_TRUE(plane.GuardsIntact());
        // Zero frequency at the top left, one count less than 255 where the float of the peak lies below it.
        const int first = peak > 0.0 ? static_cast<int>(static_cast<double>(Rounded(peak)) / peak * 255.0) : 0;
        EXPECT_TRUE(value != 100 || first == 254);
        EXPECT_EQ(plane.Read(0), first);
        for (std::size_t k = 1; k < source.size(); ++k) {
            const double share = peak > 0.0 ? std::log(1.0 + static_cast<double>(std::norm(wide[k]))) / peak : 0.0;
            ASSERT_NEAR(plane.Read(k), 255.0 * share - 0.5, value < 0 ? 0.51 : 0.5) << "pixel " << k;
        }
    }
}

// Blocks of rows, a last row without another, and vectors in rows of every rest; each class as the portable one.
TEST_P(SpectrumTest, RealPlanesThereAndBack) {
    for (const auto& [width, height] :
         {std::tuple(1, 1), {1, 7}, {2, 2}, {7, 1}, {3, 5}, {33, 4}, {64, 31}, {131, 70}}) {
        SCOPED_TRACE(testing::Message() << width << "x" << height);
        const Plane source = Noise(width, height, 6);
        const spectrum_slow::WideLine wide = spectrum_slow::Spectrum(source, width, height);
        const std::vector<float> samples(source.begin(), source.end());
        kernels::RealTransform transform(width, height);
        const auto columns = static_cast<std::size_t>(width / 2 + 1);
        ASSERT_EQ(transform.Count(), columns * static_cast<std::size_t>(height));
        GuardedBuffer<float> plane(samples.size(), 4);
        GuardedBuffer<ChComplex> spectrum(transform.Count(), 8);
        const auto run = [&] {
            std::copy(samples.begin(), samples.end(), plane.data());
            transform.Forward(plane.data(), spectrum.data());
            std::vector<ChComplex> forward(spectrum.data(), spectrum.data() + spectrum.size());
            transform.Backward(spectrum.data(), plane.data());
            return forward;
        };
        const std::vector<ChComplex> forward = run();
        const double tolerance = 2e-7 * 255.0 * std::sqrt(static_cast<double>(wide.size())) * 8;
        for (std::size_t k = 0; k < forward.size(); ++k) {
            const auto exact = wide[k / columns * static_cast<std::size_t>(width) + k % columns];
            ASSERT_NEAR(forward[k].re, static_cast<double>(exact.real()), tolerance) << k;
            ASSERT_NEAR(forward[k].im, static_cast<double>(exact.imag()), tolerance) << k;
        }
        const auto count = static_cast<float>(samples.size());
        for (std::size_t k = 0; k < samples.size(); ++k) {
            ASSERT_NEAR(plane.Read(k) / count, samples[k], 5e-4) << k;
        }
        EXPECT_TRUE(plane.GuardsIntact() && spectrum.GuardsIntact());
        const std::vector<float> restored(plane.data(), plane.data() + plane.size());
        const ForcedVectorClass portable(simd::VectorClass::Portable);
        const std::vector<ChComplex> expected = run();
        EXPECT_TRUE(SameBytes(expected.data(), forward.data(), forward.size()));
        EXPECT_TRUE(SameBytes(plane.data(), restored.data(), restored.size()));
    }
}

CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(SpectrumTest);

} // namespace
