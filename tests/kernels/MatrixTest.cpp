#include "claribox/ChMatrix.h"

#include "common/GuardedBuffer.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

int Silent(const char*, ...) {
    return 0;
}

/// A matrix of small whole numbers, all different where it matters.
template <typename T = float>
ChMatrix<T> Numbered(int rows, int cols, int first = 1) {
    ChMatrix<T> matrix(rows, cols);
    for (int k = 0; k < rows * cols; ++k) {
        const auto number = static_cast<float>(first + k);
        if constexpr (std::is_same_v<T, ChComplex>) {
            matrix.m_Data[k] = {number, -number};
        } else {
            matrix.m_Data[k] = number;
        }
    }
    return matrix;
}

std::vector<float> Elements(const ChMatrix<float>& matrix) {
    return {matrix.m_Data, matrix.m_Data + matrix.Count()};
}

template <typename T>
void CheckShift(int rows, int cols, int dx, int dy) {
    const ChMatrix<T> before = Numbered<T>(rows, cols);
    ChMatrix<T> expected(rows, cols);
    for (int k = 0; k < rows * cols; ++k) {
        expected.At((k / cols + dy + rows) % rows, (k % cols + dx + cols) % cols) = before.m_Data[k];
    }
    ChMatrix<T> shifted(before);
    shifted.m_Print = Silent;
    shifted.CircShift(dx, dy);
    EXPECT_EQ(shifted.m_Print, Silent);
    ASSERT_TRUE(SameBytes(expected.m_Data, shifted.m_Data, expected.Count(), static_cast<std::size_t>(cols)))
        << rows << " by " << cols << " shifted by " << dx << ", " << dy;
}

} // namespace

TEST(MatrixTest, LayoutIsThatOfTheBinaryInterface) {
    // One virtual table pointer, then the fields in order.
    static_assert(std::is_polymorphic_v<ChMatrix<float>> && std::has_virtual_destructor_v<ChMatrix<float>>);
    const ChMatrix<float> matrix;
    const auto offset = [&](const void* field) {
        return static_cast<const char*>(field) - reinterpret_cast<const char*>(&matrix);
    };
    const auto word = static_cast<std::ptrdiff_t>(sizeof(void*));
    EXPECT_EQ(std::pair(offset(&matrix.m_Data), offset(&matrix.m_Rows)), std::pair(word, 2 * word));
    EXPECT_EQ(std::pair(offset(&matrix.m_Cols), offset(&matrix.m_Print)), std::pair(2 * word + 4, 2 * word + 8));
    EXPECT_EQ(matrix.m_Data, nullptr);
    EXPECT_EQ(matrix.m_Rows + matrix.m_Cols, 0);
    EXPECT_EQ(matrix.m_Print, &std::printf);
}

TEST(MatrixTest, CopiesAreDeepAndCarryThePrinter) {
    ChMatrix<float> source = Numbered(3, 4);
    source.m_Print = Silent;
    const ChMatrix<float> copy(source);
    ChMatrix<float> assigned = Numbered(2, 2);
    assigned = source;
    source.Zero();
    EXPECT_EQ(Elements(source), std::vector<float>(12, 0.0f));
    for (const ChMatrix<float>* matrix : {&copy, &std::as_const(assigned)}) {
        EXPECT_EQ(Elements(*matrix), Elements(Numbered(3, 4)));
        EXPECT_EQ(matrix->m_Cols, 4);
        EXPECT_EQ(matrix->m_Print, Silent);
    }
    assigned = ChMatrix<float>();
    EXPECT_EQ(assigned.Count(), 0u);
    ChMatrix<float> negative(-3, -4); // a positive product of two negative sizes is no size
    negative.Zero();
    EXPECT_EQ(negative.Count(), 0u);
    EXPECT_EQ(negative.m_Rows, -3);
}

TEST(MatrixTest, NormalizeDividesByTheSumOfAll) {
    struct Row {
        std::vector<float> elements;
        std::vector<float> normalised;
    };
    const float tiny = 0x1p-53f;
    const Row rows[] = {
        {{1, 2, 5}, {0.125f, 0.25f, 0.625f}},
        {{1, 1e-20f}, {1, 0}},
        {{1, 0x1p-52f, tiny}, {1, 0x1p-52f, 0}}, // the threshold itself stays
        {{4, -1, 1}, {1, 0, 0.25f}},             // what is dropped has counted in the sum
        {{3, NAN, 1}, {NAN, 0, NAN}},            // a NaN element becomes 0, but spoils the sum
        {{NAN, 3, 1}, {0, 0, 0}},                // and from the first place the maximum
        {{0, 0}, {NAN, NAN}},
        {{-2, -2}, {0, 0}}, // below a negative threshold
        {{0x1p30f, 1, 0x1p30f}, {0.5f, 0x1p-31f, 0.5f}},
    };
    for (const Row& row : rows) {
        const int count = static_cast<int>(row.elements.size());
        ChMatrix<float> matrix(1, count);
        std::copy(row.elements.begin(), row.elements.end(), matrix.m_Data);
        matrix.Normalize();
        for (int j = 0; j < count; ++j) {
            const float expected = row.normalised[static_cast<std::size_t>(j)];
            EXPECT_TRUE(std::isnan(expected) ? std::isnan(matrix.At(0, j)) : matrix.At(0, j) == expected)
                << testing::PrintToString(row.elements) << " gives " << testing::PrintToString(Elements(matrix));
        }
    }
}

