// Lines and planes, there and back, of every vector class against the plain form, bit for bit.
#include "wavelet/WaveletTransform.h"
#include "wavelet/WeightedSums.h"

#include "common/GuardedBuffer.h"
#include "common/VectorClassTest.h"
#include "reference/wavelet_slow.h"
#include "wavelet/FilterSets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace {

using Plane = std::vector<float>;

// A line 1 2 3 ... between margins of four cells, which hold 9 before.
struct ExtensionRow {
    int size;
    int leftKind; // 0: periodic
    int rightKind, sign;
    std::vector<float> left, right;
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

struct Case {
    const FilterSetRow* filters;
    int width, height, levels, extension;
    Plane source, forward, inverse;

    bool Mirrored() const { return extension == -1 ? filters->mirror != 0 : extension != 0; }

    // Mirrored lines of one sample, from which a level starts where ceil(size / 2^level) is 1, have no defined result.
    bool Defined() const { return !Mirrored() || std::min(width, height) > 1 << std::max(0, levels - 1); }

    // Sets that are not a pair of perfect reconstruction, asymmetric filters under mirroring and periodic lines of
    // odd length, of which multiples of 16 have none in four levels, lose what they were given.
    bool Rebuilds() const {
        const WaveletFilterSet* const set = filters->set;
        const bool asymmetric = set == &FilterSetDaub4 || set == &FilterSetDaub6 || set == &FilterSetDaub8;
        const bool fits = Mirrored() ? !asymmetric : width % 16 == 0 && height % 16 == 0;
        return fits && set != &FilterSetSym9 && levels > 0 && Defined();
    }
};

std::ostream& operator<<(std::ostream& out, const Case& row) {
    return out << row.filters->name << ", " << row.width << " by " << row.height << ", " << row.levels
               << " levels, extension " << row.extension;
}

// Made once for all vector classes: the plain form takes most of the time.
struct Cases {
    std::vector<Case> rows;

    Cases() {
        const std::pair<int, int> sizes[] = {{1, 1}, {1, 7}, {9, 1},   {2, 2},   {3, 5},
                                             {5, 3}, {4, 2}, {16, 16}, {48, 80}, {101, 75}};
        for (const FilterSetRow& filters : kFilterSets) {
            for (const auto& [width, height] : sizes) {
                for (int k = 0; k < 15; ++k) {
                    Add(filters, width, height, k / 3, k % 3 - 1);
                }
            }
        }
        // Several strips of columns, of the least width and of others, and lines of more than 4096 samples.
        for (const int set : {3, 5, 15}) {
            Add(kFilterSets[set], 700, 300, 3, -1);
            Add(kFilterSets[set], 4133, 5, 1, -1);
            Add(kFilterSets[set], 37, 4101, 1, -1);
            Add(kFilterSets[set], 40, 8200, 2, 1);
        }
    }

