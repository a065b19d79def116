#include "dft/base/chunks.h"
#include "dft/base/variant.h"
#include "dft/driver/jobs.h"
#include "dft/driver/line_groups.h"
#include "dft/driver/odometer.h"
#include "dft/memory/work_memory.h"

#include <algorithm>

namespace dft {
namespace {

/// A slice that confines nothing.
constexpr Slice kWhole = {-1, 0, 0};

/// One compute call. All passes work in place; `m_Side` names the strides, offset and distance in force. Serial and
/// parallel form share their passes, and so give the same bytes.
template <typename Real>
class ComplexJob {
public:
    ComplexJob(DftDescriptor* head, Direction direction, Side side, int threads)
        : m_Head(head), m_Direction(direction), m_Side(side), m_Threads(threads), m_Work(WorkBytes(*head), threads) {}

    std::int32_t Run(Complex<Real>* data) {
        if (m_Work.data() == nullptr) {
            return DFT_NO_MEMORY;
        }
        if (m_Threads < 2) {
            return cnd_dft_serial(data, m_Head->number_of_transforms, m_Work.data());
        }
        if (m_Head->number_of_transforms != 1) {
            return RunTransforms(data);
        }
        Complex<Real>* const first = data + Offset(*m_Head, m_Side);
        return m_Head->rank == 1 ? RunLine(first) : m_Head->rank == 2 ? RunPlane(first) : RunVolume(first);
    }

private:
    /// `transforms` transforms of any rank. `data` includes the distances of those before, but not the offset.
    std::int32_t cnd_dft_serial(Complex<Real>* data, std::ptrdiff_t transforms, void* work) {
        Complex<Real>* const first = data + Offset(*m_Head, m_Side);
        const std::ptrdiff_t distance = Distance(*m_Head, m_Side);
        if (m_Head->rank == 1) {
            const Lines<Real> lines{first, Stride(*m_Head, m_Side), distance, transforms, m_Head->length};
            return TransformLines(m_Head, m_Direction, lines, StatusRule::AllTested, work);
        }
        std::int32_t status = DFT_OK;
        for (std::ptrdiff_t t = 0; t < transforms && status == DFT_OK; ++t) {
            Complex<Real>* const transform = first + t * distance;
            status = TransformPlanes(transform, kWhole, work);
            for (int k = 2; k < m_Head->rank && status == DFT_OK; ++k) {
                status = TransformAlong(k, transform, kWhole, work);
            }
        }
        return status;
    }

    /// One plane of records 0 and 1: the rows, then the columns.
    std::int32_t c2d_dft_serial(Complex<Real>* plane, void* work) {
        const std::ptrdiff_t rowCount = m_Head[1].length;
        const std::int32_t status = c1d_rows_dft(plane, rowCount, work);
        return status != DFT_OK || rowCount < 2 ? status : c1d_cols_dft(1, plane, m_Head->length, work);
    }

    /// Adjacent rows of a plane.
    std::int32_t c1d_rows_dft(Complex<Real>* firstRow, std::ptrdiff_t rowCount, void* work) {
        const Lines<Real> rows{firstRow, Stride(m_Head[0], m_Side), Stride(m_Head[1], m_Side), rowCount,
                               m_Head->length};
        return TransformLines(m_Head, m_Direction, rows, StatusRule::AllTested, work);
    }

    /// Lines along record k, from 1 upward, beside one another along record 0.
    std::int32_t c1d_cols_dft(int k, Complex<Real>* firstColumn, std::ptrdiff_t columnCount, void* work) {
        DftDescriptor* const record = m_Head + k;
        const Lines<Real> columns{firstColumn, Stride(*record, m_Side), Stride(*m_Head, m_Side), columnCount,
                                  record->length};
        const StatusRule rule = columns.lineStride == 1 ? StatusRule::LastGroupUntested : StatusRule::AllTested;
        return TransformLines(record, m_Direction, columns, rule, work);
    }

    /// The planes of records 0 and 1 of one transform, as far as they lie in the slice of a later record.
    std::int32_t TransformPlanes(Complex<Real>* first, const Slice& slice, void* work) {
        Odometer planes;
        planes.AddRecords(m_Head, 2, -1, slice);
        std::int32_t status = DFT_OK;
        for (; !planes.IsDone() && status == DFT_OK; planes.Next()) {
            status = c2d_dft_serial(first + planes.Offset(m_Side), work);
        }
        return status;
    }

    /// The lines along record k, from 2 upward, within the slice of another record from 1 upward. A record of length 1
    /// is skipped, its scale factor too.
    std::int32_t TransformAlong(int k, Complex<Real>* first, const Slice& slice, void* work) {
        Odometer positions;
        positions.AddRecords(m_Head, 1, k, slice);
        std::int32_t status = DFT_OK;
        for (; m_Head[k].length > 1 && !positions.IsDone() && status == DFT_OK; positions.Next()) {
            status = c1d_cols_dft(k, first + positions.Offset(m_Side), m_Head->length, work);
        }
        return status;
    }