TEST(MatrixTest, CorrelateEqualsItsDefinition) {
    using Row = std::tuple<int, int, int, int>;
    for (const auto& [rows, cols, kernelRows, kernelCols] :
         {Row(5, 5, 3, 3), Row(7, 4, 2, 4), Row(1, 1, 5, 5), Row(3, 2, 9, 1), Row(2, 6, 1, 13), Row(4, 5, 1, 1),
          Row(3, 3, 0, 0), Row(0, 3, 3, 3), Row(9, 8, 4, 2)}) {
        SCOPED_TRACE(testing::Message() << rows << "x" << cols << " by " << kernelRows << "x" << kernelCols);
        const ChMatrix<float> before = Numbered(rows, cols);
        const ChMatrix<float> kernel = Numbered(kernelRows, kernelCols, -3);
        ChMatrix<float> result(before);
        const float* const block = result.m_Data;
        result.Correlate(kernel);
        EXPECT_EQ(result.m_Data, block);
        for (int i = 0; i < rows; ++i) {
            for (int j = 0; j < cols; ++j) {
                float sum = 0; // whole numbers below 2^24: exact
                for (int y = 0; y < rows; ++y) {
                    for (int x = 0; x < cols; ++x) {
                        const int ki = y - i + kernelRows / 2;
                        const int kj = x - j + kernelCols / 2;
                        if (ki >= 0 && ki < kernelRows && kj >= 0 && kj < kernelCols) {
                            sum += kernel.At(ki, kj) * before.At(y, x);
                        }
                    }
                }
                ASSERT_EQ(result.At(i, j), sum) << i << ", " << j;
            }
        }
    }
}

TEST(MatrixTest, CorrelateSumsInDoubleAndTakesItself) {
    ChMatrix<float> row = Numbered(1, 3);
    row.At(0, 0) = 0x1p30f;
    row.At(0, 2) = -0x1p30f;
    ChMatrix<float> ones(1, 3);
    std::fill_n(ones.m_Data, 3, 1.0f);
    row.Correlate(ones);
    EXPECT_EQ(row.At(0, 1), 2.0f); // float sums would give 0
    ones.Correlate(ones);          // the kernel may be the matrix itself
    EXPECT_EQ(Elements(ones), (std::vector<float>{2, 3, 2}));
}

TEST(MatrixTest, CircShiftEqualsIndicesModuloTheSize) {
    for (const auto& [rows, cols] : {std::pair(1, 1), {1, 5}, {3, 1}, {2, 4}, {4, 3}, {3, 5}}) {
        for (int dy = -rows; dy <= rows; ++dy) {
            for (int dx = -cols; dx <= cols; ++dx) {
                CheckShift<float>(rows, cols, dx, dy);
                CheckShift<ChComplex>(rows, cols, dx, dy);
            }
        }
    }
}

TEST(MatrixTest, CropAndPadKeepTheIndices) {
    struct Row {
        int x0, y0, x1, y1;
        std::vector<float> elements;
    };
    for (const Row& row : {Row{0, 0, 4, 3, Elements(Numbered(3, 4))}, Row{1, 1, 3, 3, {6, 7, 10, 11}},
                           Row{3, 0, 4, 1, {4}}, Row{2, 0, 2, 3, {}}}) {
        ChMatrix<float> part = Numbered(3, 4);
        part.m_Print = Silent;
        part.Crop(row.x0, row.y0, row.x1, row.y1);
        EXPECT_EQ(Elements(part), row.elements);
        EXPECT_EQ(std::pair(part.m_Cols, part.m_Rows), std::pair(row.x1 - row.x0, row.y1 - row.y0));
        EXPECT_EQ(part.m_Print, &std::printf);
    }
    ChMatrix<float> padded = Numbered(2, 2);
    padded.m_Print = Silent;
    padded.ZeroPad(1, 2);
    EXPECT_EQ(Elements(padded), (std::vector<float>{1, 2, 0, 0, 3, 4, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(padded.m_Print, &std::printf);
}

TEST(MatrixTest, WideningReusesABlockOfTheSameSize) {
    const ChMatrix<float> source = Numbered(2, 3, 7);
    ChMatrix<double> wide(2, 3);
    wide.m_Print = Silent;
    const double* const block = wide.m_Data;
    ChMatrixToDouble(wide, source);
    EXPECT_EQ(wide.m_Data, block);
    EXPECT_EQ(wide.m_Print, Silent);
    EXPECT_EQ(wide.At(1, 2), 12.0);
    ChMatrix<double> other(3, 2); // as many elements in another shape
    ChMatrixToDouble(other, source);
    EXPECT_EQ(other.m_Rows, 2);
    EXPECT_EQ(other.At(0, 2), 9.0);
}
