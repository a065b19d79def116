#include "restore/SlidingDct.h"

#include "restore/Dct16.h"
#include "simd/Transpose.h"

namespace restore::CLARIBOX_VECTOR_CLASS {
namespace {

using namespace simd::CLARIBOX_VECTOR_CLASS;

constexpr int kSide = kBlockSide;
constexpr int kLane = kLanes<float>;
constexpr int kStride = kTileBlocks + 16; // off the multiples of 4 KiB, which would share cache sets
static_assert(kTileBlocks % 16 == 0);

/// A Kaiser window of shape 2 (F. Kuo and J. Kaiser, 1966): I0(2 sqrt(1 - (2 (i + 1/2) / 16 - 1)^2)) / I0(2), as in
/// BM3D (Dabov et al., 2007).
constexpr float kWindow[kSide] = {0.493427192f, 0.600912342f, 0.702354655f, 0.793864554f, 0.871869951f, 0.933284665f,
                                  0.975654955f, 0.997276623f, 0.997276623f, 0.975654955f, 0.933284665f, 0.871869951f,
                                  0.793864554f, 0.702354655f, 0.600912342f, 0.493427192f};

/// The square of the factor that makes coefficient k of a row or column orthonormal.
constexpr float SquaredNorm(int k) {
    return k == 0 ? 1.0f / kSide : 2.0f / kSide;
}

/// Rings of 16 rows: of row transforms, of sums of what blocks give back, and of their weights.
struct Rings {
    explicit Rings(float* scratch)
        : source(scratch), pilot(source + kSide * kSide * kStride), sums(pilot + kSide * kSide * kStride),
          weights(sums + kSide * kSide * kStride), line(weights + kSide * kStride) {}

    static constexpr std::size_t kFloats = (3 * kSide * kSide + kSide) * kStride + 4 * (kTileBlocks + 32);

    static float* At(float* ring, int row, int u) { return ring + (u * kSide + (row & (kSide - 1))) * kStride; }

