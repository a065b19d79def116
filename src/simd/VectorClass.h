// Which width of vector code runs: one choice for the whole library, made from the processor at first use.
#pragma once

namespace simd {

/// The forms in which every vector source is compiled (cmake/VectorSources.cmake), in rising order of preference.
enum class VectorClass { Portable, SSE2, AVX2, AVX512 };

inline constexpr VectorClass kVectorClasses[] = {VectorClass::Portable, VectorClass::SSE2, VectorClass::AVX2,
                                                 VectorClass::AVX512};

/// True if this processor and operating system can run the class.
bool IsSupported(VectorClass vectorClass);

/// "portable", "SSE2", "AVX2" or "AVX-512".
const char* Name(VectorClass vectorClass);

/// The class in force: the widest supported one unless another was forced.
VectorClass ActiveVectorClass();

/// Puts a supported class in force for the process, so that tests and benchmarks can run each form.
void ForceVectorClass(VectorClass vectorClass);

/// Picks the member of the class in force.
template <typename Members>
const Members& Choose(const Members& portable, const Members& sse2, const Members& avx2, const Members& avx512) {
    switch (ActiveVectorClass()) {
    case VectorClass::SSE2:
        return sse2;
    case VectorClass::AVX2:
        return avx2;
    case VectorClass::AVX512:
        return avx512;
    default:
        return portable;
    }
}

} // namespace simd

/// Declares `const Type name` once in the namespace of each vector class, and `const Type& Accessor()`, the one in
/// force. `Type` is a struct of function pointers that a vector source fills.
#define CLARIBOX_PER_VECTOR_CLASS(Type, name, Accessor)                                                                \
    namespace Portable {                                                                                               \
    extern const Type name;                                                                                            \
    }                                                                                                                  \
    namespace SSE2 {                                                                                                   \
    extern const Type name;                                                                                            \
    }                                                                                                                  \
    namespace AVX2 {                                                                                                   \
    extern const Type name;                                                                                            \
    }                                                                                                                  \
    namespace AVX512 {                                                                                                 \
    extern const Type name;                                                                                            \
    }                                                                                                                  \
    inline const Type& Accessor() {                                                                                    \
        return simd::Choose(Portable::name, SSE2::name, AVX2::name, AVX512::name);                                     \
    }
