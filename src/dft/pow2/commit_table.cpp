#include "dft/pow2/commit_table.h"

#include "dft/base/variant.h"
#include "dft/pow2/pow2.h"
#include "dft/pow2/roots.h"
#include "dft/pow2/stage_tables.h"

#include <cmath>
#include <cstddef>

namespace dft {
namespace {

/// The radix-2 stages.
template <typename Real>
void FillStages(Real* base, int log2_length) {
    for (int bits = log2_length; bits >= kLastStageBits; --bits) {
        RootSeries<Real> roots(std::int64_t{1} << bits);
        base = WriteStage(base, std::int64_t{1} << (bits - 2), 1, [&](std::int64_t) { return roots.Next(); });
    }
}

template <typename Real>
Complex<Real> Product(Complex<Real> a, Complex<Real> b) {
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}

template <typename Real>
void FillTriples(Real* base, int log2_length) {
    const int bits = log2_length - 2;
    RootSeries<Real> roots(std::int64_t{1} << log2_length);
    for (std::int32_t r = 0; r < 1 << bits; ++r) {
        const Complex<Real> w1 = roots.Next();
        const Complex<Real> w2 = Product(w1, w1);
        const Complex<Real> w3 = Product(w2, w1);
        Real* triple = base + std::ptrdiff_t{6} * ReverseBits(r, bits);
        for (const Complex<Real>& w : {w1, w2, w3}) {
            *triple++ = w.re;
            *triple++ = w.im;
        }
    }
}

/// The three lists from `lists` on, each behind its count.
void FillLists(std::int32_t* lists, int log2_length) {
    const int bits = log2_length - 4;
    const std::int32_t blocks = 1 << bits;
    *lists = blocks;
    std::int32_t* const reversals = lists + 1;
    std::int32_t* const swapCount = reversals + blocks;
    std::int32_t* end = swapCount + 1;
    for (std::int32_t m = 0; m < blocks; ++m) {
        reversals[m] = ReverseBits(m, bits);
        if (m < reversals[m]) {
            *end++ = m;
        }
    }
    *swapCount = static_cast<std::int32_t>(end - swapCount) - 1;
    std::int32_t* const pairCount = end++;
    const auto index = [=](std::int32_t m, std::int32_t place) {
        return (place / 4 << (log2_length - 2)) + 4 * m + place % 4;
    };
    for (std::int32_t m = 0; m < blocks; ++m) {
        for (std::int32_t place = 0; m == reversals[m] && place < 16; ++place) {
            if (place < ReverseBits(place, 4)) {
                *end++ = index(m, place);
                *end++ = index(m, ReverseBits(place, 4));
            }
        }
    }
    *pairCount = static_cast<std::int32_t>(end - pairCount) / 2;
}

/// Whether the twiddles are triples by block.
template <typename Real>
bool HasTriples(int log2_length) {
    return log2_length >= kFirstTripleBits || 1 << log2_length > dft_tuning().two_level_up_to[kPrecision<Real>];
}

/// Bytes from the block to the base, 16 or more.
std::ptrdiff_t BaseOffset(const void* block) {
    const auto alignment = static_cast<std::uintptr_t>(dft_tuning().table_alignment);
    return static_cast<std::ptrdiff_t>(alignment - reinterpret_cast<std::uintptr_t>(block) % alignment);
}

template <typename Real>
void Build(int log2_length, void* block) {
    Real* const header = static_cast<Real*>(block);
    header[0] = std::ldexp(Real{1}, log2_length);
    header[1] = Real{0};
    Real* const base = header + BaseOffset(block) / static_cast<std::ptrdiff_t>(sizeof(Real));
    if (log2_length == 3) {
        base[4] = Real(kCosEighth);
    } else if (HasTriples<Real>(log2_length)) {
        FillTriples(base, log2_length);
    } else if (log2_length > kStaticBits) {
        FillStages(base, log2_length);
    }
    if (log2_length >= kFirstListBits) {
        FillLists(reinterpret_cast<std::int32_t*>(base + (std::ptrdiff_t{2} << log2_length)), log2_length);
    }
}

} // namespace

template <typename Real>
CommitTable<Real> ReadCommitTable(int log2_length, const void* block) {
    const auto* const bytes = static_cast<const unsigned char*>(block);
    const auto* const base = reinterpret_cast<const Real*>(bytes + BaseOffset(block));
    const bool hasTriples = HasTriples<Real>(log2_length);
    CommitTable<Real> table = {};
    table.triples = hasTriples ? base : nullptr;
    table.stages = !hasTriples && log2_length > kStaticBits ? base : nullptr;
    if (log2_length >= kFirstListBits) {
        const auto* const words = reinterpret_cast<const std::int32_t*>(base + (std::ptrdiff_t{2} << log2_length));
        const std::int32_t* const swapCount = words + 1 + words[0];
        const std::int32_t* const pairCount = swapCount + 1 + *swapCount;
        table.lists = {words + 1, swapCount + 1, *swapCount, pairCount + 1, *pairCount};
    }
    return table;
}

template CommitTable<float> ReadCommitTable(int, const void*);
template CommitTable<double> ReadCommitTable(int, const void*);

void c1d_table_build(int log2_length, void* block) {
    Build<float>(log2_length, block);
}
void z1d_table_build(int log2_length, void* block) {
    Build<double>(log2_length, block);
}

} // namespace dft
