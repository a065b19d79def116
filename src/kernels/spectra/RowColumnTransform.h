// The transform of a picture as two jobs of the DFT engine: what is done to the elements of a row before its transform,
// or after it, finds them in the cache.
#pragma once

#include "claribox/KernelTable.h"
#include "dft/dft.h"

#include <algorithm>
#include <cstddef>

namespace kernels {

/// Transforms rows of `width` elements, and columns of `height` elements in rows of `columns`; all are 1 or more. Rows
/// first, then as many columns as a row is wide, has the bytes of PictureTransform. Statuses of the engine are not
/// looked at, as there.
class RowColumnTransform {
public:
    RowColumnTransform(int width, int height) : RowColumnTransform(width, height, width) {}
    RowColumnTransform(int width, int height, int columns)
        : m_Rows(Job(width, 1, width, RowsInCache(width))), m_Columns(Job(height, columns, 1, columns)) {}
    ~RowColumnTransform() {
        dft::dfti_free_descriptor(&m_Rows);
        dft::dfti_free_descriptor(&m_Columns);
    }
    RowColumnTransform(const RowColumnTransform&) = delete;
    RowColumnTransform& operator=(const RowColumnTransform&) = delete;

    /// Rows whose spectra fill no more than half of a second-level cache of 1 MiB, in whole batches of the engine,
    /// which are of 16 lines at most.
    static int RowsInCache(int width) {
        constexpr std::size_t kBytes = std::size_t{512} << 10;
        const std::size_t batches = kBytes / (16 * sizeof(ChComplex) * static_cast<std::size_t>(width));
        return 16 * static_cast<int>(std::max<std::size_t>(batches, 1));
    }

    /// `count` rows from `first` on; nothing for a count of 0.
    void ForwardRows(ChComplex* first, int count) { Run(dft::dfti_compute_forward, first, count); }
    void BackwardRows(ChComplex* first, int count) { Run(dft::dfti_compute_backward, first, count); }

    void ForwardColumns(ChComplex* data) { dft::dfti_compute_forward(m_Columns, data); }
    void BackwardColumns(ChComplex* data) { dft::dfti_compute_backward(m_Columns, data); }

private:
    static dft::DftDescriptor* Job(int length, int stride, int distance, int count) {
        dft::DftDescriptor* job = nullptr;
        dft::dfti_create_descriptor(&job, dft::DFT_SINGLE, dft::DFT_COMPLEX, 1, length);
        if (job != nullptr) {
            job->input_stride = stride;
            job->input_distance = distance;
            job->number_of_transforms = count;
            dft::dfti_commit_descriptor(job);
        }
        return job;
    }

    template <typename Compute>
    void Run(Compute compute, ChComplex* first, int count) {
        if (m_Rows != nullptr && count > 0) {
            m_Rows->number_of_transforms = count;
            compute(m_Rows, first, nullptr);
        }
    }

    dft::DftDescriptor* m_Rows;
    dft::DftDescriptor* m_Columns;
};

} // namespace kernels
