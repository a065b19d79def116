#include "dft/memory/engine_memory.h"

#include <cstdlib>
#include <omp.h>
#include <string_view>

namespace dft {

std::atomic<std::int32_t> serial_switch{-1};

std::int32_t engine_serial_switch() {
    std::int32_t serial = serial_switch.load(std::memory_order_relaxed);
    if (serial == -1) {
        const char* const value = std::getenv("CLARIBOX_SERIAL");
        if (value == nullptr) {
            serial = std::getenv("OMP_NUM_THREADS") == nullptr ? 1 : 0;
        } else {
            // Required: no other spelling counts, "Yes" included. Pinned by EngineThreads.SerialSwitch.
            const std::string_view spelling(value);
            serial = spelling == "YES" || spelling == "yes" ? 1 : 0;
        }
        serial_switch.store(serial, std::memory_order_relaxed);
    }
    return serial;
}

int engine_maximum_threads() {
    if (engine_serial_switch() == 1 || omp_in_parallel() != 0) {
        return 1;
    }
    return omp_get_max_threads();
}

} // namespace dft
