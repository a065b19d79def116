// What every caller of a plan's runs needs.
#pragma once

#include "dft/plans/plan_runs.h"

#include <cstddef>
#include <memory>
#include <type_traits>

namespace dft {

/// The runs of the vector class in force.
template <typename Real>
const PlanRuns<Real>& ActivePlanRuns() {
    if constexpr (std::is_same_v<Real, float>) {
        return ActivePlanRunsSingle();
    } else {
        return ActivePlanRunsDouble();
    }
}

/// The first multiple of 16 bytes in `work`, where runs want to begin; null stays null.
inline void* AlignedWork(void* work) {
    std::size_t space = 32;
    return work == nullptr ? nullptr : std::align(16, 16, work, space);
}

} // namespace dft
