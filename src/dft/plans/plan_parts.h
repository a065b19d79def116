// What plans of any length and plans of powers of two share.
#pragma once

#include "dft/memory/engine_memory.h"
#include "dft/plans/plan_runs.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace dft {

/// A cleared block for `count` elements of T from plan memory; null if there is none.
template <typename T>
T* AllocateTable(std::int64_t count) {
    constexpr std::int64_t kMost = std::numeric_limits<std::ptrdiff_t>::max() / static_cast<std::int64_t>(sizeof(T));
    T* const table =
        count > kMost / 2
            ? nullptr
            : static_cast<T*>(plan_alloc(static_cast<std::ptrdiff_t>(count * static_cast<std::int64_t>(sizeof(T)))));
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
    switch (norm_flag) {
    case kForwardByLength:
    case kBackwardByLength:
        plan.scale = static_cast<Scale>(1 / length);
        return kPlanOk;
    case kBothBySquareRoot:
        plan.scale = static_cast<Scale>(1 / std::sqrt(length));
        return kPlanOk;
    case kUnscaled:
        return kPlanOk;
    default:
        return kPlanBadNormalisation;
    }
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

/// A plan of `length` elements: `build(plan)` fills in all but the normalisation and returns a status. `*plan`, null
/// before, is stored only with kPlanOk; what was built until another status goes to `release`.
template <typename Plan, typename Build>
std::int32_t CreatePlan(Plan** plan, double length, int norm_flag, Build build, void (*release)(Plan*)) {
    Plan* const built = AllocateTable<Plan>(1);
    if (built == nullptr) {
        return kPlanNoMemory;
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

} // namespace dft
