#include "kernels/PlainMembers.h"

#include "common/GuardedBuffer.h"

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <limits>

namespace {

constexpr std::size_t Misalignments[] = {0, 1, 6, 13};
constexpr float Infinity = std::numeric_limits<float>::infinity();

struct IntegerRow {
    std::int32_t value;
    std::uint8_t byte;
};
constexpr IntegerRow IntegerRows[] = {{0, 0},       {1, 1},       {127, 127},  {255, 255},  {256, 255},
                                      {65543, 255}, {-1, 0},      {-256, 0},   {-65529, 0}, {INT_MIN, 0},
                                      {200, 200},   {32768, 255}, {-32769, 0}, {254, 254},  {INT_MAX, 255}};

struct FloatRow {
    float value;
    std::uint8_t byte;
    float storedBack; ///< by PackComplexToU8
};
const FloatRow FloatRows[] = {
    {10.7f, 10, 10.7f},        {11.5f, 11, 11.5f},       {0.99999994f, 0, 0.99999994f}, {-0.0f, 0, 0.0f},
    {-0.5f, 0, 0.0f},          {-1.0f, 0, 0.0f},         {254.99998f, 254, 254.99998f}, {255.0f, 255, 255.0f},
    {255.00002f, 255, 255.0f}, {256.0f, 255, 255.0f},    {300.0f, 255, 255.0f},         {1e10f, 255, 255.0f},
    {-3e9f, 0, 0.0f},          {FLT_MAX, 255, 255.0f},   {-FLT_MAX, 0, 0.0f},           {Infinity, 255, 255.0f},
    {-Infinity, 0, 0.0f},      {std::nanf(""), 0, 0.0f}, {1e-42f, 0, 1e-42f},
};

/// Runs `member` on every count from 0 to 67 and several misalignments of both pointers, over an input made by
/// `input(k)`, and compares output k with `output(k)`, the guards, and the source with `after(k)` bit for bit.
template <typename In, typename Out>
void CheckRows(void (*member)(In*, Out*, std::uint32_t), auto input, auto output, auto after) {
    using Element = std::remove_const_t<In>;
    for (const std::size_t sourceAt : Misalignments) {
        for (const std::size_t destinationAt : Misalignments) {
            for (std::uint32_t count = 0; count <= 67; ++count) {
                GuardedBuffer<Element> source(count, sourceAt);
                GuardedBuffer<Element> sourceAfter(count);
                GuardedBuffer<Out> destination(count, destinationAt);
                GuardedBuffer<Out> expected(count);
                for (std::size_t k = 0; k < count; ++k) {
                    source.Write(k, input(k));
                    sourceAfter.Write(k, after(k));
                    expected.Write(k, output(k));
                }
                member(source.data(), destination.data(), count);
                ASSERT_TRUE(SameBytes(expected, destination)) << count << " elements, " << sourceAt << destinationAt;
                ASSERT_TRUE(SameBytes(sourceAfter, source)) << count << " elements, source";
                ASSERT_TRUE(destination.GuardsIntact() && source.GuardsIntact()) << count << " elements";
            }
        }
    }
}

const IntegerRow& Integer(std::size_t k) {
    return IntegerRows[k % std::size(IntegerRows)];
}
const FloatRow& Float(std::size_t k) {
    return FloatRows[k % std::size(FloatRows)];
}
std::uint8_t Byte(std::size_t k) {
    return static_cast<std::uint8_t>(k * 83 + 5);
}

} // namespace

TEST(PlainMembersTest, PacksAndExpandsEveryCountAtAnyAddress) {
    const auto integer = [](std::size_t k) { return Integer(k).value; };
    const auto real = [](std::size_t k) { return Float(k).value; };
    const auto byteOfReal = [](std::size_t k) { return Float(k).byte; };
    CheckRows(
        kernels::PackS32ToU8, integer, [](std::size_t k) { return Integer(k).byte; }, integer);
    CheckRows(kernels::PackF32ToU8, real, byteOfReal, real);
    CheckRows(
        kernels::PackComplexToU8,
        [](std::size_t k) {
            return ChComplex{Float(k).value, Float(k + 1).value};
        },
        byteOfReal,
        [](std::size_t k) {
            return ChComplex{Float(k).storedBack, Float(k + 1).value};
        });
    CheckRows(
        kernels::ExpandU8ToF32, Byte, [](std::size_t k) { return static_cast<float>(Byte(k)); }, Byte);
    CheckRows(
        kernels::ExpandU8ToComplex, Byte,
        [](std::size_t k) {
            return ChComplex{static_cast<float>(Byte(k)), 0.0f};
        },
        Byte);
    CheckRows(
        kernels::ExpandF32ToComplex, real,
        [](std::size_t k) {
            return ChComplex{Float(k).value, 0.0f};
        },
        real);
}

