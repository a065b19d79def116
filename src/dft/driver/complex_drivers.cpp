#include "dft/base/chunks.h"
#include "dft/base/variant.h"
#include "dft/driver/copy_strided.h"
#include "dft/driver/drivers.h"
#include "dft/driver/serial_passes.h"
#include "dft/memory/work_memory.h"

#include <algorithm>

namespace dft {
namespace {

template <typename Real>
std::int32_t RunInPlace(const Job& job, Complex<Real>* data) {
    const WorkMemory work(WorkBytes(*job.head));
    return work.data() == nullptr ? DFT_NO_MEMORY
                                  : cnd_dft_serial(job, data, job.head->number_of_transforms, work.data());
}

/// The whole input to its places in the output, row by row.
template <typename Real>
void CopyInput(const DftDescriptor* head, const Complex<Real>* input, Complex<Real>* output) {
    for (std::ptrdiff_t t = 0; t < head->number_of_transforms; ++t) {
        const Complex<Real>* const from = input + head->input_offset + t * head->input_distance;
        Complex<Real>* const to = output + head->output_offset + t * head->output_distance;
        Odometer rows;
        for (rows.AddRecords(head, 1, -1, {-1, 0, 0}); !rows.IsDone(); rows.Next()) {
            dft_copy_strided(head->length, from + rows.Offset(Side::kInput), head->input_stride,
                             to + rows.Offset(Side::kOutput), head->output_stride);
        }
    }
}

/// The parallel regions of one job: `threads` chunks each, and a slice of the work memory a chunk.
template <typename Real>
class Regions {
public:
    Regions(const Job& job, int threads) : m_Job(job), m_Threads(threads), m_Work(WorkBytes(*job.head), threads) {}

    std::int32_t Run(Complex<Real>* data) {
        const DftDescriptor& head = *m_Job.head;
        if (m_Work.data() == nullptr) {
            return DFT_NO_MEMORY;
        }
        if (head.number_of_transforms != 1) {
            return RunTransforms(data);
        }
        if (head.rank == 1) {
            return RunLine(data);
        }
        Complex<Real>* const first = data + Offset(head, m_Job.side);
        return head.rank == 2 ? RunPlane(first) : RunVolume(first);
    }

private:
    /// One region: pass(slice, work) for each chunk's slice of a record of `length` positions.
    template <typename Pass>
    std::int32_t Region(int record, std::ptrdiff_t length, int chunks, Pass pass) {
        SharedStatus status;
        RunChunks(chunks, m_Threads, [&](int chunk) {
            const Slice slice = ChunkOf(record, length, chunks, chunk);
            if (slice.count > 0) {
                status.Report(pass(slice, m_Work.slice(chunk)));
            }
        });
        return status.Get();
    }

    std::int32_t RunTransforms(Complex<Real>* data) {
        const std::ptrdiff_t transforms = m_Job.head->number_of_transforms;
        const std::ptrdiff_t distance = Distance(*m_Job.head, m_Job.side);
        const int chunks = static_cast<int>(std::min<std::ptrdiff_t>(m_Threads, transforms));
        return Region(-1, transforms, chunks, [&](const Slice& slice, void* work) {
            return cnd_dft_serial(m_Job, data + slice.first * distance, slice.count, work);
        });
    }

    std::int32_t RunLine(Complex<Real>* data) {
        DftDescriptor* const head = m_Job.head;
        const DftTuning& tuning = dft_tuning();
        if (head->length < tuning.serial_rank1_below[kPrecision<Real>] || head->general_length == 1) {
            return cnd_dft_serial(m_Job, data, 1, m_Work.data());
        }
        // In single precision the limit of two threads is one of jobs out of place.
        const bool isLimited = kPrecision<Real> == 1 || m_Job.side == Side::kOutput;
        const int threads =
            isLimited && head->length < tuning.two_threads_below[kPrecision<Real>] ? std::min(m_Threads, 2) : m_Threads;
        const DftThreadedRoutine routine = ThreadedSlot<Real>(*head, m_Job.direction);
        Complex<Real>* const first = data + Offset(*head, m_Job.side);
        const std::ptrdiff_t stride = Stride(*head, m_Job.side);
        if (stride == 1) {
            return routine(first, threads, head);
        }
        const LineBuffer<Complex<Real>> line(static_cast<std::size_t>(head->length));
        if (line.data() == nullptr) {
            return DFT_NO_MEMORY;
        }
        dft_copy_strided<Complex<Real>>(head->length, first, stride, line.data(), 1);
        const std::int32_t status = routine(line.data(), threads, head);
        if (status == DFT_OK) {
            dft_copy_strided<Complex<Real>>(head->length, line.data(), 1, first, stride);
        }
        return status;
    }

