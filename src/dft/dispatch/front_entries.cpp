#include "dft/dft.h"

#include "dft/descriptor/descriptor_routines.h"
#include "dft/dispatch/dft_dispatch.h"

#include <cstdarg>
#include <cstdint>

extern "C" void sscal_(const int* count, const float* scale, float* x, const int* increment);

namespace dft {
namespace {

/// Holds the x87 control word at 64 bits of mantissa, round to nearest, all exceptions masked, and restores the
/// caller's. MXCSR stays as it is.
class EngineControlWord {
public:
    EngineControlWord() {
        asm volatile("fnstcw %0" : "=m"(m_Caller));
        Load(0x037F);
    }
    ~EngineControlWord() { Load(m_Caller); }
    EngineControlWord(const EngineControlWord&) = delete;
    EngineControlWord& operator=(const EngineControlWord&) = delete;

private:
    static void Load(std::uint16_t word) { asm volatile("fldcw %0" : : "m"(word)); }

    std::uint16_t m_Caller;
};

/// Calls routine(arguments) under the engine's control word, with the variant in force. The variants share all
/// routines and differ only in their DftTuning.
template <typename Result, typename... Parameters, typename... Arguments>
Result Dispatch(Result (*routine)(Parameters...), Arguments... arguments) {
    const EngineControlWord controlWord;
    dft_select_variant();
    return routine(arguments...);
}

void ScaleVector(const int* count, const float* scale, float* x, const int* increment) {
    if (*count < 1) {
        return;
    }
    // The linked routine does nothing for a negative increment.
    const auto magnitude = static_cast<unsigned int>(*increment);
    const int step = static_cast<int>(*increment < 0 ? 0 - magnitude : magnitude);
    sscal_(count, scale, x, &step);
}

} // namespace

std::int32_t dfti_create_descriptor(DftDescriptor** handle, int precision, int domain, int rank, ...) {
    int fastestFirst[kMaximumRank] = {}; // a length of 0 is refused
    std::va_list last;
    va_start(last, rank);
    if (rank == 1) {
        fastestFirst[0] = va_arg(last, int);
    } else if (rank > 1 && rank <= kMaximumRank) {
        const int* const lengths = va_arg(last, const int*);
        for (int i = 0; lengths != nullptr && i < rank; ++i) {
            fastestFirst[rank - 1 - i] = lengths[i];
        }
    }
    va_end(last);
    return Dispatch(CreateDescriptor, handle, &precision, &domain, &rank, fastestFirst);
}

std::int32_t dfti_commit_descriptor(DftDescriptor* handle) {
    return Dispatch(CommitDescriptor, &handle);
}

std::int32_t dfti_compute_forward(DftDescriptor* handle, void* data, void* output) {
    return Dispatch(Compute, handle, kForward, data, output);
}

std::int32_t dfti_compute_backward(DftDescriptor* handle, void* data, void* output) {
    return Dispatch(Compute, handle, kBackward, data, output);
}

std::int32_t dfti_free_descriptor(DftDescriptor** handle) {
    return Dispatch(FreeDescriptor, handle);
}

void SSCAL(const int* count, const float* scale, float* x, const int* increment) {
    Dispatch(ScaleVector, count, scale, x, increment);
}

} // namespace dft
