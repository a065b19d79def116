#include "VectorClass.h"

#include <atomic>

namespace simd {
namespace {

VectorClass WidestSupported() {
    VectorClass widest = VectorClass::Portable;
    for (const VectorClass vectorClass : kVectorClasses) {
        if (IsSupported(vectorClass)) {
            widest = vectorClass;
        }
    }
    return widest;
}

std::atomic<VectorClass>& Active() {
    static std::atomic<VectorClass> active{WidestSupported()};
    return active;
}

} // namespace

bool IsSupported(VectorClass vectorClass) {
    __builtin_cpu_init(); // also asks the operating system which registers it saves
    switch (vectorClass) {
    case VectorClass::SSE2:
        return __builtin_cpu_supports("sse2");
    case VectorClass::AVX2:
        return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
    case VectorClass::AVX512:
        return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
               __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl") &&
               __builtin_cpu_supports("avx512vnni") && __builtin_cpu_supports("fma");
    default:
        return true;
    }
}

const char* Name(VectorClass vectorClass) {
    static constexpr const char* kNames[] = {"portable", "SSE2", "AVX2", "AVX-512"};
    return kNames[static_cast<int>(vectorClass)];
}

VectorClass ActiveVectorClass() {
    return Active().load(std::memory_order_relaxed);
}

void ForceVectorClass(VectorClass vectorClass) {
    Active().store(vectorClass, std::memory_order_relaxed);
}

} // namespace simd
