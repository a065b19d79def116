// Plans by themselves: structure, statuses, scaling, and where their runs write. What the runs compute, and with it
// what their tables hold, is the matter of TransformTest.cpp and RealTest.cpp.
#include "dft/plans/dft_plan.h"

#include "common/GuardedBuffer.h"
#include "common/VectorClassTest.h"
#include "dft/TestJob.h"
#include "dft/TestSurroundings.h"
#include "dft/real/real_plan.h"
#include "reference/dft_slow.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

namespace {

constexpr int kMaximum = std::numeric_limits<int>::max();

/// A size that is refused, and how.
struct RefusedSize {
    int size;
    std::int32_t status;
};

// The three kinds of plans: their operations, sizes for every method, and how many real numbers make up an input.
template <typename T>
struct General {
    using Real = T;
    using Plan = dft::BasicDftPlan<T>;
    using Element = dft::Complex<T>;
    static constexpr auto kCreate = dft::dft_plan_create<T>;
    static constexpr auto kFree = dft::dft_plan_free<T>;
    static constexpr auto kForward = dft::dft_plan_forward<T>;
    static constexpr auto kBackward = dft::dft_plan_backward<T>;
    static constexpr auto kWorkSize = dft::dft_plan_work_size<T>;
    static std::vector<int> Sizes() { return {1, 2, 3, 4, 13, 60, 64, 302, 2100}; }
    static std::size_t Numbers(int length) { return 2 * static_cast<std::size_t>(length); }
    static std::vector<RefusedSize> RefusedSizes() {
        return {{0, -6}, {-1, -6}, {std::numeric_limits<int>::min(), -6}, {kMaximum, -9}};
    }
};
template <typename T>
struct PowerOfTwo {
    using Real = T;
    using Plan = dft::BasicFftPlan<T>;
    using Element = dft::Complex<T>;
    static constexpr auto kCreate = dft::fft_plan_create<T>;
    static constexpr auto kFree = dft::fft_plan_free<T>;
    static constexpr auto kForward = dft::fft_plan_forward<T>;
    static constexpr auto kBackward = dft::fft_plan_backward<T>;
    static std::vector<int> Sizes() { return {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17}; }
    static std::size_t Numbers(int order) { return std::size_t{2} << order; }
    static std::vector<RefusedSize> RefusedSizes() { return {{-1, -15}, {31, -15}, {kMaximum, -15}}; }
};
template <typename T>
struct RealElements {
    using Real = T;
    using Plan = dft::BasicRealDftPlan<T>;
    using Element = T;
    static constexpr auto kCreate = dft::real_plan_create<T>;
    static constexpr auto kFree = dft::real_plan_free<T>;
    static constexpr auto kForward = dft::real_pack_forward<dft::DFT_PACK_NATIVE, T>;
    static constexpr auto kBackward = dft::real_pack_backward<dft::DFT_PACK_NATIVE, T>;
    static constexpr auto kWorkSize = dft::real_plan_work_size<T>;
    static std::vector<int> Sizes() { return {1, 2, 3, 4, 6, 9, 64, 179, 181, 302, 360, 1001}; }
    static std::size_t Numbers(int length) { return static_cast<std::size_t>(length); }
    static std::vector<RefusedSize> RefusedSizes() { return {{0, -6}, {-1, -6}, {kMaximum, -9}}; }
};

template <typename Check>
void ForAllKinds(Check check) {
    check(General<float>{});
    check(General<double>{});
    check(PowerOfTwo<float>{});
    check(PowerOfTwo<double>{});
    check(RealElements<float>{});
    check(RealElements<double>{});
}

template <typename Kind>
auto MakePlan(int size, int normFlag = dft::kUnscaled) {
    typename Kind::Plan* plan = nullptr;
    EXPECT_EQ(Kind::kCreate(&plan, size, normFlag, 0), dft::kPlanOk) << "size " << size;
    return std::unique_ptr<typename Kind::Plan, decltype(Kind::kFree)>(plan, Kind::kFree);
}

/// The real numbers that make up an input.
template <typename Kind>
std::vector<typename Kind::Real> InputFor(int size) {
    std::vector<typename Kind::Real> numbers;
    for (const auto& x : dft_slow::RandomLine<dft::Complex<typename Kind::Real>>(Kind::Numbers(size), 3)) {
        numbers.push_back(x.re);
    }
    return numbers;
}

template <typename Kind>
std::int32_t RunPlan(const typename Kind::Plan* plan, int sign, const typename Kind::Real* x,
                     typename Kind::Real* result, void* work = nullptr) {
    using Element = typename Kind::Element;
    const auto* const from = reinterpret_cast<const Element*>(x);
    return (sign < 0 ? Kind::kForward : Kind::kBackward)(from, reinterpret_cast<Element*>(result), plan, work);
}

enum class Method { Unrolled, PowerOfTwo, MixedRadix, DirectSum, Bluestein };

struct MethodRow {
    int length;
    Method method;
    int workReals; ///< work_bytes less 16, in real numbers; -1: what the inner plan asks for
    int bluesteinLength;
};

template <typename Kind>
void CheckMethod(const MethodRow& row, int tag) {
    SCOPED_TRACE(::testing::Message() << "length " << row.length << ", tag " << tag);
    const auto plan = MakePlan<Kind>(row.length);
    EXPECT_EQ((std::vector{plan->tag, plan->length, plan->norm_flag, plan->compact_tables, plan->bluestein_length}),
              (std::vector<std::int32_t>{tag, row.length, dft::kUnscaled, 0, row.bluesteinLength}));
    ASSERT_EQ((std::vector<bool>{plan->power_of_two == 1 && plan->fft_plan != nullptr,
                                 plan->mixed_radix == 1 && plan->digit_reversal != nullptr,
                                 plan->direct_matrix != nullptr, plan->bluestein_fft_plan != nullptr}),
              (std::vector<bool>{row.method == Method::PowerOfTwo, row.method == Method::MixedRadix,
                                 row.method == Method::DirectSum, row.method == Method::Bluestein}));
    constexpr int kReal = static_cast<int>(sizeof(typename Kind::Real));
    int work = row.method == Method::Unrolled ? 0 : kReal * row.workReals + 16;
    if (row.method == Method::PowerOfTwo) {
        work = row.workReals < 0 ? plan->fft_plan->work_bytes : work;
        EXPECT_EQ(1 << plan->fft_plan->order, tag == dft::kRealPlanTag ? row.length / 2 : row.length);
    } else if (row.method == Method::Bluestein) {
        work = kReal * 2 * row.bluesteinLength + 16 + plan->bluestein_fft_plan->work_bytes;
        EXPECT_EQ(1 << plan->bluestein_fft_plan->order, row.bluesteinLength);
    }
    EXPECT_EQ(plan->work_bytes, work);
    int bytes = -1;
    EXPECT_EQ(Kind::kWorkSize(plan.get(), &bytes), dft::kPlanOk);
    EXPECT_EQ(bytes, work);
    EXPECT_EQ(Kind::kWorkSize(nullptr, &bytes), dft::kPlanNullPointer);
    plan->tag = tag - 1;
    EXPECT_EQ(Kind::kWorkSize(plan.get(), &bytes), dft::kPlanBadTag);
}

TEST(DftPlan, LengthChoosesTheMethod) {
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
        CheckMethod<General<float>>(row, dft::kDftPlanTag);
        CheckMethod<General<double>>(row, dft::kDftPlanTag);
    }
    const MethodRow realRows[] = {
        {1, Unrolled, 0, 0},         {4, Unrolled, 0, 0},       {6, DirectSum, 6, 0},        {8, PowerOfTwo, -1, 0},
        {12, MixedRadix, 12, 0},     {179, DirectSum, 179, 0},  {180, MixedRadix, 180, 0},   {181, Bluestein, -1, 512},
        {298, DirectSum, 298, 0},    {302, Bluestein, -1, 512}, {1001, MixedRadix, 2028, 0}, {1024, PowerOfTwo, -1, 0},
        {2002, MixedRadix, 2028, 0},
    };
    for (const MethodRow& row : realRows) {
        CheckMethod<RealElements<float>>(row, dft::kRealPlanTag);
        CheckMethod<RealElements<double>>(row, dft::kRealPlanTag);
    }
}

