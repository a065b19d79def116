#include "NeighbourMeans.h"

#include "SkewedMeans.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace denoise {
namespace {

template <typename Sample>
Sample* RowOf(const MeanArea<Sample>& area, int y) {
    return area.plane + static_cast<std::ptrdiff_t>(y) * area.width;
}

// The plain form, for any radius. Wide is the type in which samples are subtracted and added.
template <typename Wide, typename Sample, typename Keep>
void SmoothPlain(const MeanArea<Sample>& area, int radius, Wide tolerance, Keep keep) {
    for (int y = area.top; y < area.top + area.rows; ++y) {
        for (int x = area.left; x < area.left + area.columns; ++x) {
            const Wide centre = RowOf(area, y)[x];
            if (keep(centre)) {
                continue;
            }
            Wide sum = 0;
            int count = 0;
            for (int ny = std::max(0, y - radius); ny <= std::min(area.height - 1, y + radius); ++ny) {
                for (int nx = std::max(0, x - radius); nx <= std::min(area.width - 1, x + radius); ++nx) {
                    const Wide sample = RowOf(area, ny)[nx];
                    const bool unlike = sample - centre > tolerance || sample - centre < -tolerance;
                    if (!unlike) { // an unordered difference counts
                        sum += sample;
                        ++count;
                    }
                }
            }
            if (count > 0) {
                RowOf(area, y)[x] = static_cast<Sample>(sum / count);
            }
        }
    }
}

} // namespace

void SmoothBytes(const MeanArea<std::uint8_t>& area, int radius, int tolerance) {
    if (radius == 1 && tolerance >= 0) {
        const SkewedMeans& means = ActiveSkewedMeans();
        std::vector<std::int16_t> scratch(SkewedElements(area.columns, means.byteLanes));
        means.SmoothBytes(area, tolerance, scratch.data());
    } else {
        SmoothPlain<int>(area, radius, tolerance, [](int) { return false; });
    }
}

void SmoothFloats(const MeanArea<float>& area, int radius, int tolerance) {
    if (radius == 1 && tolerance >= 0) {
        const SkewedMeans& means = ActiveSkewedMeans();
        std::vector<double> scratch(SkewedElements(area.columns, means.floatLanes));
        means.SmoothFloats(area, tolerance, scratch.data());
    } else {
        SmoothPlain<double>(area, radius, static_cast<double>(static_cast<float>(tolerance)),
                            [](double centre) { return centre == 0.0; });
    }
}

} // namespace denoise
