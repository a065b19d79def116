// Plans for powers of two by themselves: the table of the bit reversal, runs of every order, scaling. Their other
// tables and their refusals are the matter of PlanTest.cpp.
#include "dft/plans/dft_plan.h"

#include "common/GuardedBuffer.h"
#include "common/VectorClassTest.h"
#include "dft/plans/plan_runs.h"
#include "dft/pow2/bit_reversal.h"
#include "reference/dft_slow.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

namespace {

using dft::BasicFftPlan;
using dft::Complex;

template <typename Real>
struct FreeFftPlan {
    void operator()(BasicFftPlan<Real>* plan) const { dft::fft_plan_free(plan); }
};
template <typename Real>
using FftPlanPointer = std::unique_ptr<BasicFftPlan<Real>, FreeFftPlan<Real>>;

template <typename Real>
FftPlanPointer<Real> MakeFftPlan(int order, int normFlag = dft::kUnscaled) {
    BasicFftPlan<Real>* plan = nullptr;
    EXPECT_EQ(dft::fft_plan_create(&plan, order, normFlag, 0), dft::kPlanOk) << "order " << order;
    return FftPlanPointer<Real>(plan);
}

// Each block of the first pass is in one pair, and the indices of a pair are each other's bits reversed.
TEST(FftPlan, PairsOfTheBitReversal) {
    for (int order = 4; order < 15; ++order) {
        const auto plan = MakeFftPlan<float>(order);
        const int bits = order - (order % 2 == 0 ? 2 : 3);
        std::vector<int> seen(std::size_t{1} << bits);
        for (std::int32_t k = 0; k < plan->bit_reversal[0]; ++k) {
            const std::int32_t a = plan->bit_reversal[1 + 2 * k];
            const std::int32_t b = plan->bit_reversal[2 + 2 * k];
            ASSERT_EQ(a, dft::ReverseBits(b, bits)) << "order " << order << ", pair " << k;
            ++seen[static_cast<std::size_t>(a)];
            seen[static_cast<std::size_t>(b)] += a != b ? 1 : 0;
        }
        EXPECT_EQ(std::count(seen.begin(), seen.end(), 1), std::ptrdiff_t{1} << bits) << "order " << order;
    }
}

template <typename Real>
const dft::PlanRuns<Real>& ActiveRuns() {
    if constexpr (sizeof(Real) == sizeof(float)) {
        return dft::ActivePlanRunsSingle();
    } else {
        return dft::ActivePlanRunsDouble();
    }
}

// The last lane of a batch of which the others hold zeros.
template <typename Real>
std::vector<Complex<Real>> RunInBatch(int direction, const std::vector<Complex<Real>>& x) {
    dft::BasicDftPlan<Real>* plan = nullptr;
    EXPECT_EQ(dft::dft_plan_create(&plan, static_cast<int>(x.size()), dft::kUnscaled, 0), dft::kPlanOk);
    const auto lanes = static_cast<std::size_t>(ActiveRuns<Real>().lanes);
    GuardedBuffer<Real> batch(2 * x.size() * lanes);
    GuardedBuffer<unsigned char> work(static_cast<std::size_t>(plan->work_bytes) * lanes);
    for (std::size_t k = 0; k < x.size(); ++k) {
        batch.Write((2 * k + 1) * lanes - 1, x[k].re);
        batch.Write((2 * k + 2) * lanes - 1, x[k].im);
    }
    ActiveRuns<Real>().batch[direction](*plan, batch.data(), batch.data(), work.data());
    std::vector<Complex<Real>> result(x.size());
    for (std::size_t k = 0; k < x.size(); ++k) {
        result[k] = {batch.Read((2 * k + 1) * lanes - 1), batch.Read((2 * k + 2) * lanes - 1)};
    }
    dft::dft_plan_free(plan);
    return result;
}

template <typename Real>
void CheckOrder(int order) {
    SCOPED_TRACE(::testing::Message() << "order " << order << ", bytes " << sizeof(Real));
    const std::size_t n = std::size_t{1} << order;
    const auto plan = MakeFftPlan<Real>(order);
    const auto x = dft_slow::RandomLine<Complex<Real>>(n, 3);
    for (const int sign : {-1, 1}) {
        const auto run = sign < 0 ? dft::fft_plan_forward<Real> : dft::fft_plan_backward<Real>;
        std::vector<Complex<Real>> apart(n);
        EXPECT_EQ(run(x.data(), apart.data(), plan.get(), nullptr), dft::kPlanOk);
        const double bound = 0.45 * std::numeric_limits<Real>::epsilon() * std::sqrt(1.0 + order);
        EXPECT_LE(dft_slow::RelativeError(apart, dft_slow::Transform(x, sign)), bound) << "sign " << sign;

        // In place, in work memory of just the size that the plan asks for, and nothing on more than 8 bytes.
        constexpr std::size_t kOff = 8;
        GuardedBuffer<unsigned char> work(static_cast<std::size_t>(plan->work_bytes), kOff);
        GuardedBuffer<Complex<Real>> data(n, kOff);
        std::copy(x.begin(), x.end(), data.data());
        EXPECT_EQ(run(data.data(), data.data(), plan.get(), work.size() > 0 ? work.data() : nullptr), dft::kPlanOk);
        EXPECT_TRUE(SameBytes(apart.data(), data.data(), n));
        EXPECT_TRUE(data.GuardsIntact());
        EXPECT_TRUE(work.GuardsIntact());

        const auto ofBatch = RunInBatch(sign < 0 ? dft::kForward : dft::kBackward, x);
        EXPECT_TRUE(SameBytes(apart.data(), ofBatch.data(), n));
    }
}

class FftPlanTest : public VectorClassTest {};

TEST_P(FftPlanTest, EqualsTheDefinitionInPlaceApartAndInBatches) {
    for (int order = 0; order <= 17; ++order) {
        CheckOrder<float>(order);
        CheckOrder<double>(order);
    }
}

CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(FftPlanTest);

TEST(FftPlan, NormalisationFlags) {
    struct Row {
        int flag;
        float scales[2]; // of 2^4 elements, forward and backward
    };
    for (const Row& row : {Row{dft::kForwardByLength, {1 / 16.0f, 1}}, Row{dft::kBackwardByLength, {1, 1 / 16.0f}},
                           Row{dft::kBothBySquareRoot, {0.25f, 0.25f}}, Row{dft::kUnscaled, {1, 1}}}) {
        const auto plan = MakeFftPlan<float>(4, row.flag);
        const std::vector<Complex<float>> ones(16, {1, 0});
        std::vector<Complex<float>> sums(16);
        for (int k = 0; k < 2; ++k) {
            const auto run = k == 0 ? dft::fft_plan_forward<float> : dft::fft_plan_backward<float>;
            EXPECT_EQ(run(ones.data(), sums.data(), plan.get(), nullptr), dft::kPlanOk);
            EXPECT_EQ(sums[0].re, 16 * row.scales[k]) << "flag " << row.flag;
        }
    }
}

} // namespace
