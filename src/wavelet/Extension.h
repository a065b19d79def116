// How a line is extended beyond its ends. The buffer holds `size` samples from index `margin` on and `margin` cells on
// either side. Templates, since the columns of a plane extend lines of row numbers instead of samples.
#pragma once

#include <algorithm>

namespace wavelet {

/// What the two ends of a line do: kind 1 is whole-sample symmetric, mirrored about the last sample,
/// kind 2 half-sample symmetric, mirrored about the gap behind it.
///
///     kind 1:  d c b | a b c d      kind 2:  c b a | a b c d      kind 2, sign -1:  -c -b -a | a b c d
struct MirrorEnds {
    int leftKind;
    int rightKind;
    int sign;
};

/// With a sign of -1 an end of kind 1 gets a zero between line and image. A line too short for its period leaves the
/// rest of the margin as it was.
template <typename T>
void ExtendMirrored(T* buffer, int size, int margin, MirrorEnds ends) {
    const T sign = static_cast<T>(ends.sign);
    const int bufferEnd = size + 2 * margin - 1;
    int first = margin;
    int last = margin + size - 1;
    if (ends.sign == -1 && ends.leftKind == 1) {
        buffer[--first] = T{};
    }
    if (ends.sign == -1 && ends.rightKind == 1) {
        buffer[++last] = T{};
    }
    const int coreFirst = first;
    const int coreLast = last;
    const int coreLength = last - first + 1;
    const int period = 2 * coreLength - (ends.leftKind == 1 ? 1 : 0) - (ends.rightKind == 1 ? 1 : 0);
    if (ends.leftKind == 2) {
        buffer[--first] = sign * buffer[coreFirst];
    }
    if (ends.rightKind == 2) {
        buffer[++last] = sign * buffer[coreLast];
    }
    const int leftImage = std::min(coreLength - 2, first);
    for (int k = 0; k < leftImage; ++k) {
        buffer[--first] = sign * buffer[coreFirst + 1 + k];
    }
    while (first > 0 && period > 0) {
        --first;
        buffer[first] = buffer[first + period];
    }
    const int rightImage = std::min(coreLength - 2, bufferEnd - last);
    for (int k = 0; k < rightImage; ++k) {
        buffer[++last] = sign * buffer[coreLast - 1 - k];
    }
    while (last < bufferEnd && period > 0) {
        ++last;
        buffer[last] = buffer[last - period];
    }
}

/// The copies run over cells already extended where the line is shorter than the margin, and so repeat it.
template <typename T>
void ExtendRepeated(T* buffer, int size, int margin) {
    for (int i = margin - 1; i >= 0; --i) {
        buffer[i] = buffer[i + size];
    }
    for (int i = margin + size; i < size + 2 * margin; ++i) {
        buffer[i] = buffer[i - size];
    }
}

} // namespace wavelet
