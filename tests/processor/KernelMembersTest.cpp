// Every member, plain or vector, against the two rules it is made of: that of its body for the elements of whole
// passes, and that of its tail for the rest.
#include "processor/KernelMembers.h"

#include "common/GuardedBuffer.h"
#include "kernels/rows/PlainMembers.h"
#include "processor/MembersTest.h"

#include <algorithm>
#include <cfenv>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

using enum ProcessorClass;

constexpr std::size_t kMisalignments[] = {0, 1, 6, 13};
constexpr float kInfinity = std::numeric_limits<float>::infinity();

const std::int32_t kIntegers[] = {0,   1,     127,    128,   200,   254,     255,     256,   300,    32767,
                                  -1,  32768, 65535,  65536, 65544, INT_MAX, INT_MIN, -128,  -32768, -32769,
                                  -56, -256,  -65535, 77,    42,    -2,      99999,   70000, -99999};
const float kFloats[] = {10.7f,      11.5f,         12.5f,      0.5f,     0.50000006f,   1.5f,      0.99999994f,
                         254.5f,     255.0f,        255.49998f, 255.5f,   256.0f,        300.0f,    511.9f,
                         -0.0f,      -0.4f,         -0.5f,      -1.0f,    -1.5f,         -300.0f,   32767.5f,
                         32768.0f,   65580.0f,      -32769.0f,  16777260, 2147483520.0f, 0x1p31f,   -0x1p31f,
                         -0x1.2p31f, 3e9f,          0x1p63f,    1e20f,    FLT_MAX,       -FLT_MAX,  kInfinity,
                         -kInfinity, std::nanf(""), 1e-42f,     97.25f,   254.99998f,    255.00002f};

/// What both conversion instructions can hold; beyond it, and for NaN, they give the lowest integer.
bool FitsInteger(float value) {
    return value >= -0x1p31f && value < 0x1p31f;
}

std::uint8_t Saturate(std::int32_t value) {
    return static_cast<std::uint8_t>(std::clamp(value, 0, 255));
}
std::uint8_t RoundAndSaturate(float value) {
    return FitsInteger(value) ? Saturate(static_cast<std::int32_t>(std::llrint(value))) : std::uint8_t{0};
}
std::uint8_t ClampAndTruncate(float value) {
    return value > 0.0f ? static_cast<std::uint8_t>(std::min(value, 255.0f)) : std::uint8_t{0};
}
std::uint8_t TruncateToLowByte(float value) {
    return FitsInteger(value) ? static_cast<std::uint8_t>(static_cast<std::int32_t>(value)) : std::uint8_t{0};
}
template <std::uint8_t (*Convert)(float)>
std::uint8_t Real(ChComplex value) {
    return Convert(value.re);
}
/// What the plain PackComplexToU8 leaves in its source.
ChComplex ClampReal(ChComplex value) {
    return {value.re > 0.0f ? std::min(value.re, 255.0f) : 0.0f, value.im};
}
template <typename In>
float ToFloat(In value) {
    return value;
}
template <typename In>
ChComplex ToComplex(In value) {
    return {static_cast<float>(value), 0.0f};
}

/// The values a slot is tried with.
void Input(std::size_t k, std::int32_t& value) {
    value = kIntegers[k % std::size(kIntegers)];
}
void Input(std::size_t k, float& value) {
    value = kFloats[k % std::size(kFloats)];
}
void Input(std::size_t k, std::uint8_t& value) {
    value = static_cast<std::uint8_t>(k * 83 + 5);
}
void Input(std::size_t k, ChComplex& value) {
    Input(k, value.re);
    Input(k + 1, value.im);
}

/// A slot's rules. Whole passes follow that of the body, the rest that of the tail, which is also the rule where a
/// class has passes of one element.
template <typename In, typename Out>
struct Rules {
    using Element = std::remove_const_t<In>;
    const char* name;
    void (*KernelTableSlots::*slot)(In*, Out*, std::uint32_t);
    std::uint32_t perPass[4]; ///< elements, for each class
    Out (*body)(Element);
    Out (*tail)(Element);
    Element (*after)(Element) = [](Element value) { return value; }; ///< what becomes of the source
};

