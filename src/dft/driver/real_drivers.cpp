#include "dft/base/chunks.h"
#include "dft/base/record_fields.h"
#include "dft/driver/copy_strided.h"
#include "dft/driver/drivers.h"
#include "dft/driver/odometer.h"
#include "dft/memory/work_memory.h"

#include <algorithm>

namespace dft {
namespace {

template <typename Real>
class RealJob {
public:
    RealJob(DftDescriptor* head, Direction direction, const Real* input, Real* output, Side outputSide)
        : m_Head(head), m_Direction(direction), m_Input(input + head->input_offset),
          m_Output(output + Offset(*head, outputSide)), m_OutputSide(outputSide) {}

    std::int32_t RunSerial() const { return Run(m_Head->number_of_transforms, 1); }

    std::int32_t RunThreaded(int threads) const {
        const std::ptrdiff_t transforms = m_Head->number_of_transforms;
        const std::int64_t elements = static_cast<std::int64_t>(m_Head->length) * transforms;
        const bool isSmall = threads > 61 || elements < std::int64_t{2} << threads;
        if (transforms < 2 || isSmall) {
            return RunSerial();
        }
        return Run(transforms, static_cast<int>(std::min<std::ptrdiff_t>(threads, transforms)));
    }

private:
    std::int32_t Run(std::ptrdiff_t transforms, int chunks) const {
        const WorkMemory work(WorkBytes(*m_Head), chunks);
        if (work.data() == nullptr) {
            return DFT_NO_MEMORY;
        }
        if (chunks == 1) {
            return RunTransforms({-1, 0, transforms}, work.data());
        }
        SharedStatus status;
        RunChunks(chunks, chunks, [&](int chunk) {
            status.Report(RunTransforms(ChunkOf(-1, transforms, chunks, chunk), work.slice(chunk)));
        });
        return status.Get();
    }

    std::int32_t RunTransforms(const Slice& transforms, void* work) const {
        const std::ptrdiff_t inputStride = m_Head->input_stride;
        const std::ptrdiff_t outputStride = Stride(*m_Head, m_OutputSide);
        const LineBuffer<Real> buffer(static_cast<std::size_t>(m_Head->length) + 2);
        if (buffer.data() == nullptr) {
            return DFT_NO_MEMORY;
        }
        std::int32_t status = DFT_OK;
        for (std::ptrdiff_t t = transforms.first; t < transforms.first + transforms.count && status == DFT_OK; ++t) {
            const Real* input = m_Input + t * m_Head->input_distance;
            Real* const output = m_Output + t * Distance(*m_Head, m_OutputSide);
            if (inputStride != 1) {
                dft_copy_strided(InputElements(), input, inputStride, buffer.data(), 1);
                input = buffer.data();
            }
            Real* const result = outputStride != 1 ? buffer.data() : output;
            // A routine only reads its input, unless it is the output too.
            status = Slot<Real>(*m_Head, m_Direction)(const_cast<Real*>(input), result, m_Head, work);
            if (status == DFT_OK && outputStride != 1) {
                dft_copy_strided<Real>(OutputElements(), result, 1, output, outputStride);
            }
        }
        return status;
    }

    bool IsFull() const { return m_Head->packed_format == DFT_PACK_FULL; }

    /// With the zeros that the full format adds: the imaginary part of element 0, and for an even length of the last.
    std::ptrdiff_t PackedElements() const {
        const std::ptrdiff_t n = m_Head->length;
        return IsFull() ? n + 2 - n % 2 : n;
    }
    std::ptrdiff_t InputElements() const { return m_Direction == kForward ? m_Head->length : PackedElements(); }

    /// In place a backward transform also clears the element behind the line in the full format.
    std::ptrdiff_t OutputElements() const {
        const bool clears = IsFull() && m_OutputSide == Side::kInput;
        return m_Direction == kForward ? PackedElements() : m_Head->length + (clears ? 1 : 0);
    }

    DftDescriptor* m_Head;
    Direction m_Direction;
    const Real* m_Input;
    Real* m_Output;
    Side m_OutputSide; ///< the input's in place
};

} // namespace

template <typename Real>
std::int32_t RunRealSerial(DftDescriptor* head, Direction direction, Real* data) {
    return RealJob<Real>(head, direction, data, data, Side::kInput).RunSerial();
}

template <typename Real>
std::int32_t RunRealSerial(DftDescriptor* head, Direction direction, const Real* input, Real* output) {
    return RealJob<Real>(head, direction, input, output, Side::kOutput).RunSerial();
}

template <typename Real>
std::int32_t RunRealThreaded(DftDescriptor* head, Direction direction, Real* data, int threads) {
    return RealJob<Real>(head, direction, data, data, Side::kInput).RunThreaded(threads);
}

template <typename Real>
std::int32_t RunRealThreaded(DftDescriptor* head, Direction direction, const Real* input, Real* output, int threads) {
    return RealJob<Real>(head, direction, input, output, Side::kOutput).RunThreaded(threads);
}

#define CLARIBOX_INSTANTIATE(Real)                                                                                     \
    template std::int32_t RunRealSerial(DftDescriptor*, Direction, Real*);                                             \
    template std::int32_t RunRealSerial(DftDescriptor*, Direction, const Real*, Real*);                                \
    template std::int32_t RunRealThreaded(DftDescriptor*, Direction, Real*, int);                                      \
    template std::int32_t RunRealThreaded(DftDescriptor*, Direction, const Real*, Real*, int);
CLARIBOX_INSTANTIATE(float)
CLARIBOX_INSTANTIATE(double)

} // namespace dft