TEST(DftPlan, StagesAndDigitReversal) {
    struct Row {
        int length;
        std::vector<int> radices;
        std::vector<int> counts;   ///< blocks of each stage inside its group
        std::vector<int> reversal; ///< none: not looked at
    };
    const std::vector<Row> rows = {
        {6, {2}, {1}, {0}},
        {9, {3}, {1}, {}},
        {12, {4}, {1}, {}},
        {24, {2, 4}, {1, 2}, {0, 1}},
        {96, {2, 4, 4}, {1, 2, 8}, {0, 2, 4, 6, 1, 3, 5, 7}},
        {1078, {2, 7, 7}, {1, 2, 14}, {}},
        {2000, {4, 4, 5, 5}, {1, 4, 16, 80}, {}}, // just one group
        {2001, {3, 23}, {1, 1}, {}},              // and just two
        // The first radix lies outside the group and only multiplies.
        {2100, {4, 3, 5, 5}, {1, 1, 3, 15}, {0, 12, 24, 36, 48, 4, 16, 28, 40, 52, 8, 20, 32, 44, 56}},
        {22201, {149}, {1}, {}},
        {44100, {4, 3, 3, 5, 5, 7}, {1, 1, 1, 1, 5, 25}, {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(::testing::Message() << "length " << row.length);
        const auto plan = MakePlan<General<float>>(row.length);
        std::vector<int> radices;
        std::vector<int> counts;
        int stride = 1;
        for (int k = 0; k <= plan->last_stage; ++k) {
            const auto& stage = plan->stages[k];
            radices.push_back(stage.radix);
            counts.push_back(stage.count);
            EXPECT_EQ(stage.stride, stride);
            stride *= stage.radix;
            EXPECT_EQ(stage.span, row.length / stride);
        }
        EXPECT_EQ(radices, row.radices);
        EXPECT_EQ(counts, row.counts);
        if (!row.reversal.empty()) {
            EXPECT_EQ(std::vector<int>(plan->digit_reversal, plan->digit_reversal + counts.back()), row.reversal);
        }
    }
}

TEST(DftPlan, NormalisationFlags) {
    struct Row {
        int flag;
        double forward, backward; ///< powers of the number of elements
    };
    const Row rows[] = {{1, -1, 0}, {2, 0, -1}, {4, -0.5, -0.5}, {8, 0, 0}};
    ForAllKinds([&](auto kind) {
        using Kind = decltype(kind);
        for (const int size : Kind::Sizes()) {
            const auto unscaled = MakePlan<Kind>(size);
            const auto x = InputFor<Kind>(size);
            const double n = static_cast<double>(x.size() * sizeof(x[0]) / sizeof(typename Kind::Element));
            for (const Row& row : rows) {
                const auto plan = MakePlan<Kind>(size, row.flag);
                EXPECT_EQ(plan->scale_forward != 0, row.forward != 0);
                EXPECT_EQ(plan->scale_backward != 0, row.backward != 0);
                for (const int sign : kSigns) {
                    const double factor = std::pow(n, sign < 0 ? row.forward : row.backward);
                    auto expected = x;
                    auto result = x;
                    EXPECT_EQ(RunPlan<Kind>(unscaled.get(), sign, x.data(), expected.data()), dft::kPlanOk);
                    EXPECT_EQ(RunPlan<Kind>(plan.get(), sign, x.data(), result.data()), dft::kPlanOk);
                    const double tolerance = n * factor * std::numeric_limits<typename Kind::Real>::epsilon();
                    for (std::size_t k = 0; k < x.size(); ++k) {
                        ASSERT_NEAR(result[k], expected[k] * factor, tolerance)
                            << "size " << size << ", flag " << row.flag << ", sign " << sign;
                    }
                }
            }
        }
        for (const int flag : {0, 3, 5, 9, 16, -1}) {
            typename Kind::Plan before;
            typename Kind::Plan* plan = &before;
            EXPECT_EQ(Kind::kCreate(&plan, Kind::Sizes().back(), flag, 0), dft::kPlanBadNormalisation) << flag;
            EXPECT_EQ(plan, nullptr);
        }
    });
}

TEST(DftPlan, Refusals) {
    const TestNumber disabled(dft::fast_mm_disabled, 1); // else blocks of the last run serve
    TestAllocator allocator;
    ForAllKinds([&](auto kind) {
        using Kind = decltype(kind);
        using Plan = typename Kind::Plan;
        EXPECT_EQ(Kind::kCreate(nullptr, -1, 0, 0), dft::kPlanNullPointer);
        for (const RefusedSize& refused : Kind::RefusedSizes()) {
            Plan* plan = nullptr;
            EXPECT_EQ(Kind::kCreate(&plan, refused.size, dft::kUnscaled, 0), refused.status) << refused.size;
            EXPECT_EQ(plan, nullptr);
        }
        const auto plan = MakePlan<Kind>(6);
        Plan otherTag{};
        typename Kind::Real data[128] = {};
        for (const int sign : kSigns) {
            EXPECT_EQ(RunPlan<Kind>(nullptr, sign, data, data), dft::kPlanNullPointer);
            EXPECT_EQ(RunPlan<Kind>(&otherTag, sign, nullptr, data), dft::kPlanBadTag); // before the data is looked at
            EXPECT_EQ(RunPlan<Kind>(plan.get(), sign, nullptr, data), dft::kPlanNullPointer);
            EXPECT_EQ(RunPlan<Kind>(plan.get(), sign, data, nullptr), dft::kPlanNullPointer);
            allocator.Refuse(0); // of its own work memory
            EXPECT_EQ(RunPlan<Kind>(plan.get(), sign, data, data), dft::kPlanNoMemory);
            allocator.Refuse(-1);
        }
        Kind::kFree(nullptr);
    });
    EXPECT_EQ(allocator.Live(), 0);
}

class PlanTest : public VectorClassTest {};

// In place, in work memory of just the size that the plan asks for, and nothing on more than 8 bytes.
TEST_P(PlanTest, RunsInPlaceHaveTheSameBytesAndKeepToTheirWorkMemory) {
    ForAllKinds([](auto kind) {
        using Kind = decltype(kind);
        constexpr std::size_t kOff = 8;
        for (const int size : Kind::Sizes()) {
            const auto plan = MakePlan<Kind>(size);
            const auto x = InputFor<Kind>(size);
            for (const int sign : kSigns) {
                auto expected = x;
                EXPECT_EQ(RunPlan<Kind>(plan.get(), sign, x.data(), expected.data()), dft::kPlanOk);
                GuardedBuffer<unsigned char> work(static_cast<std::size_t>(plan->work_bytes), kOff);
                GuardedBuffer<typename Kind::Real> data(x.size(), kOff);
                std::copy(x.begin(), x.end(), data.data());
                EXPECT_EQ(RunPlan<Kind>(plan.get(), sign, data.data(), data.data(), work.data()), dft::kPlanOk);
                EXPECT_TRUE(SameBytes(expected.data(), data.data(), x.size())) << "size " << size;
                EXPECT_TRUE(data.GuardsIntact());
                EXPECT_TRUE(work.GuardsIntact());
            }
        }
    });
}

CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(PlanTest);

} // namespace