template <typename In, typename Out>
void Check(const Rules<In, Out>& rules, ProcessorClass processorClass, std::uint32_t count, std::size_t sourceAt,
           std::size_t destinationAt) {
    using Element = std::remove_const_t<In>;
    GuardedBuffer<Element> source(count, sourceAt);
    GuardedBuffer<Element> sourceAfter(count);
    GuardedBuffer<Out> destination(count, destinationAt);
    GuardedBuffer<Out> expected(count);
    const std::uint32_t perPass = rules.perPass[static_cast<int>(processorClass)];
    const std::uint32_t whole = perPass > 1 ? count / perPass * perPass : 0;
    for (std::uint32_t k = 0; k < count; ++k) {
        Element value;
        Input(k + count, value); // each value comes by every lane, and by the tail
        source.Write(k, value);
        sourceAfter.Write(k, rules.after(value));
        expected.Write(k, (k < whole ? rules.body : rules.tail)(value));
    }
    (KernelMembers(processorClass).*rules.slot)(source.data(), destination.data(), count);
    ASSERT_TRUE(MMXStateIsClear());
    ASSERT_TRUE(SameBytes(expected, destination));
    ASSERT_TRUE(SameBytes(sourceAfter, source)) << "source";
    ASSERT_TRUE(destination.GuardsIntact() && source.GuardsIntact());
}

class KernelMembersTest : public ProcessorClassTest {
protected:
    template <typename In, typename Out>
    static void Sweep(const Rules<In, Out>& rules) {
        for (std::uint32_t count = 0; count < 68; ++count) {
            for (const std::size_t sourceAt : kMisalignments) {
                for (const std::size_t destinationAt : kMisalignments) {
                    SCOPED_TRACE(testing::Message() << rules.name << ", " << count << " elements at " << sourceAt
                                                    << ", " << destinationAt);
                    ASSERT_NO_FATAL_FAILURE(Check(rules, GetParam(), count, sourceAt, destinationAt));
                }
            }
        }
    }
};

#define SLOT(name) #name, &KernelTableSlots::name

TEST_P(KernelMembersTest, BodiesAndTailsFollowTheirRules) {
    Sweep<const std::int32_t, std::uint8_t>({SLOT(PackS32ToU8), {1, 8, 8, 16}, Saturate, Saturate});
    Sweep<const float, std::uint8_t>({SLOT(PackF32ToU8), {1, 1, 16, 16}, RoundAndSaturate, ClampAndTruncate});
    Sweep<const std::uint8_t, float>({SLOT(ExpandU8ToF32), {1, 1, 16, 16}, ToFloat, ToFloat});
    Sweep<const std::uint8_t, ChComplex>({SLOT(ExpandU8ToComplex), {1, 1, 16, 16}, ToComplex, ToComplex});
    Sweep<const float, ChComplex>({SLOT(ExpandF32ToComplex), {1, 1, 4, 4}, ToComplex, ToComplex});
    if (GetParam() < SSE) {
        constexpr auto rule = Real<ClampAndTruncate>;
        Sweep<ChComplex, std::uint8_t>({SLOT(PackComplexToU8), {1, 1}, rule, rule, ClampReal});
    } else {
        Sweep<ChComplex, std::uint8_t>(
            {SLOT(PackComplexToU8), {0, 0, 16, 16}, Real<RoundAndSaturate>, Real<TruncateToLowByte>});
    }
}

TEST_P(KernelMembersTest, BodiesRoundByTheModeInForceAndTailsDoNot) {
    float values[17];
    std::fill(std::begin(values), std::end(values), 10.2f);
    std::uint8_t bytes[17];
    std::fesetround(FE_UPWARD);
    m_Members.PackF32ToU8(values, bytes, 17);
    std::fesetround(FE_TONEAREST);
    EXPECT_EQ(bytes[15], GetParam() < SSE ? 10 : 11);
    EXPECT_EQ(bytes[16], 10);
}

TEST_P(KernelMembersTest, ScaleMultipliesInPlace) {
    for (const std::size_t at : kMisalignments) {
        for (const float factor : {-1.1f, 0x1p-140f, 3e38f}) {
            for (std::int32_t count = -5; count <= 67; ++count) {
                SCOPED_TRACE(testing::Message() << count << " elements at " << at << " by " << factor);
                GuardedBuffer<float> vector(72, at);
                GuardedBuffer<float> expected(72);
                for (std::int32_t k = 0; k < 72; ++k) {
                    const float value = 0.375f * static_cast<float>(k) - 9.25f; // exact in any precision
                    vector.Write(static_cast<std::size_t>(k), value);
                    expected.Write(static_cast<std::size_t>(k), k < count ? value * factor : value);
                }
                m_Members.ScaleF32(vector.data(), factor, count);
                ASSERT_TRUE(SameBytes(expected, vector));
                ASSERT_TRUE(vector.GuardsIntact());
            }
        }
    }
}