    std::int32_t RunPlane(Complex<Real>* plane) {
        const DftDescriptor* const head = m_Job.head;
        const std::ptrdiff_t rowLength = head[0].length;
        const std::ptrdiff_t rowCount = head[1].length;
        if (static_cast<std::int64_t>(rowLength) * rowCount < dft_tuning().serial_rank2_below) {
            return c2d_dft_serial(m_Job, plane, m_Work.data());
        }
        const std::int32_t status = Region(1, rowCount, m_Threads, [&](const Slice& rows, void* work) {
            return c1d_rows_dft(m_Job, plane + rows.first * Stride(head[1], m_Job.side), rows.count, work);
        });
        if (status != DFT_OK || rowCount == 1) {
            return status;
        }
        return Region(0, rowLength, m_Threads, [&](const Slice& columns, void* work) {
            return c1d_cols_dft(m_Job, plane + columns.first * Stride(head[0], m_Job.side), columns.count, work);
        });
    }

    std::int32_t RunVolume(Complex<Real>* first) {
        const DftDescriptor* const head = m_Job.head;
        const int last = head->rank - 1;
        std::int32_t status = Region(last, head[last].length, m_Threads, [&](const Slice& slice, void* work) {
            return TransformPlanes(m_Job, first, slice, work);
        });
        // Lines along the last record cross all slices of it.
        for (int k = 2; k <= last && status == DFT_OK; ++k) {
            const int split = k < last ? last : last - 1;
            status = Region(split, head[split].length, m_Threads, [&](const Slice& slice, void* work) {
                return TransformAlong(m_Job, k, first, slice, work);
            });
        }
        return status;
    }

    Job m_Job;
    int m_Threads;
    WorkMemory m_Work;
};

} // namespace

template <typename Real>
std::int32_t RunSerial(DftDescriptor* head, Direction direction, Complex<Real>* data) {
    return RunInPlace(Job{head, direction, Side::kInput}, data);
}

template <typename Real>
std::int32_t RunSerial(DftDescriptor* head, Direction direction, const Complex<Real>* input, Complex<Real>* output) {
    CopyInput(head, input, output);
    return RunInPlace(Job{head, direction, Side::kOutput}, output);
}

template <typename Real>
std::int32_t RunThreaded(DftDescriptor* head, Direction direction, Complex<Real>* data, int threads) {
    return Regions<Real>({head, direction, Side::kInput}, threads).Run(data);
}

template <typename Real>
std::int32_t RunThreaded(DftDescriptor* head, Direction direction, const Complex<Real>* input, Complex<Real>* output,
                         int threads) {
    CopyInput(head, input, output);
    return Regions<Real>({head, direction, Side::kOutput}, threads).Run(output);
}

#define CLARIBOX_INSTANTIATE(Real)                                                                                     \
    template std::int32_t RunSerial(DftDescriptor*, Direction, Complex<Real>*);                                        \
    template std::int32_t RunSerial(DftDescriptor*, Direction, const Complex<Real>*, Complex<Real>*);                  \
    template std::int32_t RunThreaded(DftDescriptor*, Direction, Complex<Real>*, int);                                 \
    template std::int32_t RunThreaded(DftDescriptor*, Direction, const Complex<Real>*, Complex<Real>*, int);
CLARIBOX_INSTANTIATE(float)
CLARIBOX_INSTANTIATE(double)

} // namespace dft
