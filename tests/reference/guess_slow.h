// The guess of a motion's direction and the search of the region it looks at in their plainest form, straight from the
// definition. Slow and obviously correct; the library's own code includes nothing of it. `Sum` is the type that costs
// and scores are summed up in: in long double, of 64 bits of mantissa, those of all pictures here are exact.
#pragma once

#include "focus/MotionTanTable.h"
#include "reference/convolve_slow.h"

#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <stdexcept>
#include <vector>

namespace reference {

/// Where an estimation region stands.
struct Region {
    int left = 0;
    int top = 0;
};

struct Rect {
    int left;
    int top;
    int right;
    int bottom;
};

inline Plane Luminance(const std::array<Plane, 3>& planes) {
    Plane luminance(planes[0].size());
    for (std::size_t i = 0; i < luminance.size(); ++i) {
        luminance[i] = static_cast<std::uint8_t>((77 * planes[0][i] + 150 * planes[1][i] + 29 * planes[2][i]) >> 8);
    }
    return luminance;
}

inline Plane Halve(const Plane& plane, int width, int height) {
    Plane half;
    for (int y = 0; y < height / 2; ++y) {
        for (int x = 0; x < width / 2; ++x) {
            half.push_back(plane[static_cast<std::size_t>(2 * y * width + 2 * x)]);
        }
    }
    return half;
}

/// Moves the region, of `size` by `size` pixels, to the busiest place on the grid of blocks, or leaves it.
template <typename Sum>
void ProbeRegion(const Plane& plane, int width, int height, Region& region, int size = 512, int block = 8) {
    if (width <= size && height <= size) {
        region = {0, 0};
        return;
    }
    const int rows = height / block;
    const int cols = width / block;
    const Sum area = static_cast<Sum>(block) * block;
    std::vector<Sum> means;
    std::vector<Sum> variances;
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < cols; ++c) {
            Sum sum = 0;
            Sum squares = 0;
            for (int y = r * block; y < (r + 1) * block; ++y) {
                for (int x = c * block; x < (c + 1) * block; ++x) {
                    const Sum sample = plane[static_cast<std::size_t>(y * width + x)];
                    sum += sample;
                    squares += sample * sample;
                }
            }
            means.push_back(sum / area);
            variances.push_back(squares / area - means.back() * means.back());
        }
    }
    const int n = size / block;
    const Sum windowArea = static_cast<Sum>(n) * n;
    Sum best = static_cast<Sum>(-std::numeric_limits<double>::max());
    for (int r = 0; r < rows - n; ++r) {
        for (int c = 0; c < cols - n; ++c) {
            Sum sum = 0;
            Sum squares = 0;
            Sum detail = 0;
            for (int i = r; i < r + n; ++i) {
                for (int j = c; j < c + n; ++j) {
                    const auto at = static_cast<std::size_t>(i * cols + j);
                    sum += means[at];
                    squares += means[at] * means[at];
                    detail += variances[at];
                }
            }
            const Sum mean = sum / windowArea;
            const Sum score = detail + (squares / windowArea - mean * mean);
            if (score > best) {
                best = score;
                region = {c * block, r * block};
            }
        }
    }
}

/// The region's rectangle as the sides of the full picture tell it.
inline Rect RectOf(const Region& region, int width, int height, int size = 512) {
    return {region.left, region.top, width > size ? region.left + size : width - 1,
            height > size ? region.top + size : height - 1};
}

