#include "focus/TestKernels.h"

#include <claribox/ChFunctions.h>

#include <algorithm>
#include <array>
#include <random>
#include <utility>

namespace {

enum class Mirror { None, LeftRight, TopBottom, Both, AlmostBoth, BothAfterTruncation };

// A kernel of noise: 65536ths between `lowest` and `highest`, of which `percent` of 100 are not zero.
struct NoiseRow {
    const char* what;
    int rows, cols;
    int lowest, highest;
    Mirror mirror;
    int percent = 100;
};

constexpr int kUnit = 65536;
constexpr int kHuge = 30000 * kUnit; // products and sums wrap

constexpr NoiseRow kNoiseRows[] = {
    // Shapes.
    {"row", 1, 9, -kUnit, kUnit, Mirror::None},
    {"column", 9, 1, -kUnit, kUnit, Mirror::None},
    {"wide", 3, 9, -kUnit, kUnit, Mirror::None},
    {"tall", 9, 3, -kUnit, kUnit, Mirror::None},
    {"very wide", 3, 41, 1, kUnit, Mirror::Both},
    {"very tall", 41, 3, 1, kUnit, Mirror::Both},
    {"wide mirrored", 5, 9, -9000, 32767, Mirror::Both},
    {"tall mirrored", 11, 3, -9000, 32767, Mirror::Both},
    {"mirrored row", 1, 7, -9000, 32767, Mirror::Both},
    {"mirrored column", 7, 1, -9000, 32767, Mirror::Both},
    {"even", 4, 4, -kUnit, kUnit, Mirror::None},
    {"even mirrored", 4, 6, 1, kUnit, Mirror::Both},
    {"even by odd", 2, 5, -kUnit, kUnit, Mirror::Both},
    {"odd by even", 5, 8, -kUnit, kUnit, Mirror::Both},
    {"single 1", 1, 1, kUnit, kUnit, Mirror::None},
    {"single -1", 1, 1, -kUnit, -kUnit, Mirror::None},
    {"single 65536th", 1, 1, 1, 1, Mirror::None},
    {"single 30000", 1, 1, kHuge, kHuge, Mirror::None},
    {"box of side 3", 3, 3, kUnit / 3, kUnit / 3, Mirror::Both},
    {"box of side 16", 16, 16, kUnit / 16, kUnit / 16, Mirror::Both},
    // Symmetries: a form that folds samples needs all of one, and must not take a part of it for the whole.
    {"mirrored left to right", 7, 7, -20000, 32767, Mirror::LeftRight},
    {"mirrored top to bottom", 7, 7, -20000, 32767, Mirror::TopBottom},
    {"mirrored but for one 65536th", 7, 7, -20000, 32000, Mirror::AlmostBoth},
    {"mirrored after truncation", 7, 7, -20000, 32000, Mirror::BothAfterTruncation},
    // Coefficients about the limits of 16 bits, with and without a constant part of 65536.
    {"16 bits", 5, 5, -32768, 32767, Mirror::Both},
    {"just above 16 bits", 5, 5, 32766, 32769, Mirror::Both},
    {"just below 16 bits", 5, 5, -32770, -32766, Mirror::Both},
    {"constant part and 16 bits", 9, 9, 32768, 98303, Mirror::Both},
    {"constant part and just more", 9, 9, 98300, 98306, Mirror::Both},
    {"16 bits but for 32768", 5, 5, 0, 32768, Mirror::Both},
    {"constant part and 16 bits but for 98304", 5, 5, 40000, 98304, Mirror::Both},
    {"17 bits", 9, 9, -65536, 65535, Mirror::Both},
    {"about a unit", 7, 7, 65534, 65538, Mirror::Both},
    {"32768 alone", 5, 5, -32768, -32768, Mirror::Both},
    {"extremes of 32 bits", 5, 5, -kHuge, kHuge, Mirror::None},
    {"extremes of 32 bits, mirrored", 5, 5, -kHuge, kHuge, Mirror::Both},
    {"24 bits", 9, 9, -(1 << 23), 1 << 23, Mirror::None},
    // Divisors of both signs and of all sizes.
    {"negative", 5, 5, -kUnit, -1, Mirror::None},
    {"negative mirrored", 5, 5, -kUnit, -1, Mirror::Both},
    {"tiny", 5, 5, 1, 3, Mirror::None},
    {"tiny mirrored", 5, 5, 1, 3, Mirror::Both},
    {"tiny negative", 3, 5, -3, -1, Mirror::Both},
    // Kernels of few taps, with whole rows and columns of zeros.
    {"sparse", 31, 31, -kUnit, kUnit, Mirror::None, 2},
    {"sparse mirrored", 31, 31, -9000, 32767, Mirror::Both, 2},
    {"sparse extremes", 15, 15, -kHuge, kHuge, Mirror::None, 6},
    {"dense", 31, 31, -kUnit, kUnit, Mirror::None},
    {"dense mirrored", 31, 31, -9000, 32767, Mirror::Both},
};

ChMatrix<float> NoiseKernel(const NoiseRow& row) {
    std::mt19937 generator(static_cast<std::uint32_t>(&row - kNoiseRows) + 1);
    const auto below = [&generator](std::int64_t limit) { return static_cast<std::int64_t>(generator()) % limit; };
    std::vector<int> coefficients;
    for (int k = 0; k < row.rows * row.cols; ++k) {
        const auto value = row.lowest + below(static_cast<std::int64_t>(row.highest) - row.lowest + 1);
        coefficients.push_back(below(100) < row.percent ? static_cast<int>(value) : 0);
    }
    const auto at = [&](int i, int j) -> int& { return coefficients[static_cast<std::size_t>(i * row.cols + j)]; };
    // Every window of the border holds the middle, which thus keeps a kernel of many zeros from weighing nothing.
    at(row.rows / 2, row.cols / 2) = row.highest;
    for (int i = 0; i < row.rows; ++i) {
        for (int j = 0; j < row.cols; ++j) {
            const int mirrorI = row.mirror == Mirror::LeftRight ? i : std::max(i, row.rows - 1 - i);
            const int mirrorJ = row.mirror == Mirror::TopBottom ? j : std::max(j, row.cols - 1 - j);
            at(i, j) = row.mirror == Mirror::None ? at(i, j) : at(mirrorI, mirrorJ);
        }
    }
    if (row.mirror == Mirror::AlmostBoth) {
        ++at(row.rows - 1, row.cols - 1);
    }
    ChMatrix<float> kernel = FixedPointKernel(row.rows, row.cols, coefficients);
    if (row.mirror == Mirror::BothAfterTruncation) {
        float& corner = kernel.At(0, 0);
        corner += corner < 0.0f ? -0x1p-17f : 0x1p-17f;
    }
    return kernel;
}

} // namespace

