// The passes of a job over its dimensions, on the calling thread: the serial drivers, and what a chunk of a parallel
// region runs. All work in place; `side` says which strides, offset and distance lay the array out. The threaded and
// the serial road meet here, so that they give the same bytes.
#pragma once

#include "dft/base/record.h"
#include "dft/base/record_fields.h"
#include "dft/driver/odometer.h"
#include "dft/plans/plan_runs.h"

#include <cstddef>
#include <cstdint>

namespace dft {

/// What all passes of a job share.
struct Job {
    DftDescriptor* head;
    Direction direction;
    Side side;
};

/// `transforms` transforms of any rank. `data` is the caller's pointer plus the distances of the transforms before;
/// the offset is added here.
template <typename Real>
std::int32_t cnd_dft_serial(const Job& job, Complex<Real>* data, std::ptrdiff_t transforms, void* work);

/// One plane of records 0 and 1: the rows, then the columns.
template <typename Real>
std::int32_t c2d_dft_serial(const Job& job, Complex<Real>* plane, void* work);

/// `rowCount` adjacent rows of a plane.
template <typename Real>
std::int32_t c1d_rows_dft(const Job& job, Complex<Real>* firstRow, std::ptrdiff_t rowCount, void* work);

/// `columnCount` adjacent columns of a plane.
template <typename Real>
std::int32_t c1d_cols_dft(const Job& job, Complex<Real>* firstColumn, std::ptrdiff_t columnCount, void* work);

/// The planes of records 0 and 1 of one transform of rank 3 or above, as far as they lie in the slice of a later
/// record. `first` is the first element of the transform.
template <typename Real>
std::int32_t TransformPlanes(const Job& job, Complex<Real>* first, const Slice& slice, void* work);

/// The lines along record k, from 2 upward, as far as they lie in the slice of another record from 1 upward. A record
/// of length 1 is skipped, its scale factor too.
template <typename Real>
std::int32_t TransformAlong(const Job& job, int k, Complex<Real>* first, const Slice& slice, void* work);

} // namespace dft
