#include "claribox/ChFunctions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <vector>

namespace {

struct Element {
    int row, col;
    float value;
};

double Sum(const ChMatrix<float>& matrix) {
    return std::accumulate(matrix.m_Data, matrix.m_Data + matrix.Count(), 0.0);
}

/// Every element that `elements` does not list must be exactly 0. The quoted values have four decimals.
void ExpectElements(const ChMatrix<float>& matrix, const std::vector<Element>& elements) {
    ChMatrix<float> expected(matrix.m_Rows, matrix.m_Cols);
    expected.Zero();
    for (const Element& element : elements) {
        expected.At(element.row, element.col) = element.value;
    }
    for (int i = 0; i < matrix.m_Rows; ++i) {
        for (int j = 0; j < matrix.m_Cols; ++j) {
            const float tolerance = expected.At(i, j) == 0.0f ? 0.0f : 5.1e-5f;
            EXPECT_NEAR(matrix.At(i, j), expected.At(i, j), tolerance) << "row " << i << ", column " << j;
        }
    }
}

/// FNV-1a over the bytes of the elements.
std::uint64_t Checksum(std::uint64_t hash, const ChMatrix<float>& matrix) {
    for (std::size_t k = 0; k < matrix.Count(); ++k) {
        unsigned char bytes[4];
        std::memcpy(bytes, matrix.m_Data + k, 4);
        for (const unsigned char byte : bytes) {
            hash = (hash ^ byte) * 0x100000001B3u;
        }
    }
    return hash;
}

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

TEST(PointSpreadTest, MotionRaysOfLengthThree) {
    struct Row {
        int degree;
        std::vector<Element> elements;
    };
    const std::vector<Element> right = {{3, 3, 1}, {3, 4, 0.8948f}, {3, 5, 0.6412f}, {3, 6, 0.3679f}};
    const Row rows[] = {
        {0, right},
        {360, right},
        {-360, right},
        {-540, right}, // the remainder of -180 stays negative, so that no half turn follows
        {90, {{3, 3, 1}, {2, 3, 0.8948f}, {1, 3, 0.6412f}, {0, 3, 0.3679f}}},
        {180, {{3, 3, 1}, {3, 2, 0.8948f}, {3, 1, 0.6412f}, {3, 0, 0.3679f}}},
        {270, {{3, 3, 1}, {4, 3, 0.8948f}, {5, 3, 0.6412f}, {6, 3, 0.3679f}}},
        {45, {{3, 3, 0.8948f}, {2, 4, 0.6412f}, {1, 5, 0.1690f}, {0, 6, 0.0622f}}},  // k = 1 overwrites the centre
        {135, {{3, 3, 0.9229f}, {2, 3, 0.7254f}, {1, 2, 0.2769f}, {0, 1, 0.1345f}}}, // steeper than at 45
        {10, {{3, 3, 0.8950f}, {3, 4, 0.6416f}, {3, 5, 0.3685f}, {3, 6, 0.1695f}}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << "degree " << row.degree);
        ChMatrix<float> psf;
        ChMakeMotionPSF(psf, 3, row.degree);
        ASSERT_EQ(psf.m_Rows, 7);
        ASSERT_EQ(psf.m_Cols, 7);
        ExpectElements(psf, row.elements);
    }
}

// The roundings to float and the value of PIF are part of the result. The checksum is that of a transcription of the
// ray's steps into Python, with each float rounded through struct.pack.
TEST(PointSpreadTest, MotionKernelsAgreeBitForBit) {
    std::uint64_t hash = 0xCBF29CE484222325u;
    ChMatrix<float> psf;
    for (const int length : {1, 2, 3, 5, 8, 13}) {
        for (int degree = -721; degree <= 721; ++degree) {
            ChMakeMotionPSF(psf, length, degree);
            hash = Checksum(hash, psf);
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
        for (std::size_t k = 0; row.length <= 0 && k < row.count; ++k) {
            EXPECT_EQ(psf.m_Data[k], 0.0f);
        }
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
        EXPECT_NEAR(Sum(psf), row.sum, 5e-5);
        for (int i = 0; i < row.size; ++i) {
            for (int j = 0; j < row.size; ++j) {
                const double area = SharedArea(j - row.size / 2, i - row.size / 2, row.radius);
                const double share = area / (3.1415925 * row.radius * row.radius);
                EXPECT_NEAR(psf.At(i, j), share, 2e-5) << i << ", " << j; // the slices err by about 1e-5 at the ends
            }
        }
    }
}

TEST(PointSpreadTest, CircleExamples) {
    ChMatrix<float> psf;
    ChMakeCirclePSF(psf, 1, 0.0);
    ExpectElements(psf, {{0, 0, 1}});
    ChMakeCirclePSF(psf, 4, 0.0);
    ExpectElements(psf, {{2, 2, 1}});
    ChMakeCirclePSF(psf, 3, 0.66);
    ExpectElements(psf, {{1, 1, 0.7241f}, {0, 1, 0.0690f}, {1, 0, 0.0690f}, {1, 2, 0.0690f}, {2, 1, 0.0690f}});
    ChMakeCirclePSF(psf, 7, 1.98);
    for (const Element& element :
         {Element{3, 3, 0.0812f}, Element{2, 3, 0.0812f}, Element{2, 2, 0.0795f}, Element{3, 5, 0.0372f},
          Element{2, 5, 0.0159f}, Element{5, 2, 0.0159f}, Element{1, 1, 0.0f}, Element{0, 3, 0.0f}}) {
        EXPECT_NEAR(psf.At(element.row, element.col), element.value, 5.1e-5) << element.row << ", " << element.col;
    }
    // Pins PIF: pi itself would give another float here.
    EXPECT_EQ(psf.At(3, 3), static_cast<float>(1.0 / (0x1.921FB4p+1 * (1.98 * 1.98))));
    EXPECT_NE(psf.At(3, 3), static_cast<float>(1.0 / (0x1.921FB6p+1 * (1.98 * 1.98))));
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