ChMatrix<float> BlurKernel(int radius) {
    ChMatrix<float> kernel;
    ChMakeGaussianPSF(kernel, 2 * radius + 1, 2 * radius + 1, 2.0 * radius);
    return kernel;
}

ChMatrix<float> MotionKernel(int length, int degree) {
    ChMatrix<float> kernel;
    ChMakeMotionPSF(kernel, length, degree);
    return kernel;
}

float DeconvNoise(int radius) {
    constexpr std::array<float, 11> table = {0.0f, 0.01f, 0.1f, 0.14f, 0.2f, 0.24f, 0.24f, 0.24f, 0.24f, 0.24f, 0.24f};
    return table.at(static_cast<std::size_t>(radius));
}

ChMatrix<float> DeBlurKernel(int radius) {
    ChMatrix<float> kernel;
    ChMakeCirclePSF(kernel, 2 * radius + 1, 0.66 * radius);
    ChMakeDeconvMatrix(kernel, 0.5f, DeconvNoise(radius));
    return kernel;
}

ChMatrix<float> FixedPointKernel(int rows, int cols, const std::vector<int>& coefficients) {
    ChMatrix<float> kernel(rows, cols);
    std::transform(coefficients.begin(), coefficients.end(), kernel.m_Data,
                   [](int c) { return static_cast<float>(c / 65536.0); });
    return kernel;
}

std::vector<TestKernel> AllTestKernels() {
    std::vector<TestKernel> kernels;
    for (const int radius : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 50}) {
        kernels.push_back({"blur of radius " + std::to_string(radius), BlurKernel(radius)});
    }
    for (int radius = 1; radius <= 10; ++radius) {
        kernels.push_back({"deblur of radius " + std::to_string(radius), DeBlurKernel(radius)});
    }
    std::vector<std::pair<int, int>> motions = {{1, 0}, {2, 90}, {3, 10}, {5, 225}, {15, 30}, {15, 10}, {25, 45}};
    for (const int degree : {0, 10, 45, 90, 91, 135, 180, 200, 270, 315, 359, -30, -540}) {
        motions.emplace_back(7, degree);
    }
    for (const auto& [length, degree] : motions) {
        kernels.push_back({"motion of length " + std::to_string(length) + ", degree " + std::to_string(degree),
                           MotionKernel(length, degree)});
    }
    // With a divisor of 1 or -1 the quotient is the whole sum and reaches the ends of 32 bits.
    kernels.push_back({"divisor 1", FixedPointKernel(1, 3, {8000000, 1, -8000000})});
    kernels.push_back({"divisor -1", FixedPointKernel(3, 1, {8000000, -1, -8000000})});
    kernels.push_back({"edges truncate to 0", FixedPointKernel(3, 3, {0, 0, 0, 0, kUnit, 0, 0, 0, 0})});
    for (float* c = kernels.back().matrix.m_Data; c < kernels.back().matrix.m_Data + 9; ++c) {
        *c = *c == 0.0f ? 0.00001f : *c;
    }
    for (const NoiseRow& row : kNoiseRows) {
        kernels.push_back({row.what, NoiseKernel(row)});
    }
    return kernels;
}
