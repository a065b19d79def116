// Real jobs of several lines at any strides, against the same lines one by one at stride 1.
#include "dft/driver/drivers.h"

#include "common/GuardedBuffer.h"
#include "dft/driver/record_fields.h"
#include "reference/dft_slow.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <ostream>
#include <vector>

namespace {

using dft::Direction;

struct Place {
    int stride, offset, distance;
    std::size_t At(int transform, int k) const {
        return static_cast<std::size_t>(offset + transform * distance + k * stride);
    }
};
struct Row {
    int length;
    std::int32_t format;
    int transforms;
    Place input, output;
    friend std::ostream& operator<<(std::ostream& out, const Row& row) {
        return out << "length " << row.length << ", format " << row.format << ", input stride " << row.input.stride
                   << ", output stride " << row.output.stride;
    }

    int Packed() const { return format == dft::DFT_PACK_FULL ? length + 2 - length % 2 : length; }
    int Inputs(Direction direction) const { return direction == dft::kForward ? length : Packed(); }
    int Outputs(Direction direction, bool isInPlace) const {
        const bool clearsNext = isInPlace && format == dft::DFT_PACK_FULL;
        return direction == dft::kForward ? Packed() : length + (clearsNext ? 1 : 0);
    }
};
const Row kRows[] = {
    {6, 54, 3, {1, 0, 8}, {1, 2, 8}},    {7, 54, 4, {1, 1, 8}, {2, 0, 16}},   {6, 55, 5, {3, 2, 20}, {1, 0, 6}},
    {30, 54, 1, {2, 3, 0}, {3, 1, 0}},   {15, 54, 2, {2, 0, 40}, {2, 1, 50}}, {16, 56, 3, {4, 0, 1}, {3, 2, 1}},
    {16, 54, 2, {2, 0, 37}, {1, 0, 18}}, {181, 55, 1, {1, 1, 0}, {2, 0, 0}},  {3, 54, 6, {1, 0, 4}, {1, 0, 5}},
};

template <typename Real>
class RealJob {
public:
    RealJob(const Row& row, bool isInPlace, bool isStrided) {
        const std::int32_t precision = sizeof(Real) == sizeof(float) ? dft::DFT_SINGLE : dft::DFT_DOUBLE;
        EXPECT_EQ(dft::dfti_create_descriptor(&m_Head, precision, dft::DFT_REAL, 1, row.length), dft::DFT_OK);
        m_Head->packed_format = row.format;
        m_Head->placement = isInPlace ? dft::DFT_INPLACE : dft::DFT_NOT_INPLACE;
        m_Head->backward_scale_single = 0.5f;
        m_Head->backward_scale_double = 0.5;
        if (isStrided) {
            m_Head->number_of_transforms = row.transforms;
            m_Head->input_stride = row.input.stride;
            m_Head->input_offset = row.input.offset;
            m_Head->input_distance = row.input.distance;
            m_Head->output_stride = row.output.stride;
            m_Head->output_offset = row.output.offset;
            m_Head->output_distance = row.output.distance;
        }
        EXPECT_EQ(dft::dfti_commit_descriptor(m_Head), dft::DFT_OK);
    }
    ~RealJob() { EXPECT_EQ(dft::dfti_free_descriptor(&m_Head), dft::DFT_OK); }
    RealJob(const RealJob&) = delete;
    RealJob& operator=(const RealJob&) = delete;
    dft::DftDescriptor* operator->() { return m_Head; }

