#include "claribox/ChFunctions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <numeric>

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
    struct Row {
        int rows, cols;
        double sigma;
    };
    for (const Row& row : {Row{3, 3, 2.0}, Row{2, 2, 1.0}, Row{5, 8, 3.5}, Row{1, 21, 20.0}, Row{7, 7, -2.0}}) {
        ChMatrix<float> psf;
        ChMakeGaussianPSF(psf, row.rows, row.cols, row.sigma);
        ASSERT_EQ(psf.m_Rows, row.rows);
        ASSERT_EQ(psf.m_Cols, row.cols);
        for (int i = 0; i < row.rows; ++i) {
            for (int j = 0; j < row.cols; ++j) {
                const double distance = std::hypot(i - (row.rows - 1) / 2.0, j - (row.cols - 1) / 2.0);
                const double bell = std::exp2(-std::pow(distance / row.sigma, 2));
                EXPECT_FLOAT_EQ(psf.At(i, j), static_cast<float>(bell)) << row.rows << " by " << row.cols;
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
    struct Row {
        int length, degree;
        std::size_t count;
    };
    for (const Row& row : {Row{0, 0, 1}, Row{0, 77, 1}, Row{-1, 0, 0}, Row{-1, 45, 0}, Row{-9, 200, 0},
                           Row{INT_MIN, 0, 1}, Row{4, INT_MAX, 81}, Row{4, INT_MIN, 81}}) {
        SCOPED_TRACE(testing::Message() << "length " << row.length << ", degree " << row.degree);
        ChMatrix<float> psf;
        ChMakeMotionPSF(psf, row.length, row.degree);
        EXPECT_EQ(psf.Count(), row.count);
        EXPECT_TRUE(row.count != 1 || psf.m_Data[0] == 0.0f);
    }
}

TEST(PointSpreadTest, CircleElementsHoldTheSharedArea) {
    struct Row {
        int size;
        double radius;
        double sum;
    };
    for (const Row& row :
         {Row{3, 0.66, 1}, Row{7, 1.98, 1}, Row{5, 3.0, 0.8408}, Row{21, 6.6, 1}, Row{6, 1.7, 1}, Row{1, 0.3, 1},
          Row{5, 0.5, 1}, Row{5, 1.5, 1}, Row{9, 2.5, 1}, Row{4, 100.0, 16 / 31415.925}}) {
        SCOPED_TRACE(testing::Message() << "size " << row.size << ", radius " << row.radius);
        ChMatrix<float> psf;
        ChMakeCirclePSF(psf, row.size, row.radius);
        ASSERT_EQ(psf.Count(), static_cast<std::size_t>(row.size) * static_cast<std::size_t>(row.size));
        EXPECT_NEAR(std::accumulate(psf.m_Data, psf.m_Data + psf.Count(), 0.0), row.sum, 5e-5);
        for (int i = 0; i < row.size; ++i) {
            for (int j = 0; j < row.size; ++j) {
                const double area = SharedArea(j - row.size / 2, i - row.size / 2, row.radius);
                const double share = area / (3.1415925 * row.radius * row.radius);
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
    struct Row {
        int cols, rows;
        double base, offset;
    };
    for (const Row& row : {Row{3, 5, 0.5, 0.0}, Row{4, 2, 0.9, -0.25}, Row{1, 1, 0.0, 3.0}, Row{81, 81, 0.5, 0.0}}) {
        ChMatrix<float> corr;
        ChMakeCorrecation(corr, row.cols, row.rows, row.base, row.offset);
        ASSERT_EQ(corr.m_Rows, row.rows);
        ASSERT_EQ(corr.m_Cols, row.cols);
        EXPECT_EQ(corr.At(row.rows / 2, row.cols / 2), static_cast<float>(1.0 + row.offset));
        for (int i = 0; i < row.rows; ++i) {
            for (int j = 0; j < row.cols; ++j) {
                const double distance = std::hypot(i - row.rows / 2, j - row.cols / 2);
                EXPECT_FLOAT_EQ(corr.At(i, j), static_cast<float>(std::pow(row.base, distance) + row.offset));
            }
        }
    }
}
