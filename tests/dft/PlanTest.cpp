// Plans by themselves: structure, statuses, scaling, and the runs of every power of two. What their other runs compute,
// and with it what their tables hold, is the matter of TransformTest.cpp.
#include "dft/plans/dft_plan.h"

#include "common/GuardedBuffer.h"
#include "common/VectorClassTest.h"
#include "dft/TestSurroundings.h"
#include "dft/plans/plan_runs.h"
#include "dft/real/real_plan.h"
#include "reference/dft_slow.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <ostream>
#include <vector>

namespace {

using dft::BasicDftPlan;
using dft::BasicFftPlan;
using dft::Complex;

struct FreePlan {
    template <typename Real>
    void operator()(BasicDftPlan<Real>* plan) const {
        dft::dft_plan_free(plan);
    }
    template <typename Real>
    void operator()(BasicFftPlan<Real>* plan) const {
        dft::fft_plan_free(plan);
    }
};

template <typename Real>
std::unique_ptr<BasicDftPlan<Real>, FreePlan> MakePlan(int length, int normFlag = dft::kUnscaled) {
    BasicDftPlan<Real>* plan = nullptr;
    EXPECT_EQ(dft::dft_plan_create(&plan, length, normFlag, 0), dft::kPlanOk) << "length " << length;
    return std::unique_ptr<BasicDftPlan<Real>, FreePlan>(plan);
}
template <typename Real>
std::unique_ptr<BasicFftPlan<Real>, FreePlan> MakeFftPlan(int order, int normFlag = dft::kUnscaled) {
    BasicFftPlan<Real>* plan = nullptr;
    EXPECT_EQ(dft::fft_plan_create(&plan, order, normFlag, 0), dft::kPlanOk) << "order " << order;
    return std::unique_ptr<BasicFftPlan<Real>, FreePlan>(plan);
}

template <typename Real>
class DftPlanTest : public ::testing::Test {};
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(DftPlanTest, Precisions);

enum class Method { Unrolled, PowerOfTwo, MixedRadix, DirectSum, Bluestein };

template <typename Real>
Method MethodOf(const BasicDftPlan<Real>& plan) {
    const std::vector<bool> marks = {
        plan.power_of_two == 1 && plan.fft_plan != nullptr, plan.mixed_radix == 1 && plan.digit_reversal != nullptr,
        plan.direct_matrix != nullptr, plan.bluestein_length > 0 && plan.bluestein_fft_plan != nullptr};
    EXPECT_LE(std::count(marks.begin(), marks.end(), true), 1);
    const auto mark = std::find(marks.begin(), marks.end(), true);
    return mark == marks.end() ? Method::Unrolled : static_cast<Method>(1 + (mark - marks.begin()));
}

struct MethodRow {
    int length;
    Method method;
    int workReals; ///< work_bytes less 16, in real numbers; -1: what the inner plan asks for
    int bluesteinLength;
};

template <typename Real>
void CheckMethod(const BasicDftPlan<Real>& plan, std::int32_t tag, int points, const MethodRow& row) {
    SCOPED_TRACE(::testing::Message() << "length " << row.length << ", tag " << tag);
    EXPECT_EQ((std::vector{plan.tag, plan.length, plan.norm_flag, plan.compact_tables, plan.bluestein_length}),
              (std::vector<std::int32_t>{tag, row.length, dft::kUnscaled, 0, row.bluesteinLength}));
    ASSERT_EQ(MethodOf(plan), row.method);
    constexpr int kReal = static_cast<int>(sizeof(Real));
    int work = row.method == Method::Unrolled ? 0 : kReal * row.workReals + 16;
    if (row.method == Method::PowerOfTwo) {
        work = row.workReals < 0 ? plan.fft_plan->work_bytes : work;
        EXPECT_EQ(1 << plan.fft_plan->order, points);
    } else if (row.method == Method::Bluestein) {
        work = kReal * 2 * row.bluesteinLength + 16 + plan.bluestein_fft_plan->work_bytes;
        EXPECT_EQ(1 << plan.bluestein_fft_plan->order, row.bluesteinLength);
    }
    EXPECT_EQ(plan.work_bytes, work);
}

TYPED_TEST(DftPlanTest, LengthChoosesTheMethod) {
    using enum Method;
    const MethodRow rows[] = {
        {1, Unrolled, 0, 0},           {4, Unrolled, 0, 0},           {5, DirectSum, 10, 0},
        {6, MixedRadix, 12, 0},        {8, PowerOfTwo, -1, 0},        {9, MixedRadix, 18, 0},
        {14, MixedRadix, 42, 0},       {16, PowerOfTwo, 32, 0},       {64, PowerOfTwo, 128, 0},
        {149, DirectSum, 298, 0},      {150, MixedRadix, 300, 0},     {151, Bluestein, -1, 512},
        {257, Bluestein, -1, 1024},    {298, MixedRadix, 894, 0},     {302, Bluestein, -1, 1024},
        {453, Bluestein, -1, 1024},    {513, MixedRadix, 1064, 0},    {1124, Bluestein, -1, 4096},
        {1201, Bluestein, -1, 4096},   {2048, PowerOfTwo, 4096, 0},   {2101, Bluestein, -1, 8192},
        {22201, MixedRadix, 44700, 0}, {22499, Bluestein, -1, 65536}, {32768, PowerOfTwo, 65536, 0},
    };
    for (const MethodRow& row : rows) {
        const auto plan = MakePlan<TypeParam>(row.length);
        CheckMethod(*plan, dft::kDftPlanTag, row.length, row);
        int bytes = -1;
        EXPECT_EQ(dft::dft_plan_work_size(plan.get(), &bytes), dft::kPlanOk);
        EXPECT_EQ(bytes, plan->work_bytes);
    }
    const MethodRow realRows[] = {
        {1, Unrolled, 0, 0},         {4, Unrolled, 0, 0},       {6, DirectSum, 6, 0},        {8, PowerOfTwo, -1, 0},
        {12, MixedRadix, 12, 0},     {179, DirectSum, 179, 0},  {180, MixedRadix, 180, 0},   {181, Bluestein, -1, 512},
        {298, DirectSum, 298, 0},    {302, Bluestein, -1, 512}, {1001, MixedRadix, 2028, 0}, {1024, PowerOfTwo, -1, 0},
        {2002, MixedRadix, 2028, 0},
    };
    for (const MethodRow& row : realRows) {
        dft::BasicRealDftPlan<TypeParam>* plan = nullptr;
        ASSERT_EQ(dft::real_plan_create(&plan, row.length, dft::kUnscaled, 0), dft::kPlanOk);
        CheckMethod(*plan, dft::kRealPlanTag, row.length / 2, row);
        dft::real_plan_free(plan);
    }
}

struct Stage {
    int radix, span, stride, count;
    friend bool operator==(const Stage&, const Stage&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Stage& s) {
        return out << '{' << s.radix << ", " << s.span << ", " << s.stride << ", " << s.count << '}';
    }
};

TYPED_TEST(DftPlanTest, StagesAndDigitReversal) {
    struct Case {
        int length;
        std::vector<Stage> stages;
        std::vector<int> reversal; ///< none: not looked at
    };
    const std::vector<Case> cases = {
        {6, {{2, 3, 1, 1}}, {0}},
        {9, {{3, 3, 1, 1}}, {}},
        {12, {{4, 3, 1, 1}}, {}},
        {24, {{2, 12, 1, 1}, {4, 3, 2, 2}}, {0, 1}},
        {96, {{2, 48, 1, 1}, {4, 12, 2, 2}, {4, 3, 8, 8}}, {0, 2, 4, 6, 1, 3, 5, 7}},
        {612, {{4, 153, 1, 1}, {3, 51, 4, 4}, {3, 17, 12, 12}}, {}},
        {1078, {{2, 539, 1, 1}, {7, 77, 2, 2}, {7, 11, 14, 14}}, {}},
        {1400, {{2, 700, 1, 1}, {4, 175, 2, 2}, {5, 35, 8, 8}, {5, 7, 40, 40}}, {}},
        {2000, {{4, 500, 1, 1}, {4, 125, 4, 4}, {5, 25, 16, 16}, {5, 5, 80, 80}}, {}}, // just one group
        {2010, {{2, 1005, 1, 1}, {3, 335, 2, 1}, {5, 67, 6, 3}}, {}},                  // and just two
        // The first radix lies outside the group and only multiplies.
        {2100,
         {{4, 525, 1, 1}, {3, 175, 4, 1}, {5, 35, 12, 3}, {5, 7, 60, 15}},
         {0, 12, 24, 36, 48, 4, 16, 28, 40, 52, 8, 20, 32, 44, 56}},
        {4100, {{4, 1025, 1, 1}, {5, 205, 4, 1}, {5, 41, 20, 5}}, {0, 4, 8, 12, 16}},
        {22201, {{149, 149, 1, 1}}, {}},
        {31209, {{3, 10403, 1, 1}, {101, 103, 3, 1}}, {0}},
        {44100,
         {{4, 11025, 1, 1}, {3, 3675, 4, 1}, {3, 1225, 12, 1}, {5, 245, 36, 1}, {5, 49, 180, 5}, {7, 7, 900, 25}},
         {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << "length " << c.length);
        const auto plan = MakePlan<TypeParam>(c.length);
        std::vector<Stage> stages;
        for (int k = 0; k <= plan->last_stage; ++k) {
            const auto& s = plan->stages[k];
            stages.push_back({s.radix, s.span, s.stride, s.count});
        }
        EXPECT_EQ(stages, c.stages);
        if (!c.reversal.empty()) {
            const int count = plan->stages[plan->last_stage].count;
            EXPECT_EQ(std::vector<int>(plan->digit_reversal, plan->digit_reversal + count), c.reversal);
        }
    }
}

// One length for each method.
constexpr int kMethodLengths[] = {3, 13, 60, 64, 302};

struct Normalisation {
    int flag;
    bool forward, backward; ///< the scaled directions
    bool isRoot;            ///< by 1 / sqrt(n), not 1 / n
};
constexpr Normalisation kNormalisations[] = {{dft::kForwardByLength, true, false, false},
                                             {dft::kBackwardByLength, false, true, false},
                                             {dft::kBothBySquareRoot, true, true, true},
                                             {dft::kUnscaled, false, false, false}};

template <typename Real, typename Run>
void ExpectScaled(const Normalisation& row, int length, int sign, Run run) {
    SCOPED_TRACE(::testing::Message() << "flag " << row.flag << ", length " << length << ", sign " << sign);
    const auto x = dft_slow::RandomLine<Complex<Real>>(static_cast<std::size_t>(length), 1);
    std::vector<Complex<Real>> result(x.size());
    dft_slow::WideLine wide = dft_slow::Transform(x, sign);
    const long double n = length;
    for (dft_slow::Wide& element : wide) {
        element /= !(sign < 0 ? row.forward : row.backward) ? 1 : row.isRoot ? std::sqrt(n) : n;
    }
    EXPECT_EQ(run(x.data(), result.data()), dft::kPlanOk);
    EXPECT_LT(dft_slow::RelativeError(result, wide), 8 * std::numeric_limits<Real>::epsilon());
}

TYPED_TEST(DftPlanTest, NormalisationFlags) {
    for (const Normalisation& row : kNormalisations) {
        for (const int sign : {-1, 1}) {
            for (const int length : kMethodLengths) {
                const auto plan = MakePlan<TypeParam>(length, row.flag);
                EXPECT_EQ(plan->norm_flag, row.flag);
                EXPECT_EQ(plan->scale_forward != 0, row.forward);
                EXPECT_EQ(plan->scale_backward != 0, row.backward);
                const auto run = sign < 0 ? dft::dft_plan_forward<TypeParam> : dft::dft_plan_backward<TypeParam>;
                ExpectScaled<TypeParam>(row, length, sign,
                                        [&](auto x, auto y) { return run(x, y, plan.get(), nullptr); });
            }
            const auto plan = MakeFftPlan<TypeParam>(5, row.flag);
            const auto run = sign < 0 ? dft::fft_plan_forward<TypeParam> : dft::fft_plan_backward<TypeParam>;
            ExpectScaled<TypeParam>(row, 32, sign, [&](auto x, auto y) { return run(x, y, plan.get(), nullptr); });
        }
    }
    for (const int flag : {0, 3, 5, 9, 16, -1}) {
        for (const int length : kMethodLengths) {
            BasicDftPlan<TypeParam> before;
            BasicDftPlan<TypeParam>* plan = &before;
            EXPECT_EQ(dft::dft_plan_create(&plan, length, flag, 0), dft::kPlanBadNormalisation) << "flag " << flag;
            EXPECT_EQ(plan, nullptr);
        }
    }
}

TYPED_TEST(DftPlanTest, Refusals) {
    using Plan = BasicDftPlan<TypeParam>;
    EXPECT_EQ(dft::dft_plan_create<TypeParam>(nullptr, 0, 0, 0), dft::kPlanNullPointer);
    for (const int length : {0, -1, std::numeric_limits<int>::min()}) {
        Plan* plan = nullptr;
        EXPECT_EQ(dft::dft_plan_create(&plan, length, 0, 0), dft::kPlanBadLength) << "length " << length;
    }
    const TestNumber enabled(dft::fast_mm_disabled, 0);
    TestAllocator allocator;
    const auto plan = MakePlan<TypeParam>(6);
    Plan wrongTag{};
    wrongTag.tag = dft::kRealPlanTag;
    wrongTag.length = 3;
    Complex<TypeParam> data[16] = {};
    int bytes = 0;
    EXPECT_EQ(dft::dft_plan_work_size<TypeParam>(nullptr, &bytes), dft::kPlanNullPointer);
    EXPECT_EQ(dft::dft_plan_work_size(&wrongTag, &bytes), dft::kPlanBadTag);
    for (const auto run : {dft::dft_plan_forward<TypeParam>, dft::dft_plan_backward<TypeParam>}) {
        EXPECT_EQ(run(data, data, nullptr, nullptr), dft::kPlanNullPointer);
        EXPECT_EQ(run(nullptr, data, &wrongTag, nullptr), dft::kPlanBadTag); // before the data is looked at
        EXPECT_EQ(run(nullptr, data, plan.get(), nullptr), dft::kPlanNullPointer);
        EXPECT_EQ(run(data, nullptr, plan.get(), nullptr), dft::kPlanNullPointer);
        allocator.Refuse(0); // of its own work memory
        EXPECT_EQ(run(data, data, plan.get(), nullptr), dft::kPlanNoMemory);
    }
    dft::dft_plan_free<TypeParam>(nullptr);

    const auto fftPlan = MakeFftPlan<TypeParam>(4);
    BasicFftPlan<TypeParam>* fft = nullptr;
    EXPECT_EQ(dft::fft_plan_create<TypeParam>(nullptr, 4, dft::kUnscaled, 0), dft::kPlanNullPointer);
    EXPECT_EQ(dft::fft_plan_create(&fft, -1, dft::kUnscaled, 0), dft::kPlanBadOrder);
    EXPECT_EQ(dft::fft_plan_create(&fft, 31, dft::kUnscaled, 0), dft::kPlanBadOrder);
    EXPECT_EQ(dft::fft_plan_create(&fft, 4, 3, 0), dft::kPlanBadNormalisation);
    BasicFftPlan<TypeParam> otherTag{};
    for (const auto run : {dft::fft_plan_forward<TypeParam>, dft::fft_plan_backward<TypeParam>}) {
        EXPECT_EQ(run(data, data, nullptr, nullptr), dft::kPlanNullPointer);
        EXPECT_EQ(run(nullptr, data, &otherTag, nullptr), dft::kPlanBadTag);
        allocator.Refuse(0);
        EXPECT_EQ(run(data, data, fftPlan.get(), nullptr), dft::kPlanNoMemory);
    }
    dft::fft_plan_free<TypeParam>(nullptr);
}

// The last lane of a batch of which the others hold zeros.
template <typename Real>
std::vector<Complex<Real>> RunInBatch(int direction, const std::vector<Complex<Real>>& x) {
    const auto plan = MakePlan<Real>(static_cast<int>(x.size()));
    const auto lanes = static_cast<std::size_t>(dft::ActivePlanRuns<Real>().lanes);
    GuardedBuffer<Real> batch(2 * x.size() * lanes);
    GuardedBuffer<unsigned char> work(static_cast<std::size_t>(plan->work_bytes) * lanes);
    for (std::size_t k = 0; k < x.size(); ++k) {
        batch.Write((2 * k + 1) * lanes - 1, x[k].re);
        batch.Write((2 * k + 2) * lanes - 1, x[k].im);
    }
    dft::ActivePlanRuns<Real>().batch[direction](*plan, batch.data(), batch.data(), work.data());
    std::vector<Complex<Real>> result(x.size());
    for (std::size_t k = 0; k < x.size(); ++k) {
        result[k] = {batch.Read((2 * k + 1) * lanes - 1), batch.Read((2 * k + 2) * lanes - 1)};
    }
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

} // namespace
