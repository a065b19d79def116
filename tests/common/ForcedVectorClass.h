// Puts a vector class in force for the length of a scope.
#pragma once

#include "simd/VectorClass.h"

/// One that this machine cannot run leaves the class as it is.
class ForcedVectorClass {
public:
    explicit ForcedVectorClass(simd::VectorClass forced) {
        simd::ForceVectorClass(simd::IsSupported(forced) ? forced : m_Before);
    }
    ~ForcedVectorClass() { simd::ForceVectorClass(m_Before); }
    ForcedVectorClass(const ForcedVectorClass&) = delete;
    ForcedVectorClass& operator=(const ForcedVectorClass&) = delete;

private:
    simd::VectorClass m_Before = simd::ActiveVectorClass();
};
