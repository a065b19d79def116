#include "dft/driver/serial_passes.h"

#include "dft/driver/line_groups.h"

namespace dft {
namespace {

/// A later record in full: a slice that confines nothing.
constexpr Slice kWhole = {-1, 0, 0};

/// Lines along `record`, beside one another along `across`.
template <typename Real>
Lines<Real> LinesAlong(const DftDescriptor& record, const DftDescriptor& across, Side side, Complex<Real>* first,
                       std::ptrdiff_t count) {
    return {first, Stride(record, side), Stride(across, side), count, record.length};
}

/// Lines along a later record than 0, side by side along record 0.
template <typename Real>
std::int32_t TransformColumns(const Job& job, int k, Complex<Real>* first, std::ptrdiff_t count, void* work) {
    DftDescriptor* const record = job.head + k;
    const Lines<Real> columns = LinesAlong(*record, *job.head, job.side, first, count);
    const StatusRule rule = columns.lineStride == 1 ? StatusRule::kLastGroupUntested : StatusRule::kAllTested;
    return TransformLines(record, job.direction, columns, rule, work);
}

template <typename Real>
std::int32_t TransformAllRecords(const Job& job, Complex<Real>* first, void* work) {
    if (job.head->rank == 2) {
        return c2d_dft_serial(job, first, work);
    }
    std::int32_t status = TransformPlanes(job, first, kWhole, work);
    for (int k = 2; k < job.head->rank && status == DFT_OK; ++k) {
        status = TransformAlong(job, k, first, kWhole, work);
    }
    return status;
}

} // namespace

template <typename Real>
std::int32_t c1d_rows_dft(const Job& job, Complex<Real>* firstRow, std::ptrdiff_t rowCount, void* work) {
    const Lines<Real> rows = LinesAlong(job.head[0], job.head[1], job.side, firstRow, rowCount);
    return TransformLines(job.head, job.direction, rows, StatusRule::kAllTested, work);
}

template <typename Real>
std::int32_t c1d_cols_dft(const Job& job, Complex<Real>* firstColumn, std::ptrdiff_t columnCount, void* work) {
    return TransformColumns(job, 1, firstColumn, columnCount, work);
}

template <typename Real>
std::int32_t c2d_dft_serial(const Job& job, Complex<Real>* plane, void* work) {
    const std::ptrdiff_t rowCount = job.head[1].length;
    const std::int32_t status = c1d_rows_dft(job, plane, rowCount, work);
    return status != DFT_OK || rowCount < 2 ? status : c1d_cols_dft(job, plane, job.head[0].length, work);
}

template <typename Real>
std::int32_t TransformPlanes(const Job& job, Complex<Real>* first, const Slice& slice, void* work) {
    Odometer planes;
    planes.AddRecords(job.head, 2, -1, slice);
    std::int32_t status = DFT_OK;
    for (; !planes.IsDone() && status == DFT_OK; planes.Next()) {
        status = c2d_dft_serial(job, first + planes.Offset(job.side), work);
    }
    return status;
}

template <typename Real>
std::int32_t TransformAlong(const Job& job, int k, Complex<Real>* first, const Slice& slice, void* work) {
    if (job.head[k].length == 1) {
        return DFT_OK;
    }
    Odometer positions;
    positions.AddRecords(job.head, 1, k, slice);
    std::int32_t status = DFT_OK;
    for (; !positions.IsDone() && status == DFT_OK; positions.Next()) {
        status = TransformColumns(job, k, first + positions.Offset(job.side), job.head->length, work);
    }
    return status;
}

template <typename Real>
std::int32_t cnd_dft_serial(const Job& job, Complex<Real>* data, std::ptrdiff_t transforms, void* work) {
    Complex<Real>* const first = data + Offset(*job.head, job.side);
    const std::ptrdiff_t distance = Distance(*job.head, job.side);
    if (job.head->rank == 1) {
        const Lines<Real> lines{first, Stride(*job.head, job.side), distance, transforms, job.head->length};
        return TransformLines(job.head, job.direction, lines, StatusRule::kAllTested, work);
    }
    std::int32_t status = DFT_OK;
    for (std::ptrdiff_t t = 0; t < transforms && status == DFT_OK; ++t) {
        status = TransformAllRecords(job, first + t * distance, work);
    }
    return status;
}

#define CLARIBOX_INSTANTIATE(Real)                                                                                     \
    template std::int32_t cnd_dft_serial(const Job&, Complex<Real>*, std::ptrdiff_t, void*);                           \
    template std::int32_t c2d_dft_serial(const Job&, Complex<Real>*, void*);                                           \
    template std::int32_t c1d_rows_dft(const Job&, Complex<Real>*, std::ptrdiff_t, void*);                             \
    template std::int32_t c1d_cols_dft(const Job&, Complex<Real>*, std::ptrdiff_t, void*);                             \
    template std::int32_t TransformPlanes(const Job&, Complex<Real>*, const Slice&, void*);                            \
    template std::int32_t TransformAlong(const Job&, int, Complex<Real>*, const Slice&, void*);
CLARIBOX_INSTANTIATE(float)
CLARIBOX_INSTANTIATE(double)

} // namespace dft
