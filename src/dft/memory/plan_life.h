// The life of a plan of any kind: creation, tables, and how each run begins and ends.
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

/// False for lines too long for `work_bytes`, whatever the method.
template <typename Real>
bool FitsWorkMemory(std::int64_t length) {
    return length * static_cast<std::int64_t>(sizeof(Complex<Real>)) <= std::numeric_limits<std::int32_t>::max();
}

/// Stores the bytes of work memory of one run; kPlanNoMemory if `work_bytes` cannot hold the number.
template <typename Plan>
std::int32_t StoreWorkBytes(Plan& plan, std::int64_t bytes) {
    if (bytes > std::numeric_limits<std::int32_t>::max()) {
        return kPlanNoMemory;
    }
    plan.work_bytes = static_cast<std::int32_t>(bytes);
    return kPlanOk;
}

/// Creates a plan of `length` elements unless `argument` is a status other than kPlanOk: `build(plan)` fills in all
/// but the normalisation and returns a status. On failure `*plan` is null, and `release` gets what was built.
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

/// kPlanOk, kPlanNullPointer or kPlanBadTag for a plan that should have `tag`.
template <typename Plan>
std::int32_t CheckPlan(const Plan* plan, std::int32_t tag) {
    return plan == nullptr ? kPlanNullPointer : plan->tag != tag ? kPlanBadTag : kPlanOk;
}

/// Stores the bytes of work memory of one run. kPlanNullPointer, kPlanBadTag.
template <typename Plan>
std::int32_t WorkSize(const Plan* plan, std::int32_t tag, int* bytes) {
    const std::int32_t status = bytes == nullptr ? kPlanNullPointer : CheckPlan(plan, tag);
    if (status == kPlanOk) {
        *bytes = plan->work_bytes;
    }
    return status;
}

/// Checks the arguments of a run and calls run(work), with `work` on a multiple of 16 bytes: the caller's or, if that
/// is null, the run's own. The status of `run`, kPlanNullPointer, kPlanBadTag or kPlanNoMemory.
template <typename Plan, typename Run>
std::int32_t RunPlan(const Plan* plan, std::int32_t tag, const void* input, const void* output, void* work, Run run) {
    if (const std::int32_t status = CheckPlan(plan, tag); status != kPlanOk) {
        return status;
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
