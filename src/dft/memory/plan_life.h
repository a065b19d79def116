// The life of a plan of any kind: its creation, the memory of its tables, and how each of its runs begins and ends.
#pragma once

#include "dft/base/plan_status.h"
#include "dft/memory/engine_memory.h"
#include "dft/memory/work_memory.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>

namespace dft {

/// A cleared block for `count` elements of T from plan memory; null if there is none.
template <typename T>
T* AllocateTable(std::int64_t count) {
    constexpr std::int64_t kSize = sizeof(T);
    const bool fits = count <= std::numeric_limits<std::ptrdiff_t>::max() / kSize / 2;
    T* const table = fits ? static_cast<T*>(plan_alloc(static_cast<std::ptrdiff_t>(count * kSize))) : nullptr;
    if (table != nullptr) {
        std::fill_n(table, count, T{});
    }
    return table;
}

/// Stores flags and scale for `length` elements. kPlanBadNormalisation for a flag other than 8, 1, 2, 4.
template <typename Plan>
std::int32_t StoreNormalisation(Plan& plan, double length, int norm_flag) {
    using Scale = decltype(plan.scale);
    plan.scale_forward = norm_flag == kForwardByLength || norm_flag == kBothBySquareRoot;
    plan.scale_backward = norm_flag == kBackwardByLength || norm_flag == kBothBySquareRoot;
    if (norm_flag == kForwardByLength || norm_flag == kBackwardByLength) {
        plan.scale = static_cast<Scale>(1 / length);
    } else if (norm_flag == kBothBySquareRoot) {
        plan.scale = static_cast<Scale>(1 / std::sqrt(length));
    } else if (norm_flag != kUnscaled) {
        return kPlanBadNormalisation;
    }
    return kPlanOk;
}

/// Multiplies the result of a run by the plan's scale where its flag asks for it.
template <typename Plan, typename Real>
void ScaleResult(const Plan& plan, Direction direction, Complex<Real>* output, std::int64_t count) {
    if ((direction == kForward ? plan.scale_forward : plan.scale_backward) != 0) {
        std::for_each(output, output + count, [&](Complex<Real>& x) { x = {x.re * plan.scale, x.im * plan.scale}; });
    }
}

/// False for lines that no method can hold in as many bytes as `work_bytes` can tell.
template <typename Real>
bool FitsWorkMemory(std::int64_t length) {
    return length * static_cast<std::int64_t>(sizeof(Complex<Real>)) <= std::numeric_limits<std::int32_t>::max();
}

/// Stores the work memory of one run. kPlanNoMemory for more bytes than `work_bytes` can tell.
template <typename Plan>
std::int32_t StoreWorkBytes(Plan& plan, std::int64_t bytes) {
    if (bytes > std::numeric_limits<std::int32_t>::max()) {
        return kPlanNoMemory;
    }
    plan.work_bytes = static_cast<std::int32_t>(bytes);
    return kPlanOk;
}

/// Creates a plan of `length` elements, unless `argument` is another status than kPlanOk: `build(plan)` fills in all
/// but the normalisation and returns a status. `*plan` is null but for kPlanOk; what was built until another status
/// goes to `release`.
template <typename Plan, typename Build>
std::int32_t CreatePlan(Plan** plan, std::int32_t argument, double length, int norm_flag, Build build,
                        void (*release)(Plan*)) {
    if (plan == nullptr) {
        return kPlanNullPointer;
    }
    *plan = nullptr;
    Plan* const built = argument == kPlanOk ? AllocateTable<Plan>(1) : nullptr;
    if (built == nullptr) {
        return argument == kPlanOk ? kPlanNoMemory : argument;
    }
    std::int32_t status = StoreNormalisation(*built, length, norm_flag);
    if (status == kPlanOk) {
        status = build(*built);
    }
    if (status == kPlanOk) {
        *plan = built;
    } else {
        release(built);
    }
    return status;
}

/// Stores the bytes of work memory of one run. kPlanNullPointer, kPlanBadTag.
template <typename Plan>
std::int32_t WorkSize(const Plan* plan, std::int32_t tag, int* bytes) {
    if (plan == nullptr || bytes == nullptr) {
        return kPlanNullPointer;
    }
    if (plan->tag != tag) {
        return kPlanBadTag;
    }
    *bytes = plan->work_bytes;
    return kPlanOk;
}

/// Calls run(work) if the arguments of a run are good, with the caller's work memory or, where that is null, its own.
/// `work` begins on a multiple of 16 bytes, as the methods want it. The status of `run`, kPlanNullPointer, kPlanBadTag
/// or kPlanNoMemory.
template <typename Plan, typename Run>
std::int32_t RunPlan(const Plan* plan, std::int32_t tag, const void* input, const void* output, void* work, Run run) {
    if (plan == nullptr) {
        return kPlanNullPointer;
    }
    if (plan->tag != tag) {
        return kPlanBadTag;
    }
    if (input == nullptr || output == nullptr) {
        return kPlanNullPointer;
    }
    const WorkMemory own(work == nullptr ? static_cast<std::size_t>(plan->work_bytes) : 0);
    void* block = work == nullptr ? own.data() : work;
    if (block == nullptr) {
        return kPlanNoMemory;
    }
    std::size_t space = 32;
    return run(std::align(16, 16, block, space));
}

} // namespace dft
