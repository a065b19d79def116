#include "restore/BlockSpectra.h"

#include "restore/BlockTransform.h"
#include "restore/PictureAccess.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace restore {
namespace {

constexpr int kSide = BlockSpectra::kSide;
constexpr std::int64_t kMostBlocks = 60'000;

BlockSpectrum Summary(const Block<kSide>& coefficients, int x, int y) {
    BlockSpectrum block{x, y, coefficients[0] / kSide, 0.0f, {}};
    int highs = 0;
    int lows = 0;
    for (std::size_t v = 0; v < kSide; ++v) {
        for (std::size_t u = 0; u < kSide; ++u) {
            const float coefficient = coefficients[v * kSide + u];
            if (u + v >= 8) {
                block.high[highs++] = coefficient;
            } else if (u + v > 0) {
                block.lowPower += coefficient * coefficient;
                ++lows;
            }
        }
    }
    block.lowPower /= static_cast<float>(lows);
    return block;
}

} // namespace

BlockSpectra::BlockSpectra(const claribox::PictureView& picture, int colour) {
    const std::int64_t pixels = std::int64_t{picture.width} * picture.height;
    int step = 4;
    while (pixels / (std::int64_t{step} * step) > kMostBlocks) {
        step += 2;
    }
    const auto width = static_cast<std::size_t>(picture.width);
    std::vector<float> rows[3] = {std::vector<float>(kSide * width), std::vector<float>(kSide * width),
                                  std::vector<float>(kSide * width)};
    std::vector<int> cut;
    const auto white = static_cast<float>(WhiteLevel(picture.type));
    double sum = 0.0;
    for (int y = 0; y + kSide <= picture.height; y += step) {
        for (int r = 0; r < kSide; ++r) {
            const std::size_t at = static_cast<std::size_t>(r) * width;
            float* const row[3] = {rows[0].data() + at, rows[1].data() + at, rows[2].data() + at};
            ReadRow(picture, y + r, 0, picture.width, row);
        }
        for (int x = 0; x + kSide <= picture.width; x += step) {
            Block<kSide> samples;
            int atEnds = 0;
            for (std::size_t r = 0; r < kSide; ++r) {
                for (std::size_t i = 0; i < kSide; ++i) {
                    const float sample = rows[colour][r * width + static_cast<std::size_t>(x) + i];
                    samples[r * kSide + i] = sample;
                    atEnds += sample <= 0.0f || sample >= white ? 1 : 0;
                }
            }
            m_Blocks.push_back(Summary(TransformBlock<kSide>(samples), x, y));
            cut.push_back(atEnds);
            sum += static_cast<double>(m_Blocks.back().mean);
        }
    }
    m_MeanLevel = sum / static_cast<double>(m_Blocks.size());
    RemoveCut(m_Blocks, cut);
}

} // namespace restore
