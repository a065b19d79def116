// Denoising of a whole picture: scale, regions, tiles, and the two steps of the sliding transform.
#include <claribox/Restore.h>

#include "restore/DenoiseInRegions.h"
#include "restore/NoiseScale.h"
#include "restore/PictureAccess.h"
#include "restore/Plane.h"
#include "restore/SlidingDct.h"
#include "restore/Workers.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace restore {
namespace {

using claribox::DenoiseOptions;
using claribox::Noise;
using claribox::PictureView;

// Of hard thresholding, in standard deviations, as in BM3D (Dabov et al., 2007).
constexpr float kThreshold = 2.7f;

// Rows of a tile: the blocks above and below it cost 14 rows more.
constexpr int kTileRows = 256;

// What the second step, and the first one about it, need beyond a region.
constexpr int kPilotMargin = 16;
constexpr int kSourceMargin = 32;

class Denoiser {
public:
    Denoiser(const PictureView& picture, const Noise& noise, const DenoiseOptions& options, const RegionLimits& limits)
        : m_Picture(picture), m_Bounds{0, 0, picture.width, picture.height}, m_Result(picture),
          m_Regions(Regions(limits)), m_Workers(options.threads, PieceCount(), options.progress) {
        for (int k = 0; k < Colours(picture); ++k) {
            m_Scales.emplace_back(noise.channels.at(static_cast<std::size_t>(k)), WhiteLevel(picture.type),
                                  LeastVariance(picture.type));
        }
        const double share[2] = {options.strength * options.luminance, options.strength * options.colour};
        for (std::size_t band = 0; band < 2; ++band) {
            for (int v = 0; v < kBlockSide; ++v) {
                for (int u = 0; u < kBlockSide; ++u) {
                    const double shape = noise.shape.at(band).at(static_cast<std::size_t>(std::max(u, v)));
                    m_Noise[band].variance[v][u] = static_cast<float>(shape * share[band] * share[band]);
                }
            }
            m_IsLeft[band] = share[band] == 0.0;
        }
        m_Scratch.resize(static_cast<std::size_t>(m_Workers.Threads()));
    }

    void Run() {
        for (const Area& region : m_Regions) {
            DenoiseRegion(region);
        }
        m_Result.CopyTo(m_Picture);
    }

private:
    std::vector<Area> Regions(const RegionLimits& limits) const {
        const bool isWhole = std::int64_t{m_Picture.width} * m_Picture.height <= limits.largestWhole;
        const int side = isWhole ? std::max(m_Picture.width, m_Picture.height) : limits.side;
        return Parts(m_Bounds, side, side);
    }

    /// The parts of an area, each of `width` by `height` but the last.
    static std::vector<Area> Parts(const Area& area, int width, int height) {
        std::vector<Area> parts;
        for (int y = area.top; y < area.bottom; y += height) {
            for (int x = area.left; x < area.right; x += width) {
                parts.push_back({x, y, std::min(x + width, area.right), std::min(y + height, area.bottom)});
            }
        }
        return parts;
    }

    int PieceCount() const {
        std::size_t count = 0;
        for (const Area& region : m_Regions) {
            count += Parts(region.Grown(kPilotMargin, m_Bounds), kTileColumns, kTileRows).size() +
                     Parts(region, kTileColumns, kTileRows).size();
        }
        return static_cast<int>(count) * Colours(m_Picture);
    }

    void DenoiseRegion(const Area& region) {
        const Area around = region.Grown(kSourceMargin, m_Bounds);
        std::vector<Plane> planes;
        for (int k = 0; k < Colours(m_Picture); ++k) {
            planes.emplace_back(around);
        }
        Load(around, planes);
        for (std::size_t k = 0; k < planes.size(); ++k) {
            planes[k].Mirror(m_Bounds);
            const std::size_t band = k == 0 ? 0 : 1;
            if (!m_IsLeft[band]) {
                planes[k] = DenoisePlane(region, planes[k], m_Noise[band]);
            }
        }
        Store(region, planes);
    }

    Plane DenoisePlane(const Area& region, const Plane& source, const BlockNoise& noise) {
        const Area around = region.Grown(kPilotMargin, m_Bounds);
        Plane pilot(around);
        Step(around, source, nullptr, noise, pilot);
        pilot.Mirror(m_Bounds);
        Plane result(region);
        Step(region, source, &pilot, noise, result);
        return result;
    }

    void Step(const Area& area, const Plane& source, const Plane* pilot, const BlockNoise& noise, Plane& result) {
        const std::vector<Area> tiles = Parts(area, kTileColumns, kTileRows);
        m_Workers.Run(static_cast<int>(tiles.size()), [&](int piece, int thread) {
            const SlidingDct& functions = ActiveSlidingDct();
            std::vector<float>& scratch = m_Scratch.at(static_cast<std::size_t>(thread));
            scratch.resize(functions.scratchFloats);
            const Area& tile = tiles[static_cast<std::size_t>(piece)];
            DctTile job = {};
            job.source = source.At(tile.left, tile.top);
            job.sourceStride = source.Stride();
            job.pilot = pilot == nullptr ? nullptr : pilot->At(tile.left, tile.top);
            job.pilotStride = pilot == nullptr ? 0 : pilot->Stride();
            job.result = result.At(tile.left, tile.top);
            job.resultStride = result.Stride();
            job.columns = tile.Width() + tile.Width() % 2;
            job.rows = tile.Height() + tile.Height() % 2;
            job.noise = &noise;
            job.threshold = kThreshold;
            functions.DenoiseTile(job, scratch.data());
        });
    }

