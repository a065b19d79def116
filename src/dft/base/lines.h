// Lines of an array: where their elements lie.
#pragma once

#include "dft/base/complex.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace dft {

/// `count` lines of `length` elements: element k of line j is base[j * lineStride + k * elementStride].
template <typename Real>
struct Lines {
    Complex<Real>* base;
    std::ptrdiff_t elementStride;
    std::ptrdiff_t lineStride;
    std::ptrdiff_t count;
    std::ptrdiff_t length;
};

/// source[k * sourceStride] to destination[k * destinationStride] for k below `count`; the two are the same or
/// disjoint.
template <typename Element>
void dft_copy_strided(std::ptrdiff_t count, const Element* source, std::ptrdiff_t sourceStride, Element* destination,
                      std::ptrdiff_t destinationStride) {
    for (std::ptrdiff_t k = 0; k < count; ++k) {
        destination[k * destinationStride] = source[k * sourceStride];
    }
}

/// Whether no two lines share an element, judged by blocks of lines and interleaved lines.
template <typename Real>
bool AreApart(const Lines<Real>& lines) {
    const auto span = [](std::ptrdiff_t count, std::ptrdiff_t stride) {
        return (static_cast<std::int64_t>(count) - 1) * std::abs(static_cast<std::int64_t>(stride));
    };
    return std::abs(lines.lineStride) > span(lines.length, lines.elementStride) ||
           (lines.lineStride != 0 && std::abs(lines.elementStride) > span(lines.count, lines.lineStride));
}

template <typename Real>
Lines<Real> Part(const Lines<Real>& lines, std::ptrdiff_t first, std::ptrdiff_t count) {
    Lines<Real> part = lines;
    part.base += first * lines.lineStride;
    part.count = std::min(count, lines.count - first);
    return part;
}

} // namespace dft
