#include "dft/dft.h"

#include "dft/base/scale_vector.h"
#include "dft/descriptor/compute_routines.h"
#include "dft/descriptor/descriptor_routines.h"
#include "dft/dispatch/dispatched_entry.h"

#include <cstdarg>

namespace dft {

namespace {

/// By placement, domain and precision as their fields read, then by direction.
constexpr DftComputeRoutine kComputeEntries[2][2][2][2] = {
    {{{DispatchedEntry<dfti_compute_forward_c>::Call, DispatchedEntry<dfti_compute_backward_c>::Call},
      {DispatchedEntry<dfti_compute_forward_z>::Call, DispatchedEntry<dfti_compute_backward_z>::Call}},
     {{DispatchedEntry<dfti_compute_forward_s>::Call, DispatchedEntry<dfti_compute_backward_s>::Call},
      {DispatchedEntry<dfti_compute_forward_d>::Call, DispatchedEntry<dfti_compute_backward_d>::Call}}},
    {{{DispatchedEntry<dfti_compute_forward_c_out>::Call, DispatchedEntry<dfti_compute_backward_c_out>::Call},
      {DispatchedEntry<dfti_compute_forward_z_out>::Call, DispatchedEntry<dfti_compute_backward_z_out>::Call}},
     {{DispatchedEntry<dfti_compute_forward_s_out>::Call, DispatchedEntry<dfti_compute_backward_s_out>::Call},
      {DispatchedEntry<dfti_compute_forward_d_out>::Call, DispatchedEntry<dfti_compute_backward_d_out>::Call}}}};

std::int32_t Compute(Direction direction, DftDescriptor* handle, void* data, void* output) {
    if (handle == nullptr) {
        return DFT_BAD_ARGUMENT;
    }
    const bool outOfPlace = handle->placement != DFT_INPLACE;
    const bool real = handle->forward_domain != DFT_COMPLEX;
    const bool twice = handle->precision != DFT_SINGLE;
    return kComputeEntries[outOfPlace][real][twice][direction](handle, data, output);
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
    return DispatchedEntry<CreateDescriptor>::Call(handle, &precision, &domain, &rank, fastestFirst);
}

std::int32_t dfti_commit_descriptor(DftDescriptor* handle) {
    return DispatchedEntry<CommitDescriptor>::Call(&handle);
}

std::int32_t dfti_compute_forward(DftDescriptor* handle, void* data, void* output) {
    return Compute(kForward, handle, data, output);
}

std::int32_t dfti_compute_backward(DftDescriptor* handle, void* data, void* output) {
    return Compute(kBackward, handle, data, output);
}

std::int32_t dfti_free_descriptor(DftDescriptor** handle) {
    return DispatchedEntry<FreeDescriptor>::Call(handle);
}

void SSCAL(const int* count, const float* scale, float* x, const int* increment) {
    DispatchedEntry<ScaleVector>::Call(count, scale, x, increment);
}

} // namespace dft
