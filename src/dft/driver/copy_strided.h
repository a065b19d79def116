// Copies of lines whose elements stand any number of elements apart.
#pragma once

#include <cstddef>

namespace dft {

/// Copies `count` elements, source[k * sourceStride] to destination[k * destinationStride]; none for a count below 1.
/// The two do not overlap unless they are the same.
template <typename Element>
void dft_copy_strided(std::ptrdiff_t count, const Element* source, std::ptrdiff_t sourceStride, Element* destination,
                      std::ptrdiff_t destinationStride) {
    for (std::ptrdiff_t k = 0; k < count; ++k) {
        destination[k * destinationStride] = source[k * sourceStride];
    }
}

} // namespace dft