    void Run(Direction direction, int threads, Real* input, Real* output) {
        const Real* const constInput = input;
        const bool isInPlace = m_Head->placement == dft::DFT_INPLACE;
        const std::int32_t status = threads == 1 ? isInPlace ? dft::RunRealSerial(m_Head, direction, input)
                                                             : dft::RunRealSerial(m_Head, direction, constInput, output)
                                    : isInPlace ? dft::RunRealThreaded(m_Head, direction, input, threads)
                                                 : dft::RunRealThreaded(m_Head, direction, constInput, output, threads);
        EXPECT_EQ(status, dft::DFT_OK);
    }

private:
    dft::DftDescriptor* m_Head = nullptr;
};

template <typename Real>
void Check(const Row& row, Direction direction, bool isInPlace, int threads) {
    SCOPED_TRACE(::testing::Message() << row << ", direction " << direction << (isInPlace ? ", in place" : "")
                                      << ", threads " << threads << ", " << sizeof(Real) << " bytes");
    const Place& result = isInPlace ? row.input : row.output;
    const int inputs = row.Inputs(direction);
    const int outputs = row.Outputs(direction, isInPlace);
    const int reach = isInPlace ? std::max(inputs, outputs) : inputs;
    const int last = row.transforms - 1;
    GuardedBuffer<Real> input(row.input.At(last, reach - 1) + 1, sizeof(Real));
    GuardedBuffer<Real> output(row.output.At(last, row.Outputs(direction, false) - 1) + 1, sizeof(Real));
    FillRandom(output, 2);
    const auto x = dft_slow::RandomLine<dft::Complex<Real>>(input.size(), 4);
    for (std::size_t k = 0; k < input.size(); ++k) {
        input.Write(k, x[k].re);
    }
    GuardedBuffer<Real> expectedInput(input.size(), sizeof(Real));
    GuardedBuffer<Real> expectedOutput(output.size(), sizeof(Real));
    std::copy_n(input.bytes(), input.size_bytes(), expectedInput.bytes());
    std::copy_n(output.bytes(), output.size_bytes(), expectedOutput.bytes());

    GuardedBuffer<Real>& expected = isInPlace ? expectedInput : expectedOutput;
    RealJob<Real> line(row, isInPlace, false);
    for (int t = 0; t < row.transforms; ++t) {
        std::vector<Real> from(static_cast<std::size_t>(row.length) + 2);
        std::vector<Real> to(from.size());
        for (int k = 0; k < inputs; ++k) {
            from[static_cast<std::size_t>(k)] = input.Read(row.input.At(t, k));
        }
        line.Run(direction, 1, from.data(), to.data());
        for (int k = 0; k < outputs; ++k) {
            expected.Write(result.At(t, k), (isInPlace ? from : to)[static_cast<std::size_t>(k)]);
        }
    }
    RealJob<Real>(row, isInPlace, true).Run(direction, threads, input.data(), output.data());
    EXPECT_TRUE(SameBytes(expectedInput, input));
    EXPECT_TRUE(SameBytes(expectedOutput, output));
    EXPECT_TRUE(input.GuardsIntact());
    EXPECT_TRUE(output.GuardsIntact());
}

TEST(RealDriver, EveryLayoutOnEveryRoad) {
    for (const Row& row : kRows) {
        for (const Direction direction : {dft::kForward, dft::kBackward}) {
            for (const bool isInPlace : {true, false}) {
                for (const int threads : {1, 2}) {
                    Check<float>(row, direction, isInPlace, threads);
                    Check<double>(row, direction, isInPlace, threads);
                }
            }
        }
    }
}

std::atomic<int> s_Calls;
std::atomic<bool> s_IsInRegion;
std::int32_t Watched(void*, void*, dft::DftDescriptor*, void*) {
    ++s_Calls;
    s_IsInRegion = s_IsInRegion || omp_in_parallel() != 0;
    return dft::DFT_OK;
}

// Three threads from 2 << 3 elements on, and only for several transforms.
TEST(RealDriver, RegionsFromALimitOfElements) {
    struct Limit {
        int length, transforms;
        bool isInRegion;
    };
    for (const Limit& limit : {Limit{5, 3, false}, {8, 2, true}, {4, 4, true}, {1000, 1, false}, {4, 0, false}}) {
        RealJob<float> job({limit.length, 56, limit.transforms, {1, 0, limit.length}, {1, 0, 0}}, true, true);
        job->forward_single = Watched;
        s_Calls = 0;
        s_IsInRegion = false;
        std::vector<float> data(1000);
        job.Run(dft::kForward, 3, data.data(), nullptr);
        EXPECT_EQ(s_Calls, limit.transforms);
        EXPECT_EQ(s_IsInRegion, limit.isInRegion) << limit.length << " x " << limit.transforms;
    }
}

} // namespace
