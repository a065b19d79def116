#include "claribox/ChFunctions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <tuple>

namespace {

/// The area that a disk about the origin shares with the unit square about (dx, dy), by slices of the square.
double SharedArea(double dx, double dy, double radius) {
    constexpr int slices = 4000;
    double area = 0.0;
    for (int k = 0; k < slices; ++k) {
        const double x = dx - 0.5 + (k + 0.5) / slices;
        const double squared = radius * radius - x * x;
        const double height = squared > 0.0 ? std::sqrt(squared) : 0.0;
        area += std::max(0.0, std::min(dy + 0.5, height) - std::max(dy - 0.5, -height)) / slices;
    }
    return area;
}

} // namespace

TEST(PointSpreadTest, GaussianFallsToOneHalfAtSigma) {
    for (const auto& [rows, cols, sigma] :
         {std::tuple(3, 3, 2.0), {2, 2, 1.0}, {5, 8, 3.5}, {1, 21, 20.0}, {7, 7, -2.0}}) {
        ChMatrix<float> psf;
        ChMakeGaussianPSF(psf, rows, cols, sigma);
        ASSERT_EQ(std::pair(psf.m_Rows, psf.m_Cols), std::pair(rows, cols));
        for (int i = 0; i < rows; ++i) {
            for (int j = 0; j < cols; ++j) {
                const double distance = std::hypot(i - (rows - 1) / 2.0, j - (cols - 1) / 2.0);
                const double bell = std::exp2(-std::pow(distance / sigma, 2));
                EXPECT_FLOAT_EQ(psf.At(i, j), static_cast<float>(bell)) << rows << " by " << cols;
            }
        }
    }
    ChMatrix<float> psf;
    ChMakeGaussianPSF(psf, 3, 3, 0.0);
    EXPECT_TRUE(std::isnan(psf.At(1, 1)));
    EXPECT_EQ(psf.At(0, 1), 0.0f);
    ChMakeGaussianPSF(psf, -1, 3, 1.0);
    EXPECT_EQ(psf.Count(), 0u);
}

// The roundings to float, the value of PIF, the steeper run at 135 degrees than at 45 and the remainders of negative
// degrees are part of the result. The checksum is that of a transcription of the ray's steps into Python, with each
// float rounded through struct.pack.
TEST(PointSpreadTest, MotionKernelsAgreeBitForBit) {
    std::uint64_t hash = 0xCBF29CE484222325u; // FNV-1a over the bytes of the elements
    ChMatrix<float> psf;
    for (const int length : {1, 2, 3, 5, 8, 13}) {
        for (int degree = -721; degree <= 721; ++degree) {
            ChMakeMotionPSF(psf, length, degree);
            const auto* const bytes = reinterpret_cast<const unsigned char*>(psf.m_Data);
            for (std::size_t k = 0; k < 4 * psf.Count(); ++k) {
                hash = (hash ^ bytes[k]) * 0x100000001B3u;
            }
        }
    }
    EXPECT_EQ(hash, 0xE6A4F2D440471528u);
}

TEST(PointSpreadTest, MotionTakesAnyLengthAndDegree) {
    using Row = std::tuple<int, int, std::size_t>;
    for (const auto& [length, degree, count] :
         {Row(0, 0, 1), Row(0, 77, 1), Row(-1, 0, 0), Row(-1, 45, 0), Row(-9, 200, 0), Row(INT_MIN, 0, 1),
          Row(4, INT_MAX, 81), Row(4, INT_MIN, 81)}) {
        SCOPED_TRACE(testing::Message() << "length " << length << ", degree " << degree);
        ChMatrix<float> psf;
        ChMakeMotionPSF(psf, length, degree);
        EXPECT_EQ(psf.Count(), count);
        EXPECT_TRUE(count != 1 || psf.m_Data[0] == 0.0f);
    }
}

TEST(PointSpreadTest, CircleElementsHoldTheSharedArea) {
    using Row = std::tuple<int, double, double>;
    for (const auto& [size, radius, sum] :
         {Row(3, 0.66, 1.0), Row(7, 1.98, 1), Row(5, 3.0, 0.8408), Row(21, 6.6, 1), Row(6, 1.7, 1), Row(1, 0.3, 1),
          Row(5, 0.5, 1), Row(5, 1.5, 1), Row(9, 2.5, 1), Row(4, 100.0, 16 / 31415.925)}) {
        SCOPED_TRACE(testing::Message() << "size " << size << ", radius " << radius);
        ChMatrix<float> psf;
        ChMakeCirclePSF(psf, size, radius);
        ASSERT_EQ(psf.Count(), static_cast<std::size_t>(size) * static_cast<std::size_t>(size));
        EXPECT_NEAR(std::accumulate(psf.m_Data, psf.m_Data + psf.Count(), 0.0), sum, 5e-5);
        for (int i = 0; i < size; ++i) {
            for (int j = 0; j < size; ++j) {
                const double area = SharedArea(j - size / 2, i - size / 2, radius);
                const double share = area / (3.1415925 * radius * radius);
                EXPECT_NEAR(psf.At(i, j), share, 2e-5) << i << ", " << j; // the slices err by about 1e-5 at the ends
            }
        }
    }
}

TEST(PointSpreadTest, CirclesWithoutAreaOrEnd) {
    ChMatrix<float> psf;
    for (const int size : {1, 4}) {
        ChMakeCirclePSF(psf, size, 0.0);
        EXPECT_EQ(psf.At(size / 2, size / 2), 1.0f);
        EXPECT_EQ(std::count(psf.m_Data, psf.m_Data + psf.Count(), 0.0f), size * size - 1);
    }
    // Pins PIF: pi itself would give another float here.
    ChMakeCirclePSF(psf, 7, 1.98);
    EXPECT_EQ(psf.At(3, 3), static_cast<float>(1.0 / (0x1.921FB4p+1 * (1.98 * 1.98))));
    EXPECT_NE(psf.At(3, 3), static_cast<float>(1.0 / (0x1.921FB6p+1 * (1.98 * 1.98))));
    EXPECT_EQ(psf.At(1, 1), 0.0f);
    for (const double radius : {HUGE_VAL, std::nan("")}) {
        ChMakeCirclePSF(psf, 3, radius);
        EXPECT_TRUE(std::isnan(psf.At(1, 1))) << radius;
    }
    ChMakeCirclePSF(psf, -3, 1.0);
    EXPECT_EQ(psf.Count(), 0u);
}

TEST(PointSpreadTest, CorrelationTakesColumnsFirst) {
    for (const auto& [cols, rows, base, offset] :
         {std::tuple(3, 5, 0.5, 0.0), {4, 2, 0.9, -0.25}, {1, 1, 0.0, 3.0}, {81, 81, 0.5, 0.0}}) {
        ChMatrix<float> corr;
        ChMakeCorrecation(corr, cols, rows, base, offset);
        ASSERT_EQ(std::pair(corr.m_Rows, corr.m_Cols), std::pair(rows, cols));
        EXPECT_EQ(corr.At(rows / 2, cols / 2), static_cast<float>(1.0 + offset));
        for (int i = 0; i < rows; ++i) {
            for (int j = 0; j < cols; ++j) {
                const double distance = std::hypot(i - rows / 2, j - cols / 2);
                EXPECT_FLOAT_EQ(corr.At(i, j), static_cast<float>(std::pow(base, distance) + offset));
            }
        }
    }
}