/// The sum of the errors of one degree. Of no interest to the thread sanitizer, and slow enough without it.
template <typename Sum>
__attribute__((no_sanitize("thread"))) Sum MotionCost(const std::uint8_t* plane, int width, const Rect& rect,
                                                      int degree) {
    // Columns and rows of samples A and B, counted from the pixel, by octant.
    constexpr int kNeighbours[8][4] = {{1, -1, 1, 0},  {1, -1, 0, -1}, {-1, -1, 0, -1}, {-1, -1, -1, 0},
                                       {-1, 1, -1, 0}, {-1, 1, 0, 1},  {1, 1, 0, 1},    {1, 1, 1, 0}};
    const int octant = degree / 45;
    const int(&neighbours)[4] = kNeighbours[octant];
    const std::ptrdiff_t toA = neighbours[0] + static_cast<std::ptrdiff_t>(neighbours[1]) * width;
    const std::ptrdiff_t toB = neighbours[2] + static_cast<std::ptrdiff_t>(neighbours[3]) * width;
    const double t = static_cast<double>(focus::MotionTanTable[octant % 2 == 0 ? degree % 45 : 44 - degree % 45]);
    Sum cost = 0;
    for (int y = rect.top + 1; y < rect.bottom - 1; ++y) {
        const std::uint8_t* const row = plane + static_cast<std::ptrdiff_t>(y) * width;
        for (int x = rect.left + 1; x < rect.right - 1; ++x) {
            const double a = row[x + toA];
            const double b = row[x + toB];
            cost += static_cast<Sum>(std::abs(a + (b - a) * t - row[x]));
        }
    }
    return cost;
}

/// The cost of each degree. Throws where a read would leave the plane.
template <typename Sum>
std::vector<Sum> MotionCosts(const Plane& plane, int width, const Rect& rect) {
    if (rect.right - 1 > rect.left + 1 && rect.bottom - 1 > rect.top + 1 &&
        static_cast<std::size_t>(rect.bottom - 1) * static_cast<std::size_t>(width) +
                static_cast<std::size_t>(rect.right - 1) >=
            plane.size()) {
        throw std::out_of_range("the rectangle leaves the plane");
    }
    std::vector<Sum> costs(360);
    for (std::size_t degree = 0; degree < costs.size(); ++degree) {
        costs[degree] = MotionCost<Sum>(plane.data(), width, rect, static_cast<int>(degree));
    }
    return costs;
}

template <typename Sum>
int GuessMotionDirection(const Plane& plane, int width, const Rect& rect) {
    const std::vector<Sum> costs = MotionCosts<Sum>(plane, width, rect);
    return static_cast<int>(std::min_element(costs.begin(), costs.end()) - costs.begin());
}

/// The whole guess on packed pixels; moves the region. The rectangle ends where the plane does.
template <typename Sum>
int GuessMotionDegree(const std::uint8_t* pixels, int width, int height, int pixelBytes, int pitch, Region& region) {
    Plane plane = Luminance(Split(pixels, width, height, pixelBytes, pitch));
    int columns = width;
    int rows = height;
    if (width * height >= 1700000) {
        plane = Halve(plane, width, height);
        columns = width / 2;
        rows = height / 2;
    }
    ProbeRegion<Sum>(plane, columns, rows, region);
    Rect rect = RectOf(region, width, height);
    while (rect.bottom > 0 && (rect.bottom - 1) * columns + rect.right - 1 >= columns * rows) {
        --rect.bottom;
    }
    return GuessMotionDirection<Sum>(plane, columns, rect);
}

/// The distance of each sample from the mean of the 11 by 11 samples around it, and in a band of 5 along the edges from
/// 0; less than `threshold` is 0. Samples are reached by address: in a plane of fewer than 11 columns the box of column
/// 5 runs on into the next rows, and what lies behind the plane is 0.
inline Plane EdgeMap(const Plane& plane, int width, int height, int threshold) {
    Plane map(plane.size());
    for (int y = 5; y < height - 5; ++y) {
        for (int x = 5; x < std::max(width - 5, 6); ++x) {
            int sum = 0;
            for (int i = y - 5; i <= y + 5; ++i) {
                for (int j = x - 5; j <= x + 5; ++j) {
                    const auto at = static_cast<std::size_t>(i * width + j);
                    sum += at < plane.size() ? plane[at] : 0;
                }
            }
            map[static_cast<std::size_t>(y * width + x)] = static_cast<std::uint8_t>(sum / 121);
        }
    }
    for (std::size_t i = 0; i < map.size(); ++i) {
        const int edge = std::abs(plane[i] - map[i]);
        map[i] = static_cast<std::uint8_t>(edge < threshold ? 0 : edge);
    }
    return map;
}

} // namespace reference
