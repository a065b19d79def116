// Element access for the row primitives, whose pointers may have any alignment, odd addresses included.
#pragma once

#include <cstddef>
#include <cstring>

namespace kernels {

// Both go through a pointer to bytes before `memcpy`: handed the typed pointer, a compiler may take the alignment of
// the type for granted.

/// Element `index` of `array`, which may have any alignment.
template <typename T>
T LoadElement(const T* array, std::size_t index) {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(array);
    T value;
    std::memcpy(&value, bytes + index * sizeof(T), sizeof(T));
    return value;
}

/// Sets element `index` of `array`, which may have any alignment.
template <typename T>
void StoreElement(T* array, std::size_t index, T value) {
    auto* const bytes = reinterpret_cast<unsigned char*>(array);
    std::memcpy(bytes + index * sizeof(T), &value, sizeof(T));
}

} // namespace kernels
