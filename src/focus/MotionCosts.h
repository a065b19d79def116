// How badly each direction of motion predicts the pixels of a rectangle.
#pragma once

#include <array>
#include <cstdint>

namespace focus {

/// A rectangle as CImageFocus::GetEstRect tells it. Measured are the pixels with x from left + 1 up to and excluding
/// right - 1, and y from top + 1 up to and excluding bottom - 1; their neighbours are read as well.
struct EstRect {
    int left;
    int top;
    int right;
    int bottom;
};

/// The number whole + fraction * 2^-29, exact; fraction is from 0 to 2^29 - 1.
struct MotionCost {
    std::int64_t whole;
    std::int64_t fraction;

    bool operator<(const MotionCost& other) const {
        return whole != other.whole ? whole < other.whole : fraction < other.fraction;
    }
};

inline constexpr int kMotionDegrees = 360;

/// For each degree the sum, over the measured pixels of a plane with rows of `width` bytes, of |A + (B - A) * t - P|:
/// P is the pixel, A a neighbour at a corner and B one at a side of it, and t an entry of MotionTanTable, all chosen by
/// the degree. Exact for every plane that fits into memory. A rectangle may reach beyond the width: rows are then read
/// on into the next.
std::array<MotionCost, kMotionDegrees> MotionCosts(const std::uint8_t* plane, int width, const EstRect& rect);

/// The rectangle with its bottom moved up as far as needed for all reads to lie inside a plane of `width` by `height`
/// bytes; of a plane without columns there is nothing to measure. Its left, top and right, which may lie beyond the
/// plane, stay; left and top are 0 or more.
EstRect TrimBottom(const EstRect& rect, int width, int height);

} // namespace focus