    /// A parallel region: pass(slice, work) for each chunk's slice of a record of `length` positions.
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
        const std::ptrdiff_t transforms = m_Head->number_of_transforms;
        const std::ptrdiff_t distance = Distance(*m_Head, m_Side);
        const int chunks = static_cast<int>(std::min<std::ptrdiff_t>(m_Threads, transforms));
        return Region(-1, transforms, chunks, [&](const Slice& slice, void* work) {
            return cnd_dft_serial(data + slice.first * distance, slice.count, work);
        });
    }

    std::int32_t RunLine(Complex<Real>* first) {
        const DftTuning& tuning = dft_tuning();
        const Lines<Real> line{first, Stride(*m_Head, m_Side), 0, 1, m_Head->length};
        if (m_Head->length < tuning.serial_rank1_below[kPrecision<Real>] || m_Head->general_length == 1) {
            return TransformLines(m_Head, m_Direction, line, StatusRule::AllTested, m_Work.data());
        }
        // In single precision the limit of two threads is one of jobs out of place.
        const bool isLimited = kPrecision<Real> == 1 || m_Side == Side::Output;
        const bool isShort = m_Head->length < tuning.two_threads_below[kPrecision<Real>];
        const int threads = isLimited && isShort ? std::min(m_Threads, 2) : m_Threads;
        const DftThreadedRoutine routine = m_Head->*RecordFields<Real>::kThreaded[m_Direction];
        if (line.elementStride == 1) {
            return routine(first, threads, m_Head);
        }
        const LineBuffer<Complex<Real>> buffer(static_cast<std::size_t>(line.length));
        if (buffer.data() == nullptr) {
            return DFT_NO_MEMORY;
        }
        dft_copy_strided<Complex<Real>>(line.length, first, line.elementStride, buffer.data(), 1);
        const std::int32_t status = routine(buffer.data(), threads, m_Head);
        if (status == DFT_OK) {
            dft_copy_strided<Complex<Real>>(line.length, buffer.data(), 1, first, line.elementStride);
        }
        return status;
    }

    std::int32_t RunPlane(Complex<Real>* plane) {
        const std::ptrdiff_t rowLength = m_Head[0].length;
        const std::ptrdiff_t rowCount = m_Head[1].length;
        if (static_cast<std::int64_t>(rowLength) * rowCount < dft_tuning().serial_rank2_below) {
            return c2d_dft_serial(plane, m_Work.data());
        }
        const std::int32_t status = Region(1, rowCount, m_Threads, [&](const Slice& rows, void* work) {
            return c1d_rows_dft(plane + rows.first * Stride(m_Head[1], m_Side), rows.count, work);
        });
        if (status != DFT_OK || rowCount == 1) {
            return status;
        }
        return Region(0, rowLength, m_Threads, [&](const Slice& columns, void* work) {
            return c1d_cols_dft(1, plane + columns.first * Stride(m_Head[0], m_Side), columns.count, work);
        });
    }

    std::int32_t RunVolume(Complex<Real>* first) {
        const int last = m_Head->rank - 1;
        std::int32_t status = Region(last, m_Head[last].length, m_Threads, [&](const Slice& slice, void* work) {
            return TransformPlanes(first, slice, work);
        });
        // Lines along the last record cross all slices of it.
        for (int k = 2; k <= last && status == DFT_OK; ++k) {
            const int split = k < last ? last : last - 1;
            status = Region(split, m_Head[split].length, m_Threads,
                            [&](const Slice& slice, void* work) { return TransformAlong(k, first, slice, work); });
        }
        return status;
    }

    DftDescriptor* m_Head;
    Direction m_Direction;
    Side m_Side;
    int m_Threads;
    WorkMemory m_Work; ///< a slice for each chunk
};

/// The whole input to its places in the output, row by row.
template <typename Real>
void CopyInput(const DftDescriptor* head, const Complex<Real>* input, Complex<Real>* output) {
    for (std::ptrdiff_t t = 0; t < head->number_of_transforms; ++t) {
        const Complex<Real>* const from = input + head->input_offset + t * head->input_distance;
        Complex<Real>* const to = output + head->output_offset + t * head->output_distance;
        Odometer rows;
        for (rows.AddRecords(head, 1, -1, kWhole); !rows.IsDone(); rows.Next()) {
            dft_copy_strided(head->length, from + rows.Offset(Side::Input), head->input_stride,
                             to + rows.Offset(Side::Output), head->output_stride);
        }
    }
}

} // namespace

template <typename Real>
std::int32_t RunJob(DftDescriptor* head, Direction direction, Complex<Real>* data, Complex<Real>* output, int threads) {
    if (head->placement == DFT_INPLACE) {
        return ComplexJob<Real>(head, direction, Side::Input, threads).Run(data);
    }
    CopyInput<Real>(head, data, output);
    return ComplexJob<Real>(head, direction, Side::Output, threads).Run(output);
}

template std::int32_t RunJob(DftDescriptor*, Direction, Complex<float>*, Complex<float>*, int);
template std::int32_t RunJob(DftDescriptor*, Direction, Complex<double>*, Complex<double>*, int);

} // namespace dft
