// Structure and statuses of general plans; what their runs compute is the matter of TransformTest.cpp.
#include "dft/plans/dft_plan.h"

#include "dft/TestSurroundings.h"
#include "dft/memory/engine_memory.h"
#include "reference/dft_slow.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <numbers>
#include <ostream>
#include <vector>

namespace {

using dft::BasicDftPlan;
using dft::Complex;

template <typename Real>
struct FreePlan {
    void operator()(BasicDftPlan<Real>* plan) const { dft::dft_plan_free(plan); }
};
template <typename Real>
using PlanPointer = std::unique_ptr<BasicDftPlan<Real>, FreePlan<Real>>;

template <typename Real>
PlanPointer<Real> MakePlan(int length, int normFlag = dft::kUnscaled) {
    BasicDftPlan<Real>* plan = nullptr;
    EXPECT_EQ(dft::dft_plan_create(&plan, length, normFlag, 0), dft::kPlanOk) << "length " << length;
    return PlanPointer<Real>(plan);
}

template <typename Real>
class DftPlanTest : public ::testing::Test {};
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(DftPlanTest, Precisions);

// exp(-2 pi i k / n)
dft_slow::Wide Root(long long k, int n) {
    return std::polar(1.0L, -2.0L * std::numbers::pi_v<long double> * static_cast<long double>(k % n) /
                                static_cast<long double>(n));
}

// Rounded once from double precision, of which single precision sees nothing but the rounding.
template <typename Real>
void ExpectRoot(const Complex<Real>& value, const dft_slow::Wide& root) {
    constexpr long double kTolerance =
        sizeof(Real) == sizeof(float) ? 0x1.00001p-25L : 8 * std::numeric_limits<double>::epsilon();
    const dft_slow::Wide difference = dft_slow::ToWide(value) - root;
    EXPECT_LE(std::max(std::abs(difference.real()), std::abs(difference.imag())), kTolerance);
}

enum class Method { Tiny, PowerOfTwo, MixedRadix, Direct, Bluestein };

template <typename Real>
Method MethodOf(const BasicDftPlan<Real>& plan) {
    const std::vector<bool> marks = {
        plan.power_of_two == 1 && plan.fft_plan != nullptr, plan.mixed_radix == 1 && plan.digit_reversal != nullptr,
        plan.direct_matrix != nullptr, plan.bluestein_length > 0 && plan.bluestein_fft_plan != nullptr};
    EXPECT_LE(std::count(marks.begin(), marks.end(), true), 1);
    const auto mark = std::find(marks.begin(), marks.end(), true);
    return mark == marks.end() ? Method::Tiny : static_cast<Method>(1 + (mark - marks.begin()));
}

TYPED_TEST(DftPlanTest, LengthChoosesTheMethod) {
    struct Case {
        int length;
        Method method;
        int workElements; // work_bytes less 16, in elements; -1: that of the inner plan counts too
        int bluesteinLength;
    };
    const Case cases[] = {
        {1, Method::Tiny, 0, 0},
        {4, Method::Tiny, 0, 0},
        {5, Method::Direct, 5, 0},
        {6, Method::MixedRadix, 6, 0},
        {8, Method::PowerOfTwo, -1, 0},
        {9, Method::MixedRadix, 9, 0},
        {14, Method::MixedRadix, 14 + 7, 0},
        {149, Method::Direct, 149, 0},
        {150, Method::MixedRadix, 150, 0},
        {151, Method::Bluestein, -1, 512},
        {257, Method::Bluestein, -1, 1024},
        {298, Method::MixedRadix, 298 + 149, 0},
        {302, Method::Bluestein, -1, 1024},
        {453, Method::Bluestein, -1, 1024},
        {513, Method::MixedRadix, 513 + 19, 0},
        {1124, Method::Bluestein, -1, 4096},
        {1201, Method::Bluestein, -1, 4096},
        {2101, Method::Bluestein, -1, 8192},
        {22201, Method::MixedRadix, 22201 + 149, 0},
        {22499, Method::Bluestein, -1, 65536}, // 149 * 151
        {32768, Method::PowerOfTwo, -1, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << "length " << c.length);
        const auto plan = MakePlan<TypeParam>(c.length);
        EXPECT_EQ(plan->tag, dft::kDftPlanTag);
        EXPECT_EQ(plan->length, c.length);
        EXPECT_EQ(plan->norm_flag, dft::kUnscaled);
        EXPECT_EQ(plan->compact_tables, 0);
        ASSERT_EQ(MethodOf(*plan), c.method);
        constexpr int kElement = static_cast<int>(sizeof(Complex<TypeParam>));
        int work = c.method == Method::Tiny ? 0 : kElement * c.workElements + 16;
        if (c.method == Method::PowerOfTwo) {
            work = plan->fft_plan->work_bytes;
            EXPECT_EQ(1 << plan->fft_plan->order, c.length);
        } else if (c.method == Method::Bluestein) {
            work = kElement * c.bluesteinLength + 16 + plan->bluestein_fft_plan->work_bytes;
            EXPECT_EQ(1 << plan->bluestein_fft_plan->order, c.bluesteinLength);
        }
        EXPECT_EQ(plan->bluestein_length, c.bluesteinLength);
        int bytes = -1;
        EXPECT_EQ(dft::dft_plan_work_size(plan.get(), &bytes), dft::kPlanOk);
        EXPECT_EQ(bytes, work);
        EXPECT_EQ(plan->work_bytes, work);
    }
}

TYPED_TEST(DftPlanTest, WorkOfAPowerOfTwo) {
    constexpr int kElement = static_cast<int>(sizeof(Complex<TypeParam>));
    for (const int length : {16, 64, 2048, 32768}) {
        EXPECT_EQ(MakePlan<TypeParam>(length)->work_bytes, kElement * length + 16) << "length " << length;
    }
    for (const int length : {1 << 16, 1 << 19}) { // the blocked form's own need comes on top
        EXPECT_GE(MakePlan<TypeParam>(length)->work_bytes, 262160) << "length " << length;
    }
}

struct Stage {
    int radix, span, stride, count;
    friend bool operator==(const Stage&, const Stage&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Stage& s) {
        return out << '{' << s.radix << ", " << s.span << ", " << s.stride << ", " << s.count << '}';
    }
};

TYPED_TEST(DftPlanTest, StageRecords) {
    struct Case {
        int length;
        std::vector<Stage> stages;
    };
    const std::vector<Case> cases = {
        {6, {{2, 3, 1, 1}}},
        {9, {{3, 3, 1, 1}}},
        {12, {{4, 3, 1, 1}}},
        {96, {{2, 48, 1, 1}, {4, 12, 2, 2}, {4, 3, 8, 8}}},
        {612, {{4, 153, 1, 1}, {3, 51, 4, 4}, {3, 17, 12, 12}}},
        {1078, {{2, 539, 1, 1}, {7, 77, 2, 2}, {7, 11, 14, 14}}},
        {1400, {{2, 700, 1, 1}, {4, 175, 2, 2}, {5, 35, 8, 8}, {5, 7, 40, 40}}},
        {2000, {{4, 500, 1, 1}, {4, 125, 4, 4}, {5, 25, 16, 16}, {5, 5, 80, 80}}}, // just one group
        {2010, {{2, 1005, 1, 1}, {3, 335, 2, 1}, {5, 67, 6, 3}}},                  // and just two
        {2100, {{4, 525, 1, 1}, {3, 175, 4, 1}, {5, 35, 12, 3}, {5, 7, 60, 15}}},
        {4100, {{4, 1025, 1, 1}, {5, 205, 4, 1}, {5, 41, 20, 5}}},
        {22201, {{149, 149, 1, 1}}},
        {31209, {{3, 10403, 1, 1}, {101, 103, 3, 1}}},
        {44100,
         {{4, 11025, 1, 1}, {3, 3675, 4, 1}, {3, 1225, 12, 1}, {5, 245, 36, 1}, {5, 49, 180, 5}, {7, 7, 900, 25}}},
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
    }
}

TYPED_TEST(DftPlanTest, DigitReversal) {
    struct Case {
        int length;
        std::vector<int> entries;
    };
    const std::vector<Case> cases = {
        {6, {0}},
        {24, {0, 1}},
        {96, {0, 2, 4, 6, 1, 3, 5, 7}},
        // Radices 4, 3, 5, 5: the first lies outside the group and only multiplies.
        {2100, {0, 12, 24, 36, 48, 4, 16, 28, 40, 52, 8, 20, 32, 44, 56}},
        {4100, {0, 4, 8, 12, 16}},
        {31209, {0}},
    };
    for (const Case& c : cases) {
        const auto plan = MakePlan<TypeParam>(c.length);
        const int count = plan->stages[plan->last_stage].count;
        EXPECT_EQ(std::vector<int>(plan->digit_reversal, plan->digit_reversal + count), c.entries)
            << "length " << c.length;
    }
}

template <typename Real>
void ExpectDirectTable(const Complex<Real>* table, int length) {
    ASSERT_NE(table, nullptr);
    for (int k = 0; k < 2 * length; ++k) {
        SCOPED_TRACE(::testing::Message() << "direct table of " << length << ", entry " << k);
        ExpectRoot(table[k], Root(k, length));
    }
}

// Lengths divisible by 4, by 2 and odd, whose roots are reflected in different ways.
TYPED_TEST(DftPlanTest, TablesOfTheStages) {
    for (const int length : {12, 14, 84, 735, 1078, 2100, 31209}) {
        const auto plan = MakePlan<TypeParam>(length);
        for (int k = 0; k <= plan->last_stage; ++k) {
            const auto& stage = plan->stages[k];
            SCOPED_TRACE(::testing::Message() << "length " << length << ", stage " << k);
            const bool general = stage.radix > 5;
            if (general) {
                ExpectDirectTable(stage.radix_matrix, stage.radix);
            } else {
                EXPECT_EQ(stage.radix_matrix, nullptr);
            }
            if (k < plan->last_stage || stage.span <= 5) {
                EXPECT_EQ(stage.tail_matrix, nullptr);
            } else {
                ExpectDirectTable(stage.tail_matrix, stage.span);
            }
            if (k > 0) {
                EXPECT_EQ(general && stage.radix_matrix == plan->stages[k - 1].radix_matrix,
                          general && stage.radix == plan->stages[k - 1].radix);
            }
            const Complex<TypeParam>* next = stage.twiddles;
            for (int j = 0; j < stage.span; ++j) {
                for (int i = general ? 0 : 1; i < stage.radix; ++i) {
                    ExpectRoot(*next++, Root(static_cast<long long>(i) * j * stage.stride, length));
                }
            }
            if (this->HasFailure()) {
                return;
            }
        }
    }
}

TYPED_TEST(DftPlanTest, TableOfTheDirectMethod) {
    for (const int length : {5, 7, 149}) {
        ExpectDirectTable(MakePlan<TypeParam>(length)->direct_matrix, length);
    }
}

TYPED_TEST(DftPlanTest, TablesOfTheBluesteinMethod) {
    for (const int length : {151, 302, 1124}) {
        SCOPED_TRACE(::testing::Message() << "length " << length);
        const auto plan = MakePlan<TypeParam>(length);
        const auto m = static_cast<std::size_t>(plan->bluestein_length);
        dft_slow::WideLine filter(m);
        for (int k = 0; k < length; ++k) {
            const dft_slow::Wide chirp = Root(static_cast<long long>(k) * k, 2 * length);
            ExpectRoot(plan->chirp[k], chirp);
            const auto at = static_cast<std::size_t>(k);
            filter[at] = filter[(m - at) % m] = std::conj(chirp) / static_cast<long double>(m);
        }
        const std::vector<Complex<TypeParam>> spectrum(plan->chirp_spectrum, plan->chirp_spectrum + m);
        EXPECT_LT(dft_slow::RelativeError(spectrum, dft_slow::Transformer(m, -1)(filter)),
                  4 * std::numeric_limits<TypeParam>::epsilon());
    }
}

// In groups of four j: four re W^j, four im W^j, then the same of W^2j and of W^3j.
template <typename Real>
const Real* ExpectStageTable(const Real* group, int log2Points) {
    const int points = 1 << log2Points;
    for (int j = 0; j < points / 4; j += 4) {
        SCOPED_TRACE(::testing::Message() << points << " points, j from " << j);
        for (int power = 1; power <= 3; ++power, group += 8) {
            for (int k = 0; k < 4; ++k) {
                ExpectRoot<Real>({group[k], group[4 + k]}, Root(power * (j + k), points));
            }
        }
    }
    return group;
}

TYPED_TEST(DftPlanTest, StageTablesOfPowersOfTwo) {
    for (const int order : {4, 5, 6, 7, 11, 16, 17}) {
        SCOPED_TRACE(::testing::Message() << "order " << order);
        const auto plan = MakePlan<TypeParam>(1 << order);
        const dft::BasicFftPlan<TypeParam>& fft = *plan->fft_plan;
        EXPECT_EQ(fft.tag, dft::kFftPlanTag);
        const TypeParam* group = fft.stage_tables;
        for (int k = order % 2 == 0 ? 4 : 5; k <= order && !this->HasFailure(); k += 2) {
            group = ExpectStageTable(k >= 16 ? fft.large_tables : group, k);
        }
    }
}

// One length for each method.
constexpr int kMethodLengths[] = {3, 13, 60, 64, 302};

TYPED_TEST(DftPlanTest, NormalisationFlags) {
    struct Case {
        int flag;
        bool forward, backward;
        bool root; // scale is 1 / sqrt(n)
    };
    for (const Case& c :
         {Case{dft::kForwardByLength, true, false, false}, Case{dft::kBackwardByLength, false, true, false},
          Case{dft::kBothBySquareRoot, true, true, true}, Case{dft::kUnscaled, false, false, false}}) {
        for (const int length : kMethodLengths) {
            SCOPED_TRACE(::testing::Message() << "flag " << c.flag << ", length " << length);
            const auto plan = MakePlan<TypeParam>(length, c.flag);
            const long double scale = 1.0L / (c.root ? std::sqrt(static_cast<long double>(length)) : length);
            EXPECT_EQ(plan->norm_flag, c.flag);
            EXPECT_EQ(plan->scale_forward != 0, c.forward);
            EXPECT_EQ(plan->scale_backward != 0, c.backward);
            if (c.forward || c.backward) {
                EXPECT_NEAR(plan->scale, static_cast<double>(scale),
                            std::numeric_limits<TypeParam>::epsilon() * plan->scale);
            }
            const auto x = dft_slow::RandomLine<Complex<TypeParam>>(static_cast<std::size_t>(length), 1);
            std::vector<Complex<TypeParam>> result(x.size());
            for (const int sign : {-1, 1}) {
                dft_slow::WideLine wide = dft_slow::Transform(x, sign);
                if (sign < 0 ? c.forward : c.backward) {
                    for (dft_slow::Wide& element : wide) {
                        element *= scale;
                    }
                }
                const auto run = sign < 0 ? dft::dft_plan_forward<TypeParam> : dft::dft_plan_backward<TypeParam>;
                EXPECT_EQ(run(x.data(), result.data(), plan.get(), nullptr), dft::kPlanOk);
                EXPECT_LT(dft_slow::RelativeError(result, wide), 8 * std::numeric_limits<TypeParam>::epsilon());
            }
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
    const auto plan = MakePlan<TypeParam>(6);
    Plan wrongTag{};
    wrongTag.tag = dft::kRealPlanTag;
    wrongTag.length = 3;
    Complex<TypeParam> data[6] = {};
    int bytes = 0;
    EXPECT_EQ(dft::dft_plan_work_size<TypeParam>(nullptr, &bytes), dft::kPlanNullPointer);
    EXPECT_EQ(dft::dft_plan_work_size(&wrongTag, &bytes), dft::kPlanBadTag);
    for (const auto run : {dft::dft_plan_forward<TypeParam>, dft::dft_plan_backward<TypeParam>}) {
        EXPECT_EQ(run(data, data, nullptr, nullptr), dft::kPlanNullPointer);
        EXPECT_EQ(run(nullptr, data, &wrongTag, nullptr), dft::kPlanBadTag); // before the data is looked at
        EXPECT_EQ(run(nullptr, data, plan.get(), nullptr), dft::kPlanNullPointer);
        EXPECT_EQ(run(data, nullptr, plan.get(), nullptr), dft::kPlanNullPointer);
    }
    dft::dft_plan_free<TypeParam>(nullptr);

    dft::BasicFftPlan<TypeParam>* fft = nullptr;
    EXPECT_EQ(dft::fft_plan_create<TypeParam>(nullptr, 4, dft::kUnscaled, 0), dft::kPlanNullPointer);
    EXPECT_EQ(dft::fft_plan_create(&fft, -1, dft::kUnscaled, 0), dft::kPlanBadOrder);
    EXPECT_EQ(dft::fft_plan_create(&fft, 31, dft::kUnscaled, 0), dft::kPlanBadOrder);
    EXPECT_EQ(dft::fft_plan_create(&fft, 4, 3, 0), dft::kPlanBadNormalisation);
    dft::BasicFftPlan<TypeParam> otherTag{};
    for (const auto run : {dft::fft_plan_forward<TypeParam>, dft::fft_plan_backward<TypeParam>}) {
        EXPECT_EQ(run(data, data, nullptr, nullptr), dft::kPlanNullPointer);
        EXPECT_EQ(run(nullptr, data, &otherTag, nullptr), dft::kPlanBadTag);
    }
    dft::fft_plan_free<TypeParam>(nullptr);
}

TYPED_TEST(DftPlanTest, EveryRefusedAllocationIsReportedAndLeaksNothing) {
    TestAllocator allocator;
    for (const int length : {3, 13, 64, 302, 1078, 65536}) {
        auto data = dft_slow::RandomLine<Complex<TypeParam>>(static_cast<std::size_t>(length), 1);
        std::int32_t status = dft::kPlanNoMemory;
        int refused = 0;
        for (; status != dft::kPlanOk; ++refused) {
            SCOPED_TRACE(::testing::Message() << "length " << length << ", request " << refused);
            ASSERT_LT(refused, 100);
            allocator.Refuse(refused);
            BasicDftPlan<TypeParam>* plan = nullptr;
            status = dft::dft_plan_create(&plan, length, dft::kUnscaled, 0);
            if (status == dft::kPlanOk) {
                status = dft::dft_plan_forward(data.data(), data.data(), plan, nullptr);
            } else {
                EXPECT_EQ(plan, nullptr);
            }
            EXPECT_EQ(status, allocator.Requests() > refused ? dft::kPlanNoMemory : dft::kPlanOk);
            dft::dft_plan_free(plan);
            dft::engine_free_buffers();
            EXPECT_EQ(allocator.Live(), 0);
        }
        EXPECT_GE(refused, 2); // each length asks for memory
    }
}

} // namespace
