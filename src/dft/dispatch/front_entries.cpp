#include "dft/dft.h"

#include "dft/base/scale_vector.h"
#include "dft/descriptor/descriptor_routines.h"
#include "dft/dispatch/control_word.h"
#include "dft/dispatch/dft_dispatch.h"

#include <cstdarg>

namespace dft {

namespace {

/// Calls routine(arguments) under the engine's control word, with the variant in force. The four variants share their
/// routines: they differ in their DftTuning.
template <typename Result, typename... Parameters, typename... Arguments>
Result Dispatch(Result (*routine)(Parameters...), Arguments... arguments) {
    const EngineControlWord controlWord;
    dft_select_variant();
    return routine(arguments...);
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
