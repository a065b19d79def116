// Rectangles of pixels.
#pragma once

#include <algorithm>

namespace restore {

/// Right and bottom are exclusive.
struct Area {
    int left;
    int top;
    int right;
    int bottom;

    int Width() const { return right - left; }
    int Height() const { return bottom - top; }

    /// Larger by `margin` on each side, as far as `bounds` reach.
    Area Grown(int margin, const Area& bounds) const {
        return {std::max(left - margin, bounds.left), std::max(top - margin, bounds.top),
                std::min(right + margin, bounds.right), std::min(bottom + margin, bounds.bottom)};
    }
};

} // namespace restore
