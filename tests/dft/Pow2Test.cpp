// The power-of-two path: orders of the spectrum, scale factors, and the agreement of its forms. That its results are
// right, and with them its tables, is the matter of TransformTest.cpp, through the front entries.
#include "dft/pow2/pow2.h"

#include "common/GuardedBuffer.h"
#include "common/VectorClassTest.h"
#include "dft/TestJob.h"
#include "dft/TestSurroundings.h"
#include "dft/base/record_fields.h"
#include "dft/pow2/bit_reversal.h"
#include "dft/pow2/commit_table.h"
#include "dft/pow2/pow2_form.h"
#include "dft/pow2/pow2_runs.h"
#include "reference/dft_slow.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
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

/// Bytes between which the tables of the first three variants begin; the fourth has those of the third.
constexpr std::uintptr_t kTableAlignments[] = {16, 32, 64};

// Wherever the block begins, the table does at a multiple of the variant's alignment, and keeps within the block.
template <typename Real>
void CheckCommitTable(int bits, int variant) {
    SCOPED_TRACE(::testing::Message() << "variant " << variant << ", 2^" << bits << ", bytes " << sizeof(Real));
    const auto& tuning = dft::dft_tuning_of(variant);
    GuardedBuffer<unsigned char> block(((sizeof(Real) == sizeof(float) ? 3 : 6) * (std::size_t{1} << bits) / 2 + 64) *
                                       8);
    dft::BuildCommitTable<Real>(bits, block.data(), tuning);
    Real header[2];
    std::memcpy(header, block.bytes(), sizeof header);
    EXPECT_EQ(header[0], 1 << bits);
    EXPECT_EQ(header[1], 0);
    const auto start = reinterpret_cast<std::uintptr_t>(block.bytes());
    const auto address = start + static_cast<std::uintptr_t>(dft::TableOffset(block.data(), tuning));
    const std::uintptr_t alignment = kTableAlignments[variant];
    EXPECT_EQ(address % alignment, 0u);
    EXPECT_EQ(address / alignment, start / alignment + 1);
    EXPECT_TRUE(block.GuardsIntact());
}

TEST(Pow2, CommitTableByLength) {
    for (int variant = 0; variant < 3; ++variant) {
        for (int bits = 0; bits <= 16; ++bits) {
            CheckCommitTable<float>(bits, variant);
            CheckCommitTable<double>(bits, variant);
        }
    }
}

// Groups are a matter of caches alone and show in no result; of blocks an odd power of two and the even one below it
// give the same bytes.
template <typename Real>
void CheckForm(int variant, int bits, int groupBits, int blockBits) {
    SCOPED_TRACE(::testing::Message() << "variant " << variant << ", 2^" << bits << ", bytes " << sizeof(Real));
    const TestNumber code(dft::dft_variant_code, variant);
    const TestJob<Real> job({1 << bits});
    const auto form = dft::FormOf<Real>(*job.handle, dft::kForward);
    EXPECT_EQ(form.groupBits, groupBits);
    EXPECT_EQ(form.blockBits, blockBits);
}

TEST(Pow2, LengthsFallIntoGroupsAndBlocks) {
    for (const int variant : {0, 1}) {
        CheckForm<float>(variant, 10, 10, 10);
        CheckForm<float>(variant, 14, 10, 10);
    }
    CheckForm<float>(0, 15, 14, 10);
    CheckForm<float>(1, 15, 10, 10);
    CheckForm<float>(1, 16, 15, 9);
    for (const int variant : {2, 3}) {
        CheckForm<float>(variant, 12, 12, 12);
        CheckForm<float>(variant, 13, 10, 10);
        CheckForm<float>(variant, 15, 14, 9);
    }
    for (const int variant : {0, 1, 2, 3}) {
        CheckForm<double>(variant, 9, 9, 9);
        CheckForm<double>(variant, 11, 10, 10);
        CheckForm<double>(variant, 13, 10, 10);
        CheckForm<double>(variant, 14, 13, 9);
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
Line<Real> RunSlot(dft::DftDescriptor& record, dft::Direction direction, const Line<Real>& input) {
    GuardedBuffer<Complex<Real>> data(input.size(), 8);
    std::copy(input.begin(), input.end(), data.data());
    EXPECT_EQ(dft::Slot<Real>(record, direction)(data.data(), nullptr, &record, nullptr), dft::DFT_OK);
    EXPECT_TRUE(data.GuardsIntact());
    return Line<Real>(data.data(), data.data() + data.size());
}

// Columns where they lie, among others, have the bytes that `results` holds of their lines; the others stay.
template <typename Real>
void CheckColumns(dft::DftDescriptor& record, dft::Direction direction, const std::vector<Line<Real>>& lines,
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
    dft::DftDescriptor& record = *job.handle;
    const auto lanes = static_cast<std::size_t>(ActiveRuns<Real>().lanes);
    const Line<Real> base = RandomLine<Real>(bits);
    GuardedBuffer<Real> batch(2 * n * lanes);
    GuardedBuffer<Real> scratch(2 * n * lanes);
    for (const dft::Direction direction : {dft::kForward, dft::kBackward}) {
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
    dft::DftDescriptor& record = *job.handle;
    SetScales<Real>(record, 0.1, 0.1);
    const Line<Real> x = RandomLine<Real>(bits);
    for (const dft::Direction direction : {dft::kForward, dft::kBackward}) {
        for (const std::int32_t ordering : kOrderings) {
            record.ordering = ordering;
            const Line<Real> serial = RunSlot(record, direction, x);
            Line<Real> threaded = x;
            EXPECT_EQ(dft::ThreadedSlot<Real>(record, direction)(threaded.data(), threads, &record), dft::DFT_OK);
            const auto form = dft::FormOf<Real>(record, direction);
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
        for (int bits = 0; bits <= 17; ++bits) {
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
    dft::DftDescriptor& record = *job.handle;
    const Real factor = static_cast<Real>(0.3125L); // so short that the x87 unit, too, rounds a product once
    const auto scaled = [factor](Line<Real> line) {
        for (Complex<Real>& element : line) {
            element = {element.re * factor, element.im * factor};
        }
        return line;
    };
    const Line<Real> x = RandomLine<Real>(bits);
    for (const dft::Direction direction : {dft::kForward, dft::kBackward}) {
        const bool last = direction == dft::kBackward || (variant == 1 && sizeof(Real) == 4);
        SetScales<Real>(record, 1, 1);
        const Line<Real> expected =
            last ? scaled(RunSlot(record, direction, x)) : RunSlot(record, direction, scaled(x));
        SetScales<Real>(record, direction == dft::kForward ? 0.3125 : 1, direction == dft::kForward ? 1 : 0.3125);
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

} // namespace