    void Load(const Area& area, const std::vector<Plane>& planes) const {
        for (int y = area.top; y < area.bottom; ++y) {
            float* const rows[3] = {RowOf(planes, 0, area, y), RowOf(planes, 1, area, y), RowOf(planes, 2, area, y)};
            ReadRow(m_Picture, y, area.left, area.Width(), rows);
            for (std::size_t k = 0; k < planes.size(); ++k) {
                std::transform(rows[k], rows[k] + area.Width(), rows[k],
                               [&](float level) { return m_Scales[k].Forward(level); });
            }
            if (planes.size() == 3) {
                ToOpponents(rows[0], rows[1], rows[2], area.Width());
            }
        }
    }

    void Store(const Area& area, const std::vector<Plane>& planes) const {
        for (int y = area.top; y < area.bottom; ++y) {
            float* const rows[3] = {RowOf(planes, 0, area, y), RowOf(planes, 1, area, y), RowOf(planes, 2, area, y)};
            if (planes.size() == 3) {
                FromOpponents(rows[0], rows[1], rows[2], area.Width());
            }
            for (std::size_t k = 0; k < planes.size(); ++k) {
                std::transform(rows[k], rows[k] + area.Width(), rows[k],
                               [&](float scaled) { return m_Scales[k].Backward(scaled); });
            }
            WriteRow(m_Result.View(), y, area.left, area.Width(), rows);
        }
    }

    static float* RowOf(const std::vector<Plane>& planes, std::size_t k, const Area& area, int y) {
        return k < planes.size() ? planes[k].At(area.left, y) : nullptr;
    }

    const PictureView& m_Picture;
    Area m_Bounds;
    PictureCopy m_Result;
    std::vector<Area> m_Regions;
    Workers m_Workers;
    std::vector<LevelScale> m_Scales;
    BlockNoise m_Noise[2];                     ///< of luminance and of colour, on the scale of noise 1
    bool m_IsLeft[2];                          ///< whether they stay as they are
    std::vector<std::vector<float>> m_Scratch; ///< of each thread
};

} // namespace

void DenoiseInRegions(const PictureView& picture, const Noise& noise, const DenoiseOptions& options,
                      const RegionLimits& limits) {
    Denoiser(picture, noise, options, limits).Run();
}

namespace {

void CheckOptions(const DenoiseOptions& options) {
    const auto share = [](double value, const char* name) {
        if (!(value >= 0.0 && value <= 1.0)) {
            throw std::invalid_argument(std::string(name) + " goes from 0 to 1, not " + std::to_string(value));
        }
    };
    share(options.strength, "strength");
    share(options.luminance, "luminance");
    share(options.colour, "colour");
    if (options.threads < 0) {
        throw std::invalid_argument("threads are 0 for one a processor, or 1 or more, not " +
                                    std::to_string(options.threads));
    }
    for (std::size_t k = 0; options.noise && k < 3; ++k) {
        const claribox::ChannelNoise& noise = options.noise->channels.at(k);
        if (!(noise.constant >= 0.0 && noise.proportional >= 0.0 && std::isfinite(noise.constant) &&
              std::isfinite(noise.proportional))) {
            throw std::invalid_argument("a variance of noise is finite and 0 or more");
        }
    }
    for (std::size_t band = 0; options.noise && band < 2; ++band) {
        for (const double part : options.noise->shape.at(band)) {
            if (!(part > 0.0 && std::isfinite(part))) {
                throw std::invalid_argument("the shape of noise is finite and above 0; of white noise it is all 1");
            }
        }
    }
}

} // namespace
} // namespace restore

namespace claribox {

Cancelled::Cancelled() : std::runtime_error("cancelled") {}

Noise Noise::White(double sigma) {
    Noise noise{};
    noise.channels.fill({sigma * sigma, 0.0});
    for (auto& band : noise.shape) {
        band.fill(1.0);
    }
    return noise;
}

void Denoise(const PictureView& picture, const DenoiseOptions& options) {
    restore::Check(picture);
    restore::CheckOptions(options);
    if (options.strength == 0.0) {
        return;
    }
    const Noise noise = options.noise ? *options.noise : MeasureNoise(picture).noise;
    const bool isClean = std::all_of(noise.channels.begin(), noise.channels.end(), [](const ChannelNoise& channel) {
        return channel.constant == 0.0 && channel.proportional == 0.0;
    });
    if (!isClean) {
        restore::DenoiseInRegions(picture, noise, options, {});
    }
}

} // namespace claribox
