// The plain members. How they copy, scale, decimate and pack integers is for the tests of the vector members to say,
// which run the plain class as well.
#include "kernels/rows/PlainMembers.h"

#include "common/GuardedBuffer.h"

#include <cfloat>
#include <cmath>
#include <limits>

namespace {

constexpr std::size_t kMisalignments[] = {0, 1, 6, 13};
constexpr float kInfinity = std::numeric_limits<float>::infinity();

struct FloatRow {
    float value;
    std::uint8_t byte;
    float storedBack; ///< by PackComplexToU8
};
const FloatRow kFloatRows[] = {
    {10.7f, 10, 10.7f},        {11.5f, 11, 11.5f},       {0.99999994f, 0, 0.99999994f}, {-0.0f, 0, 0.0f},
    {-0.5f, 0, 0.0f},          {-1.0f, 0, 0.0f},         {254.99998f, 254, 254.99998f}, {255.0f, 255, 255.0f},
    {255.00002f, 255, 255.0f}, {256.0f, 255, 255.0f},    {300.0f, 255, 255.0f},         {1e10f, 255, 255.0f},
    {-3e9f, 0, 0.0f},          {FLT_MAX, 255, 255.0f},   {-FLT_MAX, 0, 0.0f},           {kInfinity, 255, 255.0f},
    {-kInfinity, 0, 0.0f},     {std::nanf(""), 0, 0.0f}, {1e-42f, 0, 1e-42f},
};

/// Runs `member` on every count from 0 to 67 and several misalignments of both pointers, over an input made by
/// `input(k)`, and compares output k with `output(k)`, the guards, and the source with `after(k)` bit for bit.
template <typename In, typename Out>
void CheckRows(void (*member)(In*, Out*, std::uint32_t), auto input, auto output, auto after) {
    using Element = std::remove_const_t<In>;
    for (const std::size_t sourceAt : kMisalignments) {
        for (const std::size_t destinationAt : kMisalignments) {
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

const FloatRow& Float(std::size_t k) {
    return kFloatRows[k % std::size(kFloatRows)];
}
std::uint8_t Byte(std::size_t k) {
    return static_cast<std::uint8_t>(k * 83 + 5);
}

} // namespace

TEST(PlainMembersTest, PacksAndExpandsEveryCountAtAnyAddress) {
    const auto real = [](std::size_t k) { return Float(k).value; };
    const auto byteOfReal = [](std::size_t k) { return Float(k).byte; };
    const auto complex = [](float re, float im) { return ChComplex{re, im}; };
    const auto pair = [&](std::size_t k) { return complex(Float(k).value, Float(k + 1).value); };
    const auto storedPair = [&](std::size_t k) { return complex(Float(k).storedBack, Float(k + 1).value); };
    const auto realOfByte = [](std::size_t k) { return static_cast<float>(Byte(k)); };
    CheckRows(kernels::PackF32ToU8, real, byteOfReal, real);
    CheckRows(kernels::PackComplexToU8, pair, byteOfReal, storedPair);
    CheckRows(kernels::ExpandU8ToF32, Byte, realOfByte, Byte);
    CheckRows(
        kernels::ExpandU8ToComplex, Byte, [&](std::size_t k) { return complex(realOfByte(k), 0.0f); }, Byte);
    CheckRows(
        kernels::ExpandF32ToComplex, real, [&](std::size_t k) { return complex(real(k), 0.0f); }, real);
}

TEST(PlainMembersTest, DotSumsInExtendedPrecisionInIndexOrder) {
    constexpr bool extended = LDBL_MANT_DIG >= 64;
    constexpr struct {
        float first[3], second[3];
        std::int32_t count;
        float sum;
    } rows[] = {
        {{1, 2, 3}, {4, 5, 6}, 3, 32},
        {{1, 2, 3}, {4, 5, 6}, 2, 14},
        {{1, 2, 3}, {4, 5, 6}, 0, 0},
        {{1, 2, 3}, {4, 5, 6}, -1, 0},
        {{0x1p30f, 1, -0x1p30f}, {0x1p30f, 1, 0x1p30f}, 3, extended ? 1.0f : 0.0f}, // a double sum loses the 1
        {{0x1p60f, 1, -0x1p60f}, {0x1p60f, 1, 0x1p60f}, 3, 0},                      // and so does any in this order
        {{0x1p60f, -0x1p60f, 1}, {0x1p60f, 0x1p60f, 1}, 3, 1},
        {{FLT_MAX, -FLT_MAX, 1}, {2, 2, 1}, 3, 1}, // products beyond the range of float
    };
    for (const auto& row : rows) {
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
