// The spatial operations give the same bytes on every processor and in both widths. The sums pinned here were taken
// once from the 64-bit build; that the bytes are right is for the other tests to say.
#include "focus/QuantisedKernel.h"

#include <claribox/CImageFocus.h>
#include <claribox/ChFunctions.h>

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace {

// FNV-1a (Fowler, Noll and Vo) over 32-bit words.
class Checksum {
public:
    void Add(std::uint32_t word) { m_sum = (m_sum ^ word) * 16777619u; }
    void Add(const focus::QuantisedKernel& kernel) {
        for (int i = 0; i < kernel.Rows(); ++i) {
            for (int j = 0; j < kernel.Cols(); ++j) {
                Add(static_cast<std::uint32_t>(kernel.At(i, j)));
            }
        }
    }
    std::uint32_t Sum() const { return m_sum; }

private:
    std::uint32_t m_sum = 2166136261u;
};

std::uint32_t BlurKernels() {
    Checksum checksum;
    ChMatrix<float> kernel;
    for (int radius = 1; radius <= 50; ++radius) {
        ChMakeGaussianPSF(kernel, 2 * radius + 1, 2 * radius + 1, 2.0 * radius);
        checksum.Add(focus::QuantisedKernel(kernel));
    }
    return checksum.Sum();
}

std::uint32_t MotionKernels() {
    Checksum checksum;
    ChMatrix<float> kernel;
    for (const int length : {1, 2, 5, 15, 40}) {
        for (int degree = -30; degree < 360; ++degree) {
            ChMakeMotionPSF(kernel, length, degree);
            checksum.Add(focus::QuantisedKernel(kernel));
        }
    }
    return checksum.Sum();
}

std::uint32_t RestorationKernels() {
    Checksum checksum;
    ChMatrix<float> kernel;
    constexpr float noise[10] = {0.01f, 0.1f, 0.14f, 0.2f, 0.24f, 0.24f, 0.24f, 0.24f, 0.24f, 0.24f};
    for (int radius = 1; radius <= 10; ++radius) {
        ChMakeCirclePSF(kernel, 2 * radius + 1, 0.66 * radius);
        ChMakeDeconvMatrix(kernel, 0.5f, noise[radius - 1]);
        checksum.Add(focus::QuantisedKernel(kernel));
    }
    return checksum.Sum();
}

std::uint32_t Pictures() {
    constexpr int kWidth = 83;
    constexpr int kHeight = 61;
    Checksum checksum;
    std::mt19937 generator(7);
    std::vector<unsigned char> source(3 * kWidth * kHeight);
    for (unsigned char& byte : source) {
        byte = static_cast<unsigned char>(generator());
    }
    for (const auto operation : {&CImageFocus::Blur, &CImageFocus::MotionBlur, &CImageFocus::DeBlur}) {
        for (int radius = 1; radius <= 10; ++radius) {
            CImageFocus focus;
            focus.SetSize(kWidth, kHeight);
            focus.SetRadius(radius);
            focus.SetMotionLength(2 * radius);
            focus.SetMotionDegree(37 * radius);
            std::vector<unsigned char> pixels = source;
            (focus.*operation)(pixels.data(), FoPixelFmt_BGR24, 3 * kWidth);
            for (const unsigned char byte : pixels) {
                checksum.Add(byte);
            }
        }
    }
    return checksum.Sum();
}

TEST(SameBytes, OnEveryProcessorAndInBothWidths) {
    const struct {
        const char* what;
        std::uint32_t (*sum)();
        std::uint32_t expected;
    } rows[] = {{"blur kernels", BlurKernels, 3128289373u},
                {"motion kernels", MotionKernels, 225009971u},
                {"restoration kernels", RestorationKernels, 140243491u},
                {"pictures", Pictures, 3480085890u}};
    for (const auto& row : rows) {
        EXPECT_EQ(row.sum(), row.expected) << row.what;
    }
}

} // namespace
