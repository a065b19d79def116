// Real transforms, through the routine slots of a record: every method, layout, placement and precision against the
// definition, and what plans promise beside their results.
#include "common/GuardedBuffer.h"
#include "dft/TestSurroundings.h"
#include "dft/plans/plan_runs.h"
#include "dft/real/real_slots.h"
#include "reference/dft_slow.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <numeric>
#include <vector>

namespace {

using namespace dft;

constexpr DftCode kFormats[] = {DFT_PACK_FULL, DFT_PACK_TIGHT, DFT_PACK_NATIVE};
constexpr double kNotLooked = std::numeric_limits<double>::quiet_NaN();

std::vector<int> Lengths() {
    std::vector<int> lengths(40);
    std::iota(lengths.begin(), lengths.end(), 1);
    lengths.insert(lengths.end(), {179, 180, 181, 302, 360, 362, 512, 1001, 1024, 4099});
    return lengths;
}

/// A record committed for one real transform. The test sets its fields before Commit.
template <typename Real>
struct Job {
    static constexpr bool isSingle = sizeof(Real) == sizeof(float);

    Job(int length, DftCode format, DftCode placement = DFT_INPLACE) {
        record.length = length;
        record.precision = isSingle ? DFT_SINGLE : DFT_DOUBLE;
        record.packed_format = format;
        record.placement = placement;
        SetScales(1, 1);
    }
    ~Job() { real_plan_free(Plan()); }
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;

    // The other precision's factors would show.
    void SetScales(double forward, double backward) {
        record.forward_scale_single = isSingle ? static_cast<float>(forward) : 9.0f;
        record.backward_scale_single = isSingle ? static_cast<float>(backward) : 9.0f;
        record.forward_scale_double = isSingle ? 9.0 : forward;
        record.backward_scale_double = isSingle ? 9.0 : backward;
    }
    std::int32_t Commit() { return install_pack_stages(&record) ? install_real_plan(&record) : -1; }
    std::int32_t Run(Direction direction, Real* input, Real* output, void* work) {
        const DftRoutine single = direction == kForward ? real_forward_single : real_backward_single;
        const DftRoutine wide = direction == kForward ? real_forward_double : real_backward_double;
        return (isSingle ? single : wide)(input, output, &record, work);
    }
    BasicRealDftPlan<Real>* Plan() const {
        if constexpr (isSingle) {
            return record.plan_real_single;
        } else {
            return record.plan_real_double;
        }
    }