TEST(PlainMembersTest, CopyReturnsItsDestination) {
    constexpr std::size_t size = 100000;
    GuardedBuffer<unsigned char> source(size, 3);
    FillRandom(source, 5);
    for (const std::uint32_t count : {0u, 1u, 63u, 64u, 99999u, 100000u}) {
        GuardedBuffer<unsigned char> destination(size, 1);
        EXPECT_EQ(kernels::Copy(destination.data(), source.data(), count), destination.data());
        EXPECT_TRUE(SameBytes(source.data(), destination.data(), count)) << count;
        unsigned char* const end = destination.data() + size;
        EXPECT_EQ(std::count(destination.data() + count, end, 0), end - destination.data() - count);
        EXPECT_TRUE(destination.GuardsIntact());
    }
    EXPECT_EQ(kernels::Copy(nullptr, nullptr, 0), nullptr);
}

TEST(PlainMembersTest, ScaleMultipliesInPlaceAndIgnoresNegativeCounts) {
    for (const std::int32_t count : {INT_MIN, -1, 0, 1, 4, 67}) {
        GuardedBuffer<float> vector(68, 1);
        for (std::size_t k = 0; k < 68; ++k) {
            vector.Write(k, static_cast<float>(k) + 0.25f);
        }
        kernels::ScaleF32(vector.data(), -1.5f, count);
        for (std::size_t k = 0; k < 68; ++k) {
            const float before = static_cast<float>(k) + 0.25f;
            const bool scaled = static_cast<std::int32_t>(k) < count;
            ASSERT_EQ(vector.Read(k), scaled ? before * -1.5f : before) << count << " elements, at " << k;
        }
        EXPECT_TRUE(vector.GuardsIntact());
    }
}

TEST(PlainMembersTest, DotSumsInExtendedPrecisionInIndexOrder) {
    struct Row {
        float first[3];
        float second[3];
        std::int32_t count;
        float sum;
    };
    constexpr bool extended = LDBL_MANT_DIG >= 64;
    const Row rows[] = {
        {{1, 2, 3}, {4, 5, 6}, 3, 32},
        {{1, 2, 3}, {4, 5, 6}, 2, 14},
        {{1, 2, 3}, {4, 5, 6}, 0, 0},
        {{1, 2, 3}, {4, 5, 6}, -1, 0},
        {{0x1p30f, 1, -0x1p30f}, {0x1p30f, 1, 0x1p30f}, 3, extended ? 1.0f : 0.0f}, // a double sum loses the 1
        {{0x1p60f, 1, -0x1p60f}, {0x1p60f, 1, 0x1p60f}, 3, 0},                      // and so does any in this order
        {{0x1p60f, -0x1p60f, 1}, {0x1p60f, 0x1p60f, 1}, 3, 1},
        {{FLT_MAX, -FLT_MAX, 1}, {2, 2, 1}, 3, 1}, // products beyond the range of float
    };
    for (const Row& row : rows) {
        GuardedBuffer<float> first(3, 1);
        GuardedBuffer<float> second(3, 3);
        for (std::size_t k = 0; k < 3; ++k) {
            first.Write(k, row.first[k]);
            second.Write(k, row.second[k]);
        }
        EXPECT_EQ(kernels::DotF32(first.data(), second.data(), row.count), row.sum)
            << row.first[0] << " * " << row.second[0] << " + ..., " << row.count << " elements";
    }
}

TEST(PlainMembersTest, DecimatePicksEverySecondPixel) {
    GuardedBuffer<std::uint8_t> source(37 * 9, 1);
    FillRandom(source, 11);
    for (std::int32_t height = -2; height <= 9; ++height) {
        for (std::int32_t width = -2; width <= 37; ++width) {
            SCOPED_TRACE(testing::Message() << width << " by " << height);
            GuardedBuffer<std::uint8_t> destination(18 * 4, 3);
            GuardedBuffer<std::uint8_t> expected(18 * 4);
            std::size_t next = 0;
            for (std::int32_t y = 0; y < height / 2; ++y) {
                for (std::int32_t x = 0; x < width / 2; ++x) {
                    expected.Write(next++, source.Read(static_cast<std::size_t>(2 * y * width + 2 * x)));
                }
            }
            kernels::DecimateU8(destination.data(), source.data(), width, height);
            ASSERT_TRUE(SameBytes(expected, destination));
            ASSERT_TRUE(destination.GuardsIntact());
        }
    }
}