    void Add(const FilterSetRow& filters, int width, int height, int levels, int extension) {
        Case row{&filters, width, height, levels, extension, {}, {}, {}};
        std::mt19937 generator(static_cast<std::uint32_t>(rows.size()));
        row.source.resize(static_cast<std::size_t>(width * height));
        std::generate(row.source.begin(), row.source.end(), [&] { return static_cast<float>(generator()) * 0x1p-24f; });
        const reference::WaveletSlow slow(*filters.set);
        row.forward = slow.Forward2D(row.source, width, height, levels, row.Mirrored());
        row.inverse = slow.Inverse2D(row.forward, width, height, std::max(1, levels), row.Mirrored());
        rows.push_back(std::move(row));
    }
};

class WaveletTransformTest : public VectorClassTest {};

TEST_P(WaveletTransformTest, EqualsThePlainForm) {
    static const Cases cases;
    ::testing::internal::CaptureStdout(); // the messages of small bands have a test of their own
    for (std::size_t c = 0; c < cases.rows.size() && !HasFailure(); ++c) {
        const Case& row = cases.rows[c];
        SCOPED_TRACE(row);
        const auto columns = static_cast<std::size_t>(row.width);
        const std::size_t count = row.source.size();
        const WaveletTransform transform(*row.filters->set);
        GuardedBuffer<float> input(count, c % 7 * sizeof(float));
        GuardedBuffer<float> output(count, c % 5 * sizeof(float));
        std::copy(row.source.begin(), row.source.end(), input.data());
        transform.Forward2D(input.data(), output.data(), row.width, row.height, row.levels, row.extension);
        if (row.Defined()) {
            EXPECT_TRUE(SameBytes(row.forward.data(), output.data(), count, columns));
        }
        EXPECT_TRUE(SameBytes(row.source.data(), input.data(), count, columns)) << "input";
        std::copy(row.forward.begin(), row.forward.end(), output.data());
        transform.Inverse2D(output.data(), input.data(), row.width, row.height, std::max(1, row.levels), row.extension);
        if (row.Defined()) {
            EXPECT_TRUE(SameBytes(row.inverse.data(), input.data(), count, columns)) << "inverse";
        }
        EXPECT_TRUE(SameBytes(row.forward.data(), output.data(), count, columns)) << "input of the inverse";
        EXPECT_TRUE(input.GuardsIntact() && output.GuardsIntact());
        for (std::size_t k = 0; k < count && row.Rebuilds(); ++k) {
            // Samples up to 256 through at most 16 passes of up to 27 roundings of 2^-24 each, and floats as taps.
            ASSERT_NEAR(row.source[k], input.data()[k], 2e-3) << "sample " << k;
        }
    }
    ::testing::internal::GetCapturedStdout();
}

TEST_P(WaveletTransformTest, LinesEqualThePlainForm) {
    std::mt19937 generator(3);
    for (const FilterSetRow& row : kFilterSets) {
        const WaveletTransform transform(*row.set);
        const reference::WaveletSlow slow(*row.set);
        ASSERT_EQ(slow.Margin(), transform.margin);
        const auto margin = static_cast<std::size_t>(transform.margin);
        for (const int extension : {0, 1}) {
            for (const int size : {1, 2, 3, 8, 9, 36, 37, 530}) {
                if (size == extension) {
                    continue; // a mirrored line of one sample is not defined
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

// c + a * w beside the middle between two floats, as near as 2^-30 of its last place: a sum in double, rounded again,
// ends on the middle itself and then on the wrong side of it. The first sample is 1 + 2^-23 + (1 - 2^-15)(1 + 2^-15) /
// 2^24.
TEST_P(WaveletTransformTest, EachSumIsRoundedOnce) {
    constexpr int kCount = 4 * 16 + 16 + 3; // a block, a vector and single samples of the widest class
    std::mt19937 generator(5);
    for (const float scale : {1.0f, 0x1p-126f, 0x1p100f}) { // from 2^-126 down: results below the normal numbers
        for (int j = 1; j < 100; ++j) {
            const float near = static_cast<float>(j) * 0x1p-15f;
            const float weights[] = {1.0f, (1.0f + near) * 0x1p-24f};
            GuardedBuffer<float> c(kCount), a(kCount, 4), out(kCount, 8);
            std::vector<float> expected(kCount);
            for (std::size_t x = 0; x < kCount; ++x) {
                const auto odd = x == 0 ? 1.0f : static_cast<float>(generator() >> 9 | 1u);
                c.data()[x] = (odd * 0x1p-23f + (scale < 1.0f ? 0.0f : 1.0f)) * scale;
                a.data()[x] = (1.0f - near) * (x % 3 != 1 ? scale : -scale);
                expected[x] = std::fma(a.data()[x], weights[1], c.data()[x]);
            }
            const float* const sources[] = {c.data(), a.data()};
            wavelet::ActiveLineFunctions().WeightedSum(sources, weights, 2, out.data(), kCount);
            EXPECT_TRUE(SameBytes(expected.data(), out.data(), kCount)) << "scale " << scale << ", j " << j;
            EXPECT_TRUE(out.GuardsIntact());
        }
    }
}

CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(WaveletTransformTest);

TEST(WaveletTransform, SmallBandsAreReported) {
    const std::string message = "Warning: Reduce # of transform steps or increase signal size\n"
                                "Warning:   or switch to periodic extension\n"
                                "Error: Low pass subband is too small\n";
    const struct {
        const WaveletFilterSet& set;
        int width, height, levels, extension, messages;
    } rows[] = {
        {FilterSetDenoise, 3, 3, 1, 1, 0},  {FilterSetDenoise, 3, 3, 2, 1, 1},   {FilterSetDenoise, 2, 40, 1, 1, 1},
        {FilterSetDenoise, 40, 2, 3, 1, 3}, {FilterSetDenoise, 8, 64, 3, -1, 1}, {FilterSetDenoise, 9, 9, 3, -1, 0},
        {FilterSetDenoise, 9, 9, 4, -1, 1}, {FilterSetDenoise, 2, 2, 4, 0, 0},   {FilterSetDenoise, 2, 2, 0, 1, 0},
        {FilterSetDenoise, 2, 40, 2, 2, 0}, // mirrored, but not by 1 exactly
        {FilterSetHaar, 2, 2, 2, -1, 0},    {FilterSetHaar, 2, 2, 2, 1, 2},
    };
    for (const auto& row : rows) {
        std::string expected;
        for (int k = 0; k < row.messages; ++k) {
            expected += message;
        }
        Plane plane(static_cast<std::size_t>(row.width * row.height), 1.0f);
        Plane coefficients(plane);
        const WaveletTransform transform(row.set);
        ::testing::internal::CaptureStdout();
        transform.Forward2D(plane.data(), coefficients.data(), row.width, row.height, row.levels, row.extension);
        transform.Inverse2D(coefficients.data(), plane.data(), row.width, row.height, std::max(1, row.levels),
                            row.extension); // silent
        EXPECT_EQ(::testing::internal::GetCapturedStdout(), expected)
            << row.width << " by " << row.height << ", " << row.levels << " levels, extension " << row.extension;
    }
    ::testing::internal::CaptureStdout();
    ReportError("%d of %s", 3, "five");
    ReportWarning("100%%");
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Error: 3 of five\nWarning: 100%\n");
}

} // namespace
