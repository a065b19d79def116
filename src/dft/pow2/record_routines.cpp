// The descriptor routines of a power of two, whole and on several threads.
#include "dft/pow2/pow2.h"

#include "dft/base/chunks.h"
#include "dft/memory/work_memory.h"
#include "dft/pow2/record_kernels.h"

namespace dft {
namespace {

constexpr int kShortestSubtransformBits = 4; // derived: the passes of a block need 16 points

/// Log2 of the number of sub-transforms: as many as threads, rounded down to a power of two.
int LevelsFor(std::int32_t threads, int log2_length) {
    int levels = 0;
    while (levels < log2_length - kShortestSubtransformBits && std::int64_t{2} << levels <= threads) {
        ++levels;
    }
    return levels;
}

template <typename Real>
void RunOnThreads(const Pow2Schedule<Real>& schedule, Direction direction, Complex<Real>* data, Complex<Real>* scratch,
                  int levels) {
    const Pow2Kernels<Real>& kernels = ActivePow2Kernels<Real>();
    const auto reverse = [&] {
        if (schedule.ordered) {
            ReverseOrder(data, schedule.log2_length, schedule.table.lists);
        }
    };
    const auto subtransforms = [&] {
        RunChunks(1 << levels, 1 << levels,
                  [&](int number) { kernels.subtransform[direction](schedule, data, scratch, levels, number); });
    };
    if (direction == kForward) {
        kernels.levels[direction](schedule, data, scratch, levels);
        subtransforms();
        reverse();
    } else {
        reverse();
        subtransforms();
        kernels.levels[direction](schedule, data, scratch, levels);
    }
}

template <typename Real>
std::int32_t Run(Direction direction, void* line, const DftDescriptor& record, std::int32_t threads = 1) {
    auto* const data = static_cast<Complex<Real>*>(line);
    const LineBuffer<Complex<Real>> scratch(static_cast<std::size_t>(record.length));
    if (scratch.data() == nullptr) {
        return DFT_NO_MEMORY;
    }
    const Pow2Schedule<Real> schedule = ScheduleOf<Real>(record, direction);
    const int levels = LevelsFor(threads, record.log2_length);
    if (levels > 0) {
        RunOnThreads(schedule, direction, data, scratch.data(), levels);
    } else {
        ActivePow2Kernels<Real>().line[direction](schedule, data, scratch.data());
    }
    return DFT_OK;
}

} // namespace

std::int32_t c1d_forward_pow2(void* input, void*, DftDescriptor* record, void*) {
    return Run<float>(kForward, input, *record);
}
std::int32_t c1d_backward_pow2(void* input, void*, DftDescriptor* record, void*) {
    return Run<float>(kBackward, input, *record);
}
std::int32_t z1d_forward_pow2(void* input, void*, DftDescriptor* record, void*) {
    return Run<double>(kForward, input, *record);
}
std::int32_t z1d_backward_pow2(void* input, void*, DftDescriptor* record, void*) {
    return Run<double>(kBackward, input, *record);
}

std::int32_t c1d_forw_dft(void* data, std::int32_t threads, DftDescriptor* record) {
    return Run<float>(kForward, data, *record, threads);
}
std::int32_t c1d_back_dft(void* data, std::int32_t threads, DftDescriptor* record) {
    return Run<float>(kBackward, data, *record, threads);
}
std::int32_t z1d_forw_dft(void* data, std::int32_t threads, DftDescriptor* record) {
    return Run<double>(kForward, data, *record, threads);
}
std::int32_t z1d_back_dft(void* data, std::int32_t threads, DftDescriptor* record) {
    return Run<double>(kBackward, data, *record, threads);
}

} // namespace dft
