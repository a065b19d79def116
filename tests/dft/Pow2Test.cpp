// The power-of-two path: tables, orders of the spectrum, scale factors, and the agreement of its three forms. That its
// results are right is the matter of TransformTest.cpp too, through the front entries.
#include "dft/pow2/pow2.h"

#include "common/GuardedBuffer.h"
#include "common/VectorClassTest.h"
#include "dft/TestJob.h"
#include "dft/TestSurroundings.h"
#include "dft/pow2/bit_reversal.h"
#include "dft/pow2/commit_table.h"
#include "dft/pow2/permutation.h"
#include "dft/pow2/pow2_form.h"
#include "dft/pow2/pow2_runs.h"
#include "dft/pow2/static_tables.h"
#include "reference/dft_slow.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <vector>

namespace {

using dft::Complex;

constexpr std::int32_t kOrderings[] = {dft::DFT_ORDERED, 0};

template <typename Real>
using Line = std::vector<Complex<Real>>;

template <typename Real>
Line<Real> RandomLine(int bits) {
    return dft_slow::RandomLine<Complex<Real>>(std::size_t{1} << bits, 1);
}

template <typename Real>
Line<Real> Reversed(const Line<Real>& line, int bits) {
    Line<Real> reversed(line.size());
    for (std::size_t k = 0; k < line.size(); ++k) {
        reversed[k] = line[static_cast<std::size_t>(dft::ReverseBits(static_cast<std::int32_t>(k), bits))];
    }
    return reversed;
}

// cos or -sin of 2 pi j / n, rounded once from a wider number.
template <typename Real>
void ExpectParts(const Real* cosine, const Real* minusSine, long long j, long long n) {
    const long double angle = 2 * std::numbers::pi_v<long double> * static_cast<long double>(j) / n;
    const long double tolerance = sizeof(Real) == 4 ? 0x1.00001p-25L : 0x1p-52L;
    EXPECT_LE(std::abs(*cosine - std::cos(angle)), tolerance) << j << " of " << n;
    EXPECT_LE(std::abs(*minusSine + std::sin(angle)), tolerance) << j << " of " << n;
}

template <typename Real>
class Pow2Tables : public ::testing::Test {};
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(Pow2Tables, Precisions);

TYPED_TEST(Pow2Tables, StaticLevelsFollowEachOther) {
    const auto& tables = dft::static_tables<TypeParam>();
    EXPECT_EQ(sizeof tables.even, 32736 * sizeof(TypeParam) / sizeof(float));
    for (const int powers : {1, 3}) {
        const TypeParam* group = powers == 3 ? tables.even : tables.odd;
        for (int n = powers == 3 ? 4096 : 2048; n >= (powers == 3 ? 16 : 32); n /= 4) {
            const std::ptrdiff_t bytes = n * (powers == 3 ? 6 : 2) * static_cast<std::ptrdiff_t>(sizeof(TypeParam)) / 4;
            const TypeParam* const end = group + bytes / static_cast<std::ptrdiff_t>(sizeof(TypeParam));
            for (int j = 0; group < end; j += 4) {
                for (int power = 1; power <= powers; ++power, group += 8) {
                    for (int k = 0; k < 4; ++k) {
                        ExpectParts(group + k, group + k + 4, power * (j + k), n);
                    }
                }
            }
        }
    }
}

// A table and its base, for a variant.
template <typename Real>
struct CommitTable {
    CommitTable(int bits, int variant)
        : block(((sizeof(Real) == sizeof(float) ? 3 : 6) * (std::size_t{1} << bits) / 2 + 64) * 8) {
        dft::BuildCommitTable<Real>(bits, block.data(), dft::dft_tuning_of(variant));
        base =
            reinterpret_cast<const Real*>(block.data() + dft::TableOffset(block.data(), dft::dft_tuning_of(variant)));
    }
    GuardedBuffer<unsigned char> block;
    const Real* base;
};

TYPED_TEST(Pow2Tables, CommitTableByLength) {
    constexpr int precision = sizeof(TypeParam) == 4 ? 0 : 1;
    for (int variant = 0; variant < 3; ++variant) {
        for (const int bits : {0, 1, 3, 5, 12, 13, 14, 15, 16}) {
            SCOPED_TRACE(::testing::Message() << "variant " << variant << ", 2^" << bits);
            const CommitTable<TypeParam> table(bits, variant);
            const int n = 1 << bits;
            TypeParam header[2];
            std::memcpy(header, table.block.bytes(), sizeof header);
            EXPECT_EQ(header[0], n);
            EXPECT_EQ(header[1], 0);
            const auto address = reinterpret_cast<std::uintptr_t>(table.base);
            const auto alignment = static_cast<std::uintptr_t>(dft::dft_tuning_of(variant).table_alignment);
            EXPECT_EQ(address % alignment, 0u);
            EXPECT_EQ(address / alignment, reinterpret_cast<std::uintptr_t>(table.block.bytes()) / alignment + 1);
            EXPECT_TRUE(table.block.GuardsIntact());
            if (bits == 3) {
                EXPECT_EQ(table.base[4], static_cast<TypeParam>(std::sqrt(0.5L)));
            }
            const bool triples = bits >= 15 || n > dft::dft_tuning_of(variant).two_level_up_to[precision];
            const TypeParam* at = table.base;
            for (int m = n; !triples && bits > 12 && m >= 2048; m /= 2) {
                for (int j = 0; j < m / 4; ++j) {
                    ExpectParts(at + j / 4 * 8 + j % 4, at + j / 4 * 8 + j % 4 + 4, j, m);
                }
                at += m / 2;
            }
            for (int b = 0; triples && b < n / 4; ++b, at += 6) {
                ExpectParts(at, at + 1, dft::ReverseBits(b, bits - 2), n);
                const TypeParam squares[] = {at[0] * at[0], at[1] * at[1], at[0] * at[1]};
                EXPECT_NEAR(at[2], squares[0] - squares[1], std::numeric_limits<TypeParam>::epsilon());
                EXPECT_NEAR(at[3], squares[2] + squares[2], std::numeric_limits<TypeParam>::epsilon());
                EXPECT_NEAR(at[4], at[2] * at[0] - at[3] * at[1], std::numeric_limits<TypeParam>::epsilon());
                EXPECT_NEAR(at[5], at[2] * at[1] + at[3] * at[0], std::numeric_limits<TypeParam>::epsilon());
            }
        }
    }
}

TYPED_TEST(Pow2Tables, ListsReverseTheOrder) {
    for (int bits = 5; bits <= 16; ++bits) {
        SCOPED_TRACE(::testing::Message() << "2^" << bits);
        const CommitTable<TypeParam> table(bits, 1);
        const dft::BitReversalLists lists = dft::ListsOf(table.base, bits);
        const std::int32_t* const words = lists.reversals - 1;
        EXPECT_EQ(reinterpret_cast<const unsigned char*>(words) - reinterpret_cast<const unsigned char*>(table.base),
                  static_cast<std::ptrdiff_t>(sizeof(Complex<TypeParam>)) << bits);
        EXPECT_EQ(words[0], 1 << (bits - 4));
        Line<TypeParam> line = RandomLine<TypeParam>(bits);
        const Line<TypeParam> expected = Reversed(line, bits);
        dft::ReverseOrder(line.data(), bits, lists);
        EXPECT_TRUE(SameBytes(expected.data(), line.data(), line.size()));
    }
}

template <typename Real>
auto Slot(dft::DftDescriptor& record, int direction) {
    if constexpr (sizeof(Real) == sizeof(float)) {
        return direction == dft::kForward ? record.forward_single : record.backward_single;
    } else {
        return direction == dft::kForward ? record.forward_double : record.backward_double;
    }
}
template <typename Real>
auto ThreadedSlot(dft::DftDescriptor& record, int direction) {
    if constexpr (sizeof(Real) == sizeof(float)) {
        return direction == dft::kForward ? record.c1d_forw_dft : record.c1d_back_dft;
    } else {
        return direction == dft::kForward ? record.z1d_forw_dft : record.z1d_back_dft;
    }
}
template <typename Real>
const dft::Pow2Runs<Real>& ActiveRuns() {
    if constexpr (sizeof(Real) == sizeof(float)) {
        return dft::ActivePow2RunsSingle();
    } else {
        return dft::ActivePow2RunsDouble();
    }
}

// At an address that is a multiple of 8 alone.
template <typename Real>
Line<Real> RunSlot(dft::DftDescriptor& record, int direction, const Line<Real>& input) {
    GuardedBuffer<Complex<Real>> data(input.size(), 8);
    std::copy(input.begin(), input.end(), data.data());
    EXPECT_EQ(Slot<Real>(record, direction)(data.data(), nullptr, &record, nullptr), dft::DFT_OK);
    EXPECT_TRUE(data.GuardsIntact());
    return Line<Real>(data.data(), data.data() + data.size());
}

// Columns where they lie, among others, have the bytes that `results` holds of their lines; the others stay.
template <typename Real>
void CheckColumns(dft::DftDescriptor& record, int direction, const std::vector<Line<Real>>& lines,
                  const std::vector<Line<Real>>& results) {
    const std::size_t n = lines[0].size();
    const std::size_t before = 1;
    const std::size_t stride = before + lines.size() + 2;
    const Complex<Real> other{7, -7};
    GuardedBuffer<Complex<Real>> plane(n * stride, 8);
    std::fill(plane.data(), plane.data() + plane.size(), other);
    for (std::size_t j = 0; j < n * lines.size(); ++j) {
        plane.data()[j / lines.size() * stride + before + j % lines.size()] = lines[j % lines.size()][j / lines.size()];
    }
    GuardedBuffer<Real> scratch(2 * n * lines.size());
    const auto asLong = [](std::size_t x) { return static_cast<std::ptrdiff_t>(x); };
    ActiveRuns<Real>().columns[direction](
        record, {plane.data() + before, asLong(stride), 1, asLong(lines.size()), asLong(n)}, scratch.data());
    EXPECT_TRUE(plane.GuardsIntact());
    EXPECT_TRUE(scratch.GuardsIntact());
    for (std::size_t k = 0; k < n; ++k) {
        std::vector<Complex<Real>> expected(stride, other);
        for (std::size_t lane = 0; lane < lines.size(); ++lane) {
            expected[before + lane] = results[lane][k];
        }
        ASSERT_TRUE(SameBytes(expected.data(), plane.data() + k * stride, stride)) << "row " << k;
    }
}

// Spectra in bit-reversed order have the very bytes of ordered ones, and a batch or columns those of their lines.
template <typename Real>
void CheckForms(int bits) {
    const std::size_t n = std::size_t{1} << bits;
    TestJob<Real> job({1 << bits});
    dft::DftDescriptor& record = *job.operator->();
    const auto lanes = static_cast<std::size_t>(ActiveRuns<Real>().lanes);
    const Line<Real> base = RandomLine<Real>(bits);
    GuardedBuffer<Real> batch(2 * n * lanes);
    GuardedBuffer<Real> scratch(2 * n * lanes);
    for (const int direction : {dft::kForward, dft::kBackward}) {
        Line<Real> first;
        for (const std::int32_t ordering : kOrderings) {
            SCOPED_TRACE(::testing::Message() << "direction " << direction << ", ordering " << ordering);
            record.ordering = ordering;
            const bool reversed = ordering != dft::DFT_ORDERED;
            std::vector<Line<Real>> lines;
            std::vector<Line<Real>> results;
            for (std::size_t lane = 0; lane < lanes; ++lane) {
                Line<Real> x = base;
                std::rotate(x.begin(), x.begin() + static_cast<std::ptrdiff_t>(lane % n), x.end());
                x = reversed && direction == dft::kBackward ? Reversed(x, bits) : x;
                for (std::size_t k = 0; k < n; ++k) {
                    batch.Write(2 * k * lanes + lane, x[k].re);
                    batch.Write((2 * k + 1) * lanes + lane, x[k].im);
                }
                results.push_back(RunSlot(record, direction, x));
                lines.push_back(std::move(x));
            }
            ActiveRuns<Real>().batch[direction](record, batch.data(), scratch.data());
            EXPECT_TRUE(batch.GuardsIntact());
            EXPECT_TRUE(scratch.GuardsIntact());
            for (std::size_t lane = 0; lane < lanes; ++lane) {
                Line<Real> ofBatch(n);
                for (std::size_t k = 0; k < n; ++k) {
                    ofBatch[k] = {batch.Read(2 * k * lanes + lane), batch.Read((2 * k + 1) * lanes + lane)};
                }
                ASSERT_TRUE(SameBytes(results[lane].data(), ofBatch.data(), n)) << "lane " << lane;
            }
            if (!reversed && bits >= 4) {
                CheckColumns(record, direction, lines, results);
            }
            if (!reversed) {
                first = results[0];
            } else {
                const Line<Real> natural = direction == dft::kForward ? Reversed(results[0], bits) : results[0];
                ASSERT_TRUE(SameBytes(first.data(), natural.data(), n));
            }
        }
    }
}

class Pow2Test : public VectorClassTest {};

TEST_P(Pow2Test, LineBatchAndOrderingsAgree) {
    for (int variant = 0; variant < 3; ++variant) {
        const TestNumber code(dft::dft_variant_code, variant);
        for (int bits = 0; bits <= 16; ++bits) {
            SCOPED_TRACE(::testing::Message() << "variant " << variant << ", 2^" << bits);
            CheckForms<float>(bits);
            if (variant == 0) { // double precision has one set of limits
                CheckForms<double>(bits);
            }
        }
    }
}

template <typename Real>
void CheckThreads(int bits, std::int32_t threads) {
    SCOPED_TRACE(::testing::Message() << "2^" << bits << ", threads " << threads << ", bytes " << sizeof(Real));
    TestJob<Real> job({1 << bits});
    dft::DftDescriptor& record = *job.operator->();
    record.forward_scale_single = record.backward_scale_single = 0.1f;
    record.forward_scale_double = record.backward_scale_double = 0.1;
    const Line<Real> x = RandomLine<Real>(bits);
    for (const int direction : {dft::kForward, dft::kBackward}) {
        for (const std::int32_t ordering : kOrderings) {
            record.ordering = ordering;
            const Line<Real> serial = RunSlot(record, direction, x);
            Line<Real> threaded = x;
            EXPECT_EQ(ThreadedSlot<Real>(record, direction)(threaded.data(), threads, &record), dft::DFT_OK);
            const auto form = dft::FormOf<Real>(record, static_cast<dft::Direction>(direction));
            if (threads <= 1 << (bits - form.blockBits)) {
                EXPECT_TRUE(SameBytes(serial.data(), threaded.data(), x.size()));
            } else { // other passes, other roundings
                EXPECT_LE(dft_slow::RelativeError(threaded, dft_slow::ToWideLine(serial)),
                          std::numeric_limits<Real>::epsilon() * 2);
            }
        }
    }
}

TEST_P(Pow2Test, ThreadedFormsEqualTheSlots) {
    for (int variant = 0; variant < 3; ++variant) {
        const TestNumber code(dft::dft_variant_code, variant);
        for (const int bits : {0, 4, 5, 9, 11, 12, 13, 14, 15, 16, 17}) {
            for (const std::int32_t threads : {2, 3, bits <= 9 ? 1000 : 8}) { // 9 bits make 32 pieces at the most
                CheckThreads<float>(bits, threads);
                if (variant == 0) {
                    CheckThreads<double>(bits, threads);
                }
            }
        }
    }
}

CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(Pow2Test);

// The factor rounds the input of a forward transform and the result of a backward one, but for variant 1 in single
// precision, which scales every result.
template <typename Real>
void CheckScale(int variant, int bits) {
    SCOPED_TRACE(::testing::Message() << "variant " << variant << ", 2^" << bits);
    const TestNumber code(dft::dft_variant_code, variant);
    TestJob<Real> job({1 << bits});
    dft::DftDescriptor& record = *job.operator->();
    const Real factor = static_cast<Real>(0.3125L); // so short that the x87 unit, too, rounds a product once
    const auto scaled = [factor](Line<Real> line) {
        for (Complex<Real>& element : line) {
            element = {element.re * factor, element.im * factor};
        }
        return line;
    };
    const Line<Real> x = RandomLine<Real>(bits);
    for (const int direction : {dft::kForward, dft::kBackward}) {
        const bool last = direction == dft::kBackward || (variant == 1 && sizeof(Real) == 4);
        record.forward_scale_single = record.backward_scale_single = 1;
        record.forward_scale_double = record.backward_scale_double = 1;
        const Line<Real> expected =
            last ? scaled(RunSlot(record, direction, x)) : RunSlot(record, direction, scaled(x));
        (direction == dft::kForward ? record.forward_scale_single : record.backward_scale_single) = 0.3125f;
        (direction == dft::kForward ? record.forward_scale_double : record.backward_scale_double) = factor;
        const Line<Real> actual = RunSlot(record, direction, x);
        EXPECT_TRUE(SameBytes(expected.data(), actual.data(), x.size())) << "direction " << direction;
    }
}

TEST(Pow2, ScaleFactorsOfBothDirections) {
    for (int variant = 0; variant < 3; ++variant) {
        for (const int bits : {0, 1, 2, 3, 4, 10, 13, 15}) {
            CheckScale<float>(variant, bits);
            CheckScale<double>(variant, bits);
        }
    }
}

TEST(Pow2, ARefusedAllocationIsStatus1AndLeaksNothing) {
    TestAllocator allocator;
    TestJob<float> job({4096});
    dft::DftDescriptor& record = *job.operator->();
    Line<float> x = RandomLine<float>(12);
    const int before = allocator.Live();
    for (const int direction : {dft::kForward, dft::kBackward}) {
        allocator.Refuse(0);
        EXPECT_EQ(Slot<float>(record, direction)(x.data(), nullptr, &record, nullptr), dft::DFT_NO_MEMORY);
        allocator.Refuse(0);
        EXPECT_EQ(ThreadedSlot<float>(record, direction)(x.data(), 2, &record), dft::DFT_NO_MEMORY);
        EXPECT_EQ(allocator.Live(), before);
    }
}

} // namespace
