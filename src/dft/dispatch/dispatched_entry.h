// What stands between a front entry and the routine of the variant in force.
#pragma once

#include "dft/base/variant.h"
#include "dft/dispatch/control_word.h"

#include <atomic>

namespace dft {

/// Call() has the arguments and the result of `Routine`, which serves all variants: they differ in their DftTuning. The
/// variant is selected at the first call, and the routine found for it is kept.
template <auto Routine>
class DispatchedEntry;

template <typename Result, typename... Arguments, Result (*Routine)(Arguments...)>
class DispatchedEntry<Routine> {
public:
    static Result Call(Arguments... arguments) {
        const EngineControlWord controlWord;
        auto routine = m_Cached.load(std::memory_order_relaxed);
        if (routine == nullptr) {
            routine = kRoutines[dft_select_variant()];
            // Two first calls at once store the same pointer.
            m_Cached.store(routine, std::memory_order_relaxed);
        }
        return routine(arguments...);
    }

private:
    static constexpr decltype(Routine) kRoutines[kVariants] = {Routine, Routine, Routine, Routine};
    static inline std::atomic<Result (*)(Arguments...)> m_Cached{nullptr};
};

} // namespace dft