/// Four sums of 32 bits, then the tail of `count` mod 3 elements; volatile so that every step is rounded.
float DotInLanes(const GuardedBuffer<float>& first, const GuardedBuffer<float>& second, std::int32_t count) {
    volatile float lanes[4] = {0.0f, 0.0f, 0.0f, 0.0f};
    std::size_t k = 0;
    for (; static_cast<std::int32_t>(k) + 4 <= count; k += 4) {
        for (std::size_t lane = 0; lane < 4; ++lane) {
            const volatile float product = first.Read(k + lane) * second.Read(k + lane);
            lanes[lane] = lanes[lane] + product;
        }
    }
    long double sum = ((static_cast<long double>(lanes[0]) + lanes[1]) + lanes[2]) + lanes[3];
    for (std::int32_t rest = count % 3; rest > 0; --rest, ++k) {
        sum += static_cast<long double>(first.Read(k)) * static_cast<long double>(second.Read(k));
    }
    return static_cast<float>(sum);
}

TEST_P(KernelMembersTest, DotKeepsFourSumsAndTakesATailOfCountModulo3) {
    if (GetParam() < SSE) {
        EXPECT_EQ(m_Members.DotF32, kernels::DotF32);
        return;
    }
    for (const std::size_t at : kMisalignments) {
        for (std::int32_t count = -4; count <= 67; ++count) {
            // The two elements of slack that the tail may read: at 2, 8 and 20 elements, for instance, they count.
            const auto size = static_cast<std::size_t>(std::max(count, 0) + 2);
            GuardedBuffer<float> first(size, at);
            GuardedBuffer<float> second(size, 13 - at);
            for (std::size_t k = 0; k < size; ++k) {
                // Magnitudes far apart, so that each order of summing gives another result.
                first.Write(k, std::ldexp(1.0f + 0.013f * static_cast<float>(k), static_cast<int>(k * 7 % 23)));
                second.Write(k, (k % 5 < 2 ? -1.0f : 1.0f) * (0.9f + 0.11f * static_cast<float>(k % 9)));
            }
            ASSERT_EQ(m_Members.DotF32(first.data(), second.data(), count), DotInLanes(first, second, count))
                << count << " elements at " << at;
        }
    }
    // Sums that only extended precision, and only this order, keep apart.
    for (const float large : {0x1p60f, 0x1p70f}) {
        GuardedBuffer<float> first(6); // with slack, as above
        GuardedBuffer<float> second(6);
        for (std::size_t k = 0; k < 4; ++k) {
            first.Write(k, k == 0 ? large : k == 2 ? -large : 3.0f);
            second.Write(k, 1.0f);
        }
        EXPECT_EQ(m_Members.DotF32(first.data(), second.data(), 4), DotInLanes(first, second, 4)) << large;
    }
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
        {{1, 2, 3}, {4, 5, 6}, -1, 0},
        {{0x1p30f, 1, -0x1p30f}, {0x1p30f, 1, 0x1p30f}, 3, extended ? 1.0f : 0.0f}, // a double sum loses the 1
        {{0x1p60f, 1, -0x1p60f}, {0x1p60f, 1, 0x1p60f}, 3, 0},                      // and so does any in this order
        {{0x1p60f, -0x1p60f, 1}, {0x1p60f, 0x1p60f, 1}, 3, 1},
        {{FLT_MAX, -FLT_MAX, 1}, {2, 2, 1}, 3, 1}, // products beyond the range of float
    };
    for (const auto& row : rows) {
        GuardedBuffer<float> first(3, 1);
        GuardedBuffer<float> second(3, 3);
        std::memcpy(first.bytes(), row.first, sizeof row.first);
        std::memcpy(second.bytes(), row.second, sizeof row.second);
        EXPECT_EQ(kernels::DotF32(first.data(), second.data(), row.count), row.sum) << "row " << &row - rows;
    }
}

TEST_P(KernelMembersTest, DecimatePicksEverySecondPixel) {
    for (const std::size_t at : kMisalignments) {
        for (std::int32_t width = -1; width <= 99; ++width) {
            for (const std::int32_t height : {-2, 1, 2, 5}) {
                SCOPED_TRACE(testing::Message() << width << " by " << height << " at " << at);
                const auto stride = static_cast<std::size_t>(std::max(width, 0));
                const auto rows = static_cast<std::size_t>(std::max(height, 0));
                GuardedBuffer<std::uint8_t> source(stride * rows, at);
                GuardedBuffer<std::uint8_t> destination(stride / 2 * (rows / 2), 13 - at);
                GuardedBuffer<std::uint8_t> expected(destination.size());
                FillRandom(source, 11);
                for (std::size_t k = 0; k < expected.size(); ++k) {
                    expected.Write(k, source.Read(2 * (k / (stride / 2)) * stride + 2 * (k % (stride / 2))));
                }
                m_Members.DecimateU8(destination.data(), source.data(), width, height);
                ASSERT_TRUE(MMXStateIsClear());
                ASSERT_TRUE(SameBytes(expected, destination, stride / 2));
                ASSERT_TRUE(destination.GuardsIntact());
            }
        }
    }
}

CLARIBOX_INSTANTIATE_FOR_PROCESSOR_CLASSES(KernelMembersTest);

} // namespace