    float* source;
    float* pilot;
    float* sums;
    float* weights;
    float* line; ///< even and odd samples of a row, or sums of samples and of weights for these
};

/// The row transforms of all blocks that begin in a row of samples.
void TransformRow(const float* samples, int blocks, float* ring, int row, float* line) {
    float* const even = line;
    float* const odd = line + kTileBlocks + 32;
    const int count = blocks + kSide / 2 - 1;
    for (int k = 0; k < count; ++k) {
        even[k] = samples[2 * k];
        odd[k] = samples[2 * k + 1];
    }
    for (int b = 0; b < blocks; b += kLane) {
        F32 x[kSide];
        Unrolled<kSide / 2>([&](int i) {
            x[2 * i] = Load<F32>(even + b + i);
            x[2 * i + 1] = Load<F32>(odd + b + i);
        });
        Dct<kSide>(x);
        Unrolled<kSide>([&](int u) { Store(Rings::At(ring, row, u) + b, x[u]); });
    }
}

/// The coefficients of kLane blocks, [u][v], from the ring with their top row.
void TransformColumns(float* ring, int row, int b, F32 (&coefficients)[kSide][kSide]) {
    for (int u = 0; u < kSide; ++u) {
        F32 x[kSide];
        Unrolled<kSide>([&](int y) { x[y] = Load<F32>(Rings::At(ring, row + y, u) + b); });
        Dct<kSide>(x);
        Unrolled<kSide>([&](int v) { coefficients[u][v] = x[v]; });
    }
}

F32 Where(I32 mask, F32 x) {
    return reinterpret_cast<F32>(mask & reinterpret_cast<I32>(x));
}

/// What coefficients are compared with, scaled as they are: unnormalised, so that they have to be multiplied by the
/// square of what would make them orthonormal before the transposed transform.
struct Shrinkage {
    float limit[kSide][kSide];    ///< [u][v]: the square of a threshold, or the noise's variance
    float variance[kSide][kSide]; ///< of the noise, orthonormal
    float scale[kSide][kSide];
};

/// Hard thresholds; the mean stays. Returns the noise that is kept.
F32 Threshold(const Shrinkage& shrinkage, F32 (&coefficients)[kSide][kSide]) {
    F32 kept = {};
    for (int u = 0; u < kSide; ++u) {
        for (int v = 0; v < kSide; ++v) {
            const F32 x = coefficients[u][v];
            const I32 isKept = x * x >= shrinkage.limit[u][v];
            coefficients[u][v] = Where(isKept, x * shrinkage.scale[u][v]);
            kept += Where(isKept, F32{} + shrinkage.variance[u][v]);
        }
    }
    return kept;
}

/// Empirical Wiener shrinkage by the power of a first result.
F32 Filter(const Shrinkage& shrinkage, const F32 (&pilot)[kSide][kSide], F32 (&coefficients)[kSide][kSide]) {
    F32 kept = {};
    for (int u = 0; u < kSide; ++u) {
        for (int v = 0; v < kSide; ++v) {
            const F32 power = pilot[u][v] * pilot[u][v];
            const F32 gain = power / (power + shrinkage.limit[u][v]);
            coefficients[u][v] *= gain * shrinkage.scale[u][v];
            kept += gain * gain * shrinkage.variance[u][v];
        }
    }
    return kept;
}

/// Adds what kLane blocks give back to the sums, row by row. A ring's row whose first block this is begins anew.
void AddBlocks(const Rings& rings, int row, int b, F32 weight, F32 (&coefficients)[kSide][kSide]) {
    const auto isNew = [](int y) { return y >= kSide - kBlockStep; };
    for (int u = 0; u < kSide; ++u) {
        F32(&x)[kSide] = coefficients[u];
        TransposedDct<kSide>(x);
        Unrolled<kSide>([&](int y) {
            float* const sum = Rings::At(rings.sums, row + y, u) + b;
            const F32 part = x[y] * (weight * kWindow[y]);
            Store(sum, isNew(y) ? part : Load<F32>(sum) + part);
        });
    }
    for (int y = 0; y < kSide; ++y) {
        float* const sum = rings.weights + ((row + y) & (kSide - 1)) * kStride + b;
        const F32 part = weight * kWindow[y];
        Store(sum, isNew(y) ? part : Load<F32>(sum) + part);
    }
}

/// Samples of a finished row: inverse row transforms, summed up from the leftmost block on, over the sums of weights.
void StoreRow(const Rings& rings, int row, int blocks, float* result, int columns) {
    float* const samples[2] = {rings.line, rings.line + (kTileBlocks + 32)};
    float* const weights[2] = {rings.line + 2 * (kTileBlocks + 32), rings.line + 3 * (kTileBlocks + 32)};
    for (int k = 0; k < kTileBlocks + 32; ++k) {
        samples[0][k] = samples[1][k] = weights[0][k] = weights[1][k] = 0.0f;
    }
    for (int b = 0; b < blocks; b += kLane) {
        F32 x[kSide];
        Unrolled<kSide>([&](int u) { x[u] = Load<F32>(Rings::At(rings.sums, row, u) + b); });
        TransposedDct<kSide>(x);
        Unrolled<kSide>([&](int i) { Store(Rings::At(rings.sums, row, i) + b, x[i]); });
    }
    const float* const blockWeights = rings.weights + (row & (kSide - 1)) * kStride;
    for (int i = kSide - 1; i >= 0; --i) { // the leftmost block of a sample has it last
        const float* const part = Rings::At(rings.sums, row, i);
        float* const to = samples[i % 2] + i / 2;
        float* const weight = weights[i % 2] + i / 2;
        for (int b = 0; b < blocks; ++b) {
            to[b] += part[b] * kWindow[i];
            weight[b] += blockWeights[b] * kWindow[i];
        }
    }
    const int first = kBlockOverlap / 2;
    for (int k = 0; k < columns / 2; ++k) {
        result[2 * k] = samples[0][first + k] / weights[0][first + k];
        result[2 * k + 1] = samples[1][first + k] / weights[1][first + k];
    }
}

Shrinkage MakeShrinkage(const DctTile& tile) {
    Shrinkage shrinkage;
    for (int u = 0; u < kSide; ++u) {
        for (int v = 0; v < kSide; ++v) {
            const float variance = tile.noise->variance[v][u];
            const float norm = SquaredNorm(u) * SquaredNorm(v);
            const float factor = tile.pilot == nullptr ? tile.threshold * tile.threshold : 1.0f;
            shrinkage.limit[u][v] = u + v == 0 && tile.pilot == nullptr ? 0.0f : variance * factor / norm;
            shrinkage.variance[u][v] = variance;
            shrinkage.scale[u][v] = norm;
        }
    }
    return shrinkage;
}

void DenoiseTile(const DctTile& tile, float* scratch) {
    const Rings rings(scratch);
    const Shrinkage shrinkage = MakeShrinkage(tile);
    const int blocks = (tile.columns + kBlockOverlap) / kBlockStep;
    for (std::size_t k = 0; k < Rings::kFloats; ++k) {
        scratch[k] = 0.0f; // lanes beyond the last block read what is never written
    }
    const auto transformRow = [&](int y) {
        TransformRow(tile.source + y * tile.sourceStride - kBlockOverlap, blocks, rings.source, y & (kSide - 1),
                     rings.line);
        if (tile.pilot != nullptr) {
            TransformRow(tile.pilot + y * tile.pilotStride - kBlockOverlap, blocks, rings.pilot, y & (kSide - 1),
                         rings.line);
        }
    };
    for (int y = -kBlockOverlap; y < 0; ++y) {
        transformRow(y);
    }
    for (int top = -kBlockOverlap; top < tile.rows; top += kBlockStep) {
        transformRow(top + kSide - 2);
        transformRow(top + kSide - 1);
        for (int b = 0; b < blocks; b += kLane) {
            F32 coefficients[kSide][kSide];
            TransformColumns(rings.source, top, b, coefficients);
            F32 kept;
            if (tile.pilot == nullptr) {
                kept = Threshold(shrinkage, coefficients);
            } else {
                F32 pilot[kSide][kSide];
                TransformColumns(rings.pilot, top, b, pilot);
                kept = Filter(shrinkage, pilot, coefficients);
            }
            AddBlocks(rings, top, b, 1.0f / kept, coefficients);
        }
        for (int y = top; y < top + kBlockStep && y >= 0; ++y) {
            StoreRow(rings, y & (kSide - 1), blocks, tile.result + y * tile.resultStride, tile.columns);
        }
    }
}

} // namespace

const SlidingDct kSlidingDct = {Rings::kFloats, DenoiseTile};

} // namespace restore::CLARIBOX_VECTOR_CLASS
