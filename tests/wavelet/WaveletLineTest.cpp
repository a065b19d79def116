// Single lines: how they go on beyond their ends, and the filters along them.
#include "common/GuardedBuffer.h"
#include "common/VectorClassTest.h"
#include "reference/wavelet_slow.h"
#include "wavelet/FilterSets.h"
#include "wavelet/WaveletTransform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

namespace {

// A line 1 2 3 ... between margins of four cells, which hold 9 before.
struct ExtensionRow {
    int size;
    int leftKind; // 0: periodic
    int rightKind;
    int sign;
    std::vector<float> left;
    std::vector<float> right;
};

TEST(WaveletExtension, DrawnAsNumbers) {
    const ExtensionRow rows[] = {
        {4, 1, 1, 1, {3, 4, 3, 2}, {3, 2, 1, 2}},          {4, 2, 2, 1, {4, 3, 2, 1}, {4, 3, 2, 1}},
        {4, 2, 1, 1, {4, 3, 2, 1}, {3, 2, 1, 1}},          {4, 1, 2, 1, {4, 4, 3, 2}, {4, 3, 2, 1}},
        {4, 2, 2, -1, {-4, -3, -2, -1}, {-4, -3, -2, -1}}, {4, 2, 1, -1, {-4, -3, -2, -1}, {0, -4, -3, -2}},
        {4, 1, 2, -1, {-3, -2, -1, 0}, {-4, -3, -2, -1}},  {4, 1, 1, -1, {-3, -2, -1, 0}, {0, -4, -3, -2}},
        {3, 2, 1, 1, {2, 3, 2, 1}, {2, 1, 1, 2}},          {2, 1, 1, 1, {1, 2, 1, 2}, {1, 2, 1, 2}},
        {2, 2, 2, -1, {1, 2, -2, -1}, {-2, -1, 1, 2}}, // beyond one image it repeats, without the sign
        {1, 2, 2, 1, {1, 1, 1, 1}, {1, 1, 1, 1}},          {1, 2, 1, -1, {-1, 1, 0, -1}, {0, -1, 1, 0}},
        {1, 1, 1, 1, {9, 9, 9, 9}, {9, 9, 9, 9}}, // a period of 0: the margins stay
        {4, 0, 0, 1, {1, 2, 3, 4}, {1, 2, 3, 4}},          {3, 0, 0, 1, {3, 1, 2, 3}, {1, 2, 3, 1}},
        {1, 0, 0, 1, {1, 1, 1, 1}, {1, 1, 1, 1}},
    };
    const WaveletTransform transform(FilterSetDaub4);
    ASSERT_EQ(transform.margin, 4);
    for (const ExtensionRow& row : rows) {
        std::vector<float> expected(static_cast<std::size_t>(row.size));
        std::iota(expected.begin(), expected.end(), 1.0f);
        expected.insert(expected.begin(), row.left.begin(), row.left.end());
        expected.insert(expected.end(), row.right.begin(), row.right.end());
        GuardedBuffer<float> line(expected.size());
        std::fill_n(line.data(), line.size(), 9.0f);
        std::iota(line.data() + 4, line.data() + 4 + row.size, 1.0f);
        if (row.leftKind == 0) {
            transform.ExtendPeriodic(line.data(), row.size);
        } else {
            transform.ExtendMirror(line.data(), row.size, row.leftKind, row.rightKind, row.sign);
        }
        EXPECT_EQ(std::vector<float>(line.data(), line.data() + line.size()), expected)
            << "size " << row.size << ", kinds " << row.leftKind << row.rightKind << ", sign " << row.sign;
        EXPECT_TRUE(line.GuardsIntact());
    }
}

class WaveletLineTest : public VectorClassTest {};

TEST_P(WaveletLineTest, EqualsThePlainForm) {
    std::mt19937 generator(3);
    for (const FilterSetRow& row : kFilterSets) {
        const WaveletTransform transform(*row.set);
        const reference::WaveletSlow slow(*row.set);
        ASSERT_EQ(slow.Margin(), transform.margin);
        const auto margin = static_cast<std::size_t>(transform.margin);
        for (const int extension : {0, 1}) {
            for (const int size : {1, 2, 3, 8, 9, 36, 37, 530}) {
                if (size == 1 && extension == 1) {
                    continue; // not defined
                }
                SCOPED_TRACE(::testing::Message() << row.name << ", extension " << extension << ", size " << size);
                const auto samples = static_cast<std::size_t>(size);
                GuardedBuffer<float> in(samples + 2 * margin, 4);
                for (std::size_t k = 0; k < samples; ++k) {
                    in.data()[margin + k] = static_cast<float>(generator()) * 0x1p-20f - 2048.0f;
                }
                std::vector<float> line(in.data(), in.data() + in.size());
                const std::vector<float> forward = slow.ForwardLine(line, size, extension != 0);
                GuardedBuffer<float> out(in.size());
                transform.ForwardLine(in.data(), out.data(), size, extension);
                EXPECT_TRUE(SameBytes(forward.data() + margin, out.data() + margin, samples));
                EXPECT_TRUE(SameBytes(line.data(), in.data(), in.size())) << "extended line";

                const std::vector<float> back = slow.InverseLine(line, size, extension != 0);
                transform.InverseLine(in.data(), out.data(), size, extension);
                EXPECT_TRUE(SameBytes(back.data() + margin, out.data() + margin, samples));
                EXPECT_TRUE(SameBytes(line.data(), in.data(), in.size())) << "input of the inverse";
                EXPECT_TRUE(in.GuardsIntact() && out.GuardsIntact());
            }
        }
    }
}

CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(WaveletLineTest);

} // namespace
