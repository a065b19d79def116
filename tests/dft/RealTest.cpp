// Real transforms, through the routine slots of a record: every method, layout, placement and precision against the
// definition, and what plans promise beside their results.
#include "common/GuardedBuffer.h"
#include "dft/TestJob.h"
#include "dft/TestSurroundings.h"
#include "dft/base/record_fields.h"
#include "dft/real/real_plan.h"
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

Lengths TestedLengths() {
    Lengths lengths(40);
    std::iota(lengths.begin(), lengths.end(), 1);
    lengths.insert(lengths.end(), {179, 180, 181, 302, 360, 362, 512, 1001, 1024, 4099});
    return lengths;
}

/// A committed job of one real transform.
template <typename Real>
struct RealJob : Job {
    explicit RealJob(int length, DftCode format = DFT_PACK_FULL, DftCode placement = DFT_INPLACE)
        : Job(kPrecisionOf<Real>, DFT_REAL, {length}, placement) {
        handle->packed_format = format;
        Commit();
    }
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
double RelativeError(const std::vector<Real>& computed, const std::vector<Real>& expected) {
    const auto asComplex = [](const auto& x) { return std::vector<std::complex<Real>>(x.begin(), x.end()); };
    return dft_slow::RelativeError(asComplex(computed), dft_slow::ToWideLine(asComplex(expected)));
}

/// One run between buffers of the very sizes that the layout has. In place, `input` is the start of a buffer as large
/// as the larger of the two, the rest being not-a-number. Returns the buffer after the run.
template <typename Real>
std::vector<Real> GuardedRun(const RealJob<Real>& job, Direction direction, const std::vector<Real>& input,
                             std::size_t results) {
    const bool inPlace = job->placement == DFT_INPLACE;
    GuardedBuffer<Real> from(inPlace ? std::max(input.size(), results) : input.size());
    std::fill_n(from.data(), from.size(), static_cast<Real>(kNotLooked));
    std::copy(input.begin(), input.end(), from.data());
    GuardedBuffer<Real> to(results, sizeof(Real));
    GuardedBuffer<unsigned char> work(static_cast<std::size_t>(job->workspace_need), 4);
    EXPECT_EQ(
        Slot<Real>(*job.handle, direction)(from.data(), inPlace ? from.data() : to.data(), job.handle, work.data()),
        DFT_OK);
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
    for (const int length : TestedLengths()) {
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
                    const RealJob<Real> job(length, format, placement);
                    SetScales<Real>(*job.handle, scale, 2 * scale);

                    const auto expected = Packed<Real>(format, spectrum, scale, 0);
                    const auto forward = GuardedRun(job, kForward, line, expected.size());
                    EXPECT_LE(RelativeError(forward, expected), tolerance);
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
                    EXPECT_LE(RelativeError(backward, restored), tolerance);
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
        const RealJob<TypeParam> job(length);
        SetScales<TypeParam>(*job.handle, -1, 1);
        std::vector<TypeParam> line(static_cast<std::size_t>(length) + 2, 1);
        ASSERT_EQ(dfti_compute_forward(job.handle, line.data()), DFT_OK);
        EXPECT_EQ(line[0], -length);
        EXPECT_TRUE(std::signbit(line[1])) << length;
        EXPECT_EQ(line.back(), length % 2 == 0 ? 0 : 1) << length;
        EXPECT_FALSE(std::signbit(line.back())) << length;
    }
}

TYPED_TEST(RealTransform, StatusesAndNormalisationFlags) {
    using Real = TypeParam;
    const TestNumber disabled(fast_mm_disabled, 1); // else blocks of the last run serve
    TestAllocator allocator;
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
        allocator.Refuse(0); // of its own work memory
        EXPECT_EQ(real_pack_forward<DFT_PACK_TIGHT>(line, line, plan, nullptr), kPlanNoMemory);
        plan->tag = kDftPlanTag;
        EXPECT_EQ(real_plan_work_size(plan, &bytes), kPlanBadTag);
        EXPECT_EQ(real_pack_backward<DFT_PACK_TIGHT>(line, line, plan, nullptr), kPlanBadTag);
        real_plan_free(plan);
    }
}

} // namespace
