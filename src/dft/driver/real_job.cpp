#include "dft/base/chunks.h"
#include "dft/base/lines.h"
#include "dft/base/record_fields.h"
#include "dft/driver/jobs.h"
#include "dft/memory/work_memory.h"

#include <algorithm>

namespace dft {
namespace {

/// One compute call; in place both sides are the input's.
template <typename Real>
struct RealJob {
    DftDescriptor* head;
    Direction direction;
    const Real* input;
    Real* output;
    Side outputSide;

    std::int32_t Run(int threads) const {
        const std::ptrdiff_t transforms = head->number_of_transforms;
        const std::int64_t elements = static_cast<std::int64_t>(head->length) * transforms;
        const bool isSmall = threads > 61 || elements < std::int64_t{2} << threads;
        const bool isSerial = threads < 2 || transforms < 2 || isSmall;
        const int chunks = isSerial ? 1 : static_cast<int>(std::min<std::ptrdiff_t>(threads, transforms));
        const WorkMemory work(WorkBytes(*head), chunks);
        if (work.data() == nullptr) {
            return DFT_NO_MEMORY;
        }
        if (isSerial) {
            return RunTransforms({-1, 0, transforms}, work.data());
        }
        SharedStatus status;
        RunChunks(chunks, chunks, [&](int chunk) {
            status.Report(RunTransforms(ChunkOf(-1, transforms, chunks, chunk), work.slice(chunk)));
        });
        return status.Get();
    }

    std::int32_t RunTransforms(const Slice& transforms, void* work) const {
        const std::ptrdiff_t inputStride = head->input_stride;
        const std::ptrdiff_t outputStride = Stride(*head, outputSide);
        const LineBuffer<Real> buffer(static_cast<std::size_t>(head->length) + 2);
        if (buffer.data() == nullptr) {
            return DFT_NO_MEMORY;
        }
        std::int32_t status = DFT_OK;
        for (std::ptrdiff_t t = transforms.first; t < transforms.first + transforms.count && status == DFT_OK; ++t) {
            const Real* from = input + head->input_offset + t * head->input_distance;
            Real* const to = output + Offset(*head, outputSide) + t * Distance(*head, outputSide);
            if (inputStride != 1) {
                dft_copy_strided(InputElements(), from, inputStride, buffer.data(), 1);
                from = buffer.data();
            }
            Real* const result = outputStride != 1 ? buffer.data() : to;
            // A routine only reads its input, unless it is the output too.
            status = RoutineOf<Real>(*head, direction)(const_cast<Real*>(from), result, head, work);
            if (status == DFT_OK && outputStride != 1) {
                dft_copy_strided<Real>(OutputElements(), result, 1, to, outputStride);
            }
        }
        return status;
    }

    bool IsFull() const { return head->packed_format == DFT_PACK_FULL; }

    /// Including the zeros of the full format: the imaginary part of element 0 and, for an even length, of the last.
    std::ptrdiff_t PackedElements() const {
        const std::ptrdiff_t n = head->length;
        return IsFull() ? n + 2 - n % 2 : n;
    }
    std::ptrdiff_t InputElements() const { return direction == kForward ? head->length : PackedElements(); }

    /// In place a backward transform also clears the element behind the line in the full format.
    std::ptrdiff_t OutputElements() const {
        const bool clears = IsFull() && outputSide == Side::Input;
        return direction == kForward ? PackedElements() : head->length + (clears ? 1 : 0);
    }
};

} // namespace

template <typename Real>
std::int32_t RunJob(DftDescriptor* head, Direction direction, Real* data, Real* output, int threads) {
    const bool inPlace = head->placement == DFT_INPLACE;
    const RealJob<Real> job{head, direction, data, inPlace ? data : output, inPlace ? Side::Input : Side::Output};
    return job.Run(threads);
}

template std::int32_t RunJob(DftDescriptor*, Direction, float*, float*, int);
template std::int32_t RunJob(DftDescriptor*, Direction, double*, double*, int);

} // namespace dft