    DftDescriptor record{};
};

/// The layout as it is defined, in multiples of `scale`; `zero` stands where the definition has a zero.
template <typename Real>
std::vector<Real> Packed(DftCode format, const dft_slow::WideLine& spectrum, double scale, double zero) {
    const std::size_t n = spectrum.size();
    std::vector<Real> parts;
    for (std::size_t j = 0; j <= n / 2; ++j) {
        parts.push_back(static_cast<Real>(spectrum[j].real() * scale));
        parts.push_back(static_cast<Real>(j == 0 || 2 * j == n ? zero : spectrum[j].imag() * scale));
    }
    if (format != DFT_PACK_FULL) {
        parts.erase(parts.begin() + 1);
        if (n % 2 == 0) {
            parts.pop_back();
        }
        if (n % 2 == 0 && format == DFT_PACK_NATIVE) {
            std::rotate(parts.begin() + 1, parts.end() - 1, parts.end());
        }
    }
    return parts;
}

template <typename Real>
double RelativeError(const Real* computed, const std::vector<Real>& expected) {
    long double difference = 0;
    long double norm = 0;
    for (std::size_t k = 0; k < expected.size(); ++k) {
        difference += std::pow(static_cast<long double>(computed[k]) - expected[k], 2);
        norm += std::pow(static_cast<long double>(expected[k]), 2);
    }
    return static_cast<double>(std::sqrt(difference / norm));
}

/// One run between buffers of the very sizes that the layout has. In place, `input` is the start of a buffer as large
/// as the larger of the two, the rest being not-a-number. Returns the buffer after the run.
template <typename Real>
std::vector<Real> GuardedRun(Job<Real>& job, Direction direction, const std::vector<Real>& input, std::size_t results) {
    const bool inPlace = job.record.placement == DFT_INPLACE;
    GuardedBuffer<Real> from(inPlace ? std::max(input.size(), results) : input.size());
    std::fill_n(from.data(), from.size(), static_cast<Real>(kNotLooked));
    std::copy(input.begin(), input.end(), from.data());
    GuardedBuffer<Real> to(results, sizeof(Real));
    GuardedBuffer<unsigned char> work(static_cast<std::size_t>(job.record.workspace_need), 4);
    EXPECT_EQ(job.Run(direction, from.data(), inPlace ? from.data() : to.data(), work.data()), DFT_OK);
    EXPECT_TRUE(from.GuardsIntact());
    EXPECT_TRUE(to.GuardsIntact());
    EXPECT_TRUE(work.GuardsIntact());
    if (!inPlace) {
        EXPECT_TRUE(SameBytes(input.data(), from.data(), input.size()));
    }
    const GuardedBuffer<Real>& result = inPlace ? from : to;
    return {result.data(), result.data() + result.size()};
}

template <typename Real>
class RealTransform : public ::testing::Test {};
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(RealTransform, Precisions);

TYPED_TEST(RealTransform, EqualsTheDefinitionInEveryLayout) {
    using Real = TypeParam;
    // The worst rows, the direct method of 179 elements, come to 1.8 epsilon in either precision.
    const double tolerance = 4 * std::numeric_limits<Real>::epsilon();
    for (const int length : Lengths()) {
        const auto n = static_cast<std::size_t>(length);
        auto complexLine = dft_slow::RandomLine<std::complex<float>>(n, 11u * static_cast<unsigned>(length));
        std::vector<Real> line;
        for (auto& element : complexLine) {
            element.imag(0);
            line.push_back(element.real());
        }
        const dft_slow::WideLine spectrum = dft_slow::Transform(complexLine, -1);
        for (const DftCode format : kFormats) {
            for (const DftCode placement : {DFT_INPLACE, DFT_NOT_INPLACE}) {
                for (const double scale : {1.0, -0.75}) {
                    SCOPED_TRACE(::testing::Message() << "length " << length << ", format " << format << ", placement "
                                                      << placement << ", scale " << scale);
                    Job<Real> job(length, format, placement);
                    job.SetScales(scale, 2 * scale);
                    ASSERT_EQ(job.Commit(), kPlanOk);

                    const auto expected = Packed<Real>(format, spectrum, scale, 0);
                    const auto forward = GuardedRun(job, kForward, line, expected.size());
                    EXPECT_LE(RelativeError(forward.data(), expected), tolerance);
                    for (std::size_t k = 0; k < expected.size(); ++k) {
                        EXPECT_TRUE(expected[k] != 0 || forward[k] == 0) << "no zero at " << k;
                    }

                    // The zeros of the layout are not looked at.
                    const auto packed = Packed<Real>(format, spectrum, 1, kNotLooked);
                    const auto backward = GuardedRun(job, kBackward, packed, n);
                    std::vector<Real> restored = line;
                    for (Real& value : restored) {
                        value *= static_cast<Real>(2 * scale * length);
                    }
                    EXPECT_LE(RelativeError(backward.data(), restored), tolerance);
                    if (backward.size() > n) { // in place, full layout
                        EXPECT_EQ(backward[n], 0);
                    }
                    if (backward.size() > n + 1) {
                        EXPECT_TRUE(std::isnan(backward[n + 1])) << "element n + 1 was written";
                    }
                }
            }
        }
    }
}

// The scaling of the full layout takes n + 1 elements: a negative factor shows on which zeros.
TYPED_TEST(RealTransform, ScaleCountOfTheFullLayout) {
    for (const int length : {1, 2, 7, 8, 362}) {
        Job<TypeParam> job(length, DFT_PACK_FULL);
        job.SetScales(-1, 1);
        ASSERT_EQ(job.Commit(), kPlanOk);
        std::vector<TypeParam> line(static_cast<std::size_t>(length) + 2, 1);
        ASSERT_EQ(job.Run(kForward, line.data(), line.data(), nullptr), DFT_OK);
        EXPECT_EQ(line[0], -length);
        EXPECT_TRUE(std::signbit(line[1])) << length;
        EXPECT_EQ(line.back(), length % 2 == 0 ? 0 : 1) << length;
        EXPECT_FALSE(std::signbit(line.back())) << length;
    }
}

TYPED_TEST(RealTransform, MethodsAndTheirWorkMemory) {
    using Real = TypeParam;
    struct Row {
        int length;
        bool powerOfTwo, mixedRadix, direct;
        int bluesteinLength;
        int workElements; ///< complex ones, beside 16 bytes; -1: none at all, -2: the power-of-two plan's
        int unpackEntries;
    };
    const Row rows[] = {
        {1, false, false, false, 0, -1, 0},       {4, false, false, false, 0, -1, 0},
        {6, false, false, true, 0, 3, 2},         {8, true, false, false, 0, -2, 2},
        {12, false, true, false, 0, 6, 3},        {179, false, false, true, 0, 0, 0},
        {180, false, true, false, 0, 90, 45},     {181, false, false, false, 512, 512, 0},
        {298, false, false, true, 0, 149, 75},    {302, false, false, false, 512, 512, 76},
        {1001, false, true, false, 0, 1014, 0},   {1024, true, false, false, 0, -2, 256},
        {2002, false, true, false, 0, 1014, 501},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(::testing::Message() << "length " << row.length);
        Job<Real> job(row.length, DFT_PACK_NATIVE);
        ASSERT_EQ(job.Commit(), kPlanOk);
        const BasicRealDftPlan<Real>& plan = *job.Plan();
        EXPECT_EQ(plan.tag, 15);
        EXPECT_EQ(plan.length, row.length);
        EXPECT_EQ(plan.power_of_two != 0, row.powerOfTwo);
        EXPECT_EQ(plan.mixed_radix != 0, row.mixedRadix);
        EXPECT_EQ(plan.direct_matrix != nullptr, row.direct);
        EXPECT_EQ(plan.bluestein_length, row.bluesteinLength);
        int bytes = static_cast<int>(sizeof(Complex<Real>)) * row.workElements + 16;
        if (row.workElements < 0) {
            bytes = row.powerOfTwo ? plan.fft_plan->work_bytes : 0;
        } else if (row.length == 179) {
            bytes = static_cast<int>(sizeof(Real)) * 179 + 16;
        } else if (row.bluesteinLength > 0) {
            bytes += plan.bluestein_fft_plan->work_bytes;
        }
        EXPECT_EQ(plan.work_bytes, bytes);
        EXPECT_EQ(job.record.workspace_need, bytes);

        ASSERT_EQ(plan.unpack_forward != nullptr, row.unpackEntries > 0);
        for (int j = 0; j < row.unpackEntries; ++j) {
            const double angle = 2 * std::numbers::pi * j / row.length;
            const double tolerance = std::numeric_limits<Real>::epsilon();
            EXPECT_NEAR(plan.unpack_forward[j].re, 0.5 * std::cos(angle), tolerance) << j;
            EXPECT_NEAR(plan.unpack_forward[j].im, 0.5 - 0.5 * std::sin(angle), tolerance) << j;
        }
    }
}

TYPED_TEST(RealTransform, StatusesAndNormalisationFlags) {
    using Real = TypeParam;
    BasicRealDftPlan<Real>* plan = nullptr;
    int bytes = 0;
    Real line[9] = {};
    EXPECT_EQ(real_plan_create<Real>(nullptr, 9, kUnscaled, 0), kPlanNullPointer);
    EXPECT_EQ(real_plan_create(&plan, 0, kUnscaled, 0), kPlanBadLength);
    EXPECT_EQ(real_plan_create(&plan, 9, 3, 0), kPlanBadNormalisation);
    EXPECT_EQ(real_plan_create(&plan, std::numeric_limits<int>::max(), kUnscaled, 0), kPlanNoMemory);
    EXPECT_EQ(plan, nullptr);
    EXPECT_EQ(real_plan_work_size(plan, &bytes), kPlanNullPointer);
    EXPECT_EQ(real_pack_forward<DFT_PACK_TIGHT>(line, line, plan, nullptr), kPlanNullPointer);
    real_plan_free(plan);

    struct Row {
        int flag;
        double forward, backward; ///< for 9 elements
    };
    for (const Row& row : {Row{1, 1.0 / 9, 1}, {2, 1, 1.0 / 9}, {4, 1.0 / 3, 1.0 / 3}, {8, 1, 1}}) {
        ASSERT_EQ(real_plan_create(&plan, 9, row.flag, 0), kPlanOk);
        std::fill_n(line, 9, Real{1});
        EXPECT_EQ(real_pack_forward<DFT_PACK_TIGHT>(line, line, plan, nullptr), kPlanOk);
        EXPECT_NEAR(line[0], 9 * row.forward, 1e-6) << row.flag;
        std::fill_n(line, 9, Real{0});
        line[0] = 1;
        EXPECT_EQ(real_pack_backward<DFT_PACK_TIGHT>(line, line, plan, nullptr), kPlanOk);
        EXPECT_NEAR(line[8], row.backward, 1e-6) << row.flag;
        EXPECT_EQ((real_pack_forward<DFT_PACK_FULL, Real>(nullptr, line, plan, nullptr)), kPlanNullPointer);
        EXPECT_EQ((real_pack_backward<DFT_PACK_FULL, Real>(line, nullptr, plan, nullptr)), kPlanNullPointer);
        plan->tag = kDftPlanTag;
        EXPECT_EQ(real_plan_work_size(plan, &bytes), kPlanBadTag);
        EXPECT_EQ(real_pack_backward<DFT_PACK_TIGHT>(line, line, plan, nullptr), kPlanBadTag);
        real_plan_free(plan);
    }

    Job<Real> unknown(9, DFT_ORDERED);
    EXPECT_FALSE(install_pack_stages(&unknown.record));
    EXPECT_EQ(unknown.record.real_pack_forward_single, nullptr);
}

// Every allocation of a job refused in turn: the status says so, and nothing stays behind.
TYPED_TEST(RealTransform, RefusedMemory) {
    TestAllocator allocator;
    for (const int length : {3, 6, 64, 179, 181, 302, 360, 1001}) {
        bool refused = true;
        for (int index = 0; refused; ++index) {
            SCOPED_TRACE(::testing::Message() << "length " << length << ", request " << index);
            {
                Job<TypeParam> job(length, DFT_PACK_FULL);
                std::vector<TypeParam> line(static_cast<std::size_t>(length) + 2, 1);
                allocator.Refuse(index);
                std::int32_t status = job.Commit();
                ASSERT_EQ(status == kPlanOk, job.Plan() != nullptr);
                if (status == kPlanOk) {
                    status = job.Run(kForward, line.data(), line.data(), nullptr);
                    ASSERT_TRUE(status == DFT_OK || status == DFT_NO_MEMORY);
                    engine_free_buffers(); // so that the other direction asks for its blocks anew
                    status = std::max(status, job.Run(kBackward, line.data(), line.data(), nullptr));
                    ASSERT_TRUE(status == DFT_OK || status == DFT_NO_MEMORY);
                } else {
                    ASSERT_EQ(status, kPlanNoMemory);
                }
                refused = allocator.Requests() > index;
                EXPECT_EQ(refused, status != 0);
            }
            engine_free_buffers();
            EXPECT_EQ(allocator.Live(), 0);
        }
    }
}

} // namespace
