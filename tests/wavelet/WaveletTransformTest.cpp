// Planes, there and back, of every vector class against the plain form, bit for bit.
#include "wavelet/WaveletTransform.h"

#include "common/GuardedBuffer.h"
#include "common/VectorClassTest.h"
#include "reference/wavelet_slow.h"
#include "wavelet/FilterSets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

namespace {

using Plane = std::vector<float>;

struct Case {
    const FilterSetRow* filters;
    int width;
    int height;
    int levels;
    int extension;
    Plane source;
    Plane forward;
    Plane inverse;

    bool Mirrored() const { return extension == -1 ? filters->mirror != 0 : extension != 0; }

    // Sizes from which the levels start, and whether one of them satisfies the condition.
    template <typename Condition>
    bool AnyStart(Condition condition) const {
        int columns = width;
        int rows = height;
        for (int level = 0; level < levels; ++level) {
            if (condition(columns) || condition(rows)) {
                return true;
            }
            columns = (columns + 1) / 2;
            rows = (rows + 1) / 2;
        }
        return false;
    }

    // Mirrored lines of one sample have no defined result.
    bool Defined() const {
        return !Mirrored() || !AnyStart([](int size) { return size == 1; });
    }

    // Sets that are not a pair of perfect reconstruction, asymmetric filters under mirroring and periodic lines of
    // odd length lose what they were given.
    bool Rebuilds() const {
        const WaveletFilterSet* const set = filters->set;
        if (set == &FilterSetSym9) {
            return false;
        }
        if (Mirrored()) {
            return set != &FilterSetDaub4 && set != &FilterSetDaub6 && set != &FilterSetDaub8;
        }
        return !AnyStart([](int size) { return size % 2 != 0; });
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
        const struct {
            int width;
            int height;
        } sizes[] = {{1, 1}, {1, 7}, {9, 1}, {2, 2}, {3, 5}, {5, 3}, {16, 16}, {48, 80}, {101, 75}};
        for (const FilterSetRow& filters : kFilterSets) {
            for (const auto& size : sizes) {
                for (int levels = 0; levels <= 4; ++levels) {
                    for (const int extension : {-1, 0, 1}) {
                        Add(filters, size.width, size.height, levels, extension);
                    }
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
        if (!row.Defined()) {
            return;
        }
        std::mt19937 generator(static_cast<std::uint32_t>(rows.size()));
        row.source.resize(static_cast<std::size_t>(width * height));
        std::generate(row.source.begin(), row.source.end(), [&] { return static_cast<float>(generator()) * 0x1p-24f; });
        const reference::WaveletSlow slow(*filters.set);
        row.forward = slow.Forward2D(row.source, width, height, levels, row.Mirrored());
        if (levels > 0) {
            row.inverse = slow.Inverse2D(row.forward, width, height, levels, row.Mirrored());
        }
        rows.push_back(std::move(row));
    }
};

void Copy(const Plane& source, GuardedBuffer<float>& plane) {
    std::copy(source.begin(), source.end(), plane.data());
}

class WaveletTransformTest : public VectorClassTest {};

TEST_P(WaveletTransformTest, EqualsThePlainForm) {
    static const Cases cases;
    int rebuilt = 0;
    ::testing::internal::CaptureStdout(); // the messages of small bands have a test of their own
    for (std::size_t c = 0; c < cases.rows.size() && !HasFailure(); ++c) {
        const Case& row = cases.rows[c];
        SCOPED_TRACE(row);
        const auto columns = static_cast<std::size_t>(row.width);
        const std::size_t count = row.source.size();
        const WaveletTransform transform(*row.filters->set);
        GuardedBuffer<float> input(count, c % 7 * sizeof(float));
        GuardedBuffer<float> output(count, c % 5 * sizeof(float));
        Copy(row.source, input);
        transform.Forward2D(input.data(), output.data(), row.width, row.height, row.levels, row.extension);
        EXPECT_TRUE(SameBytes(row.forward.data(), output.data(), count, columns));
        EXPECT_TRUE(SameBytes(row.source.data(), input.data(), count, columns)) << "input";
        EXPECT_TRUE(input.GuardsIntact() && output.GuardsIntact());
        if (row.levels == 0) {
            continue;
        }
        transform.Inverse2D(output.data(), input.data(), row.width, row.height, row.levels, row.extension);
        EXPECT_TRUE(SameBytes(row.inverse.data(), input.data(), count, columns)) << "inverse";
        EXPECT_TRUE(SameBytes(row.forward.data(), output.data(), count, columns)) << "input of the inverse";
        EXPECT_TRUE(input.GuardsIntact() && output.GuardsIntact());
        for (std::size_t k = 0; k < count && row.Rebuilds(); ++k) {
            // Samples up to 256 through at most 16 passes of up to 27 roundings of 2^-24 each, and floats as taps.
            ASSERT_NEAR(row.source[k], input.data()[k], 2e-3) << "sample " << k;
        }
        rebuilt += row.Rebuilds() ? 1 : 0;
    }
    ::testing::internal::GetCapturedStdout();
    EXPECT_GT(rebuilt, 400);
}

TEST_P(WaveletTransformTest, TinyPlanesNeverLeaveTheirBlocks) {
    ::testing::internal::CaptureStdout();
    for (const FilterSetRow& filters : kFilterSets) {
        const WaveletTransform transform(*filters.set);
        for (int size = 0; size < 50; ++size) {
            const int width = 1 + size % 5;
            const int height = 1 + size / 5 % 5;
            GuardedBuffer<float> input(static_cast<std::size_t>(width * height));
            GuardedBuffer<float> output(input.size());
            transform.Forward2D(input.data(), output.data(), width, height, 4, size % 2);
            transform.Inverse2D(output.data(), input.data(), width, height, 4, size % 2);
            EXPECT_TRUE(input.GuardsIntact() && output.GuardsIntact()) << filters.name << width << " by " << height;
        }
    }
    ::testing::internal::GetCapturedStdout();
}

CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(WaveletTransformTest);

TEST(WaveletTransform, SmallBandsAreReported) {
    const std::string message = "Warning: Reduce # of transform steps or increase signal size\n"
                                "Warning:   or switch to periodic extension\n"
                                "Error: Low pass subband is too small\n";
    const struct {
        const WaveletFilterSet& set;
        int width;
        int height;
        int levels;
        int extension;
        int messages;
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

TEST(WaveletTransform, FlatPlaneStaysFlat) {
    const int width = 101;
    const int height = 75;
    const Plane plane(static_cast<std::size_t>(width * height), 100.0f);
    Plane coefficients(plane.size());
    WaveletTransform(FilterSetDenoise).Forward2D(plane.data(), coefficients.data(), width, height, 3, -1);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            // Three levels of a doubling; a tap is off by up to half a unit of its last place, 3e-8.
            EXPECT_NEAR(coefficients[static_cast<std::size_t>(y * width + x)], x < 13 && y < 10 ? 800.0f : 0.0f, 1e-3f)
                << "row " << y << ", column " << x;
        }
    }
}

} // namespace
