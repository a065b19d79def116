// A multi-index over the positions of several records of a job.
#pragma once

#include "dft/base/chunks.h"
#include "dft/base/record.h"
#include "dft/base/record_fields.h"

#include <cstddef>

namespace dft {

/// Positions of chosen records, the one added first turning fastest.
class Odometer {
public:
    /// Adds positions first .. first + count - 1 of a record.
    void Add(const DftDescriptor& record, std::ptrdiff_t first, std::ptrdiff_t count) {
        Axis& axis = m_Axes[m_Count++];
        axis = {count, 0, {record.input_stride, record.output_stride}};
        for (int side = 0; side < 2; ++side) {
            m_Offsets[side] += first * axis.strides[side];
        }
        m_IsDone = m_IsDone || count < 1;
    }

    /// Adds all records from `from` on but `except`; one of them may be confined to `slice`.
    void AddRecords(const DftDescriptor* head, int from, int except, const Slice& slice) {
        for (int k = from; k < head->rank; ++k) {
            if (k == slice.record) {
                Add(head[k], slice.first, slice.count);
            } else if (k != except) {
                Add(head[k], 0, head[k].length);
            }
        }
    }

    bool IsDone() const { return m_IsDone; }

    /// Elements from the first element of the transform to this position.
    std::ptrdiff_t Offset(Side side) const { return m_Offsets[static_cast<int>(side)]; }

    void Next() {
        for (int k = 0; k < m_Count; ++k) {
            Axis& axis = m_Axes[k];
            const bool turnsOver = ++axis.index == axis.count;
            const std::ptrdiff_t steps = turnsOver ? 1 - axis.count : 1;
            m_Offsets[0] += steps * axis.strides[0];
            m_Offsets[1] += steps * axis.strides[1];
            if (!turnsOver) {
                return;
            }
            axis.index = 0;
        }
        m_IsDone = true;
    }

private:
    struct Axis {
        std::ptrdiff_t count;
        std::ptrdiff_t index;
        std::ptrdiff_t strides[2];
    };
    Axis m_Axes[kMaximumRank];
    int m_Count = 0;
    std::ptrdiff_t m_Offsets[2] = {0, 0};
    bool m_IsDone = false;
};

} // namespace dft
