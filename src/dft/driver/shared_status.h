// The status of a parallel region.
#pragma once

#include "dft/dft.h"

#include <atomic>
#include <cstdint>

namespace dft {

/// The first status other than DFT_OK that any thread reports.
class SharedStatus {
public:
    void Report(std::int32_t status) {
        std::int32_t before = DFT_OK;
        if (status != DFT_OK) {
            m_Status.compare_exchange_strong(before, status, std::memory_order_relaxed);
        }
    }
    std::int32_t Get() const { return m_Status.load(std::memory_order_relaxed); }

private:
    std::atomic<std::int32_t> m_Status{DFT_OK};
};

} // namespace dft
