// With a and b the distances of A and B from P, the absolute error of the prediction is (1 - t) * a + t * b if A and B
// lie on the same side of P, and |(1 - t) * a - t * b| if they lie on both sides of it, which is less by twice the
// smaller of the terms. In an octant t * b is the smaller one up to some entry of the table, (1 - t) * a from it on. So
// one pass finds all 45 costs of all octants: it sums up a and b over all pixels, and again over those between A and B,
// by the entry at which the smaller term changes.
#include "MotionCosts.h"

#include "MotionTanTable.h"
#include "NeighbourRings.h"

#include <algorithm>
#include <cstring>

namespace focus {
namespace {

constexpr int kEntries = 45;
constexpr int kOctants = 8;
static_assert(kOctants == kNeighbours && kOctants * kEntries == kMotionDegrees);

// Slopes are numbers of 24 bits, the smallest above 0 is more than 2^-6: times 2^29 all are integers.
constexpr int kFractionBits = 29;
constexpr std::int64_t kOne = std::int64_t{1} << kFractionBits;

constexpr std::array<std::int64_t, kEntries> ScaledSlopes() {
    std::array<std::int64_t, kEntries> slopes{};
    for (std::size_t i = 0; i < kEntries; ++i) {
        slopes[i] = static_cast<std::int64_t>(static_cast<double>(MotionTanTable[i]) * double{kOne});
    }
    return slopes;
}
constexpr std::array<std::int64_t, kEntries> kSlopes = ScaledSlopes();

// [256 * a + b] is the number of entries with t * b < (1 - t) * a: 0 where a is 0, 45 where b alone is.
using TurningPoints = std::array<std::uint8_t, 65536>;

TurningPoints MakeTurningPoints() {
    TurningPoints points{};
    for (std::int64_t a = 1; a < 256; ++a) {
        std::size_t entries = kEntries; // the larger b, the fewer
        for (std::int64_t b = 0; b < 256; ++b) {
            while (entries > 0 && kSlopes[entries - 1] * b >= (kOne - kSlopes[entries - 1]) * a) {
                --entries;
            }
            points[static_cast<std::size_t>(256 * a + b)] = static_cast<std::uint8_t>(entries);
        }
    }
    return points;
}

// Sums of distances from the pixel.
struct Distances {
    std::uint64_t corner = 0;
    std::uint64_t side = 0;
};

class RegionSums {
public:
    void Add(const RingMeasures& measures, int count) {
        for (std::size_t j = 0; j < kNeighbours; ++j) {
            m_All[j] += measures.distances[j];
        }
        if (m_PackedPixels > kMostPacked - count) {
            Unpack();
        }
        m_PackedPixels += count;
        // Pixel by pixel rather than octant by octant: neighbouring pixels often meet in the same place,
        // and one would wait for the other.
        for (int x = 0; x < count; ++x) {
            for (std::size_t octant = 0; octant < kOctants; ++octant) {
                const std::uint32_t pair = measures.pairs[octant][x];
                m_Packed[octant][m_Points[pair]] += (std::uint64_t{pair} << 24 | pair) & 0xFF000000FFu;
            }
        }
    }

    // Adds the packed sums to the wide ones; must be the last call before those are read.
    void Unpack() {
        for (std::size_t octant = 0; octant < kOctants; ++octant) {
            for (std::size_t point = 0; point <= kEntries; ++point) {
                std::uint64_t& packed = m_Packed[octant][point];
                m_Between[octant][point].corner += packed >> 32;
                m_Between[octant][point].side += packed & 0xFFFFFFFFu;
                packed = 0;
            }
        }
        m_PackedPixels = 0;
    }

    // Of all pixels, by neighbour.
    const std::array<std::uint64_t, kNeighbours>& All() const { return m_All; }

    // Of pixels between the neighbours of an octant, by turning point.
    const std::array<Distances, kEntries + 1>& Between(std::size_t octant) const { return m_Between[octant]; }

private:
    // A sum of two distances is packed into one number: one addition instead of two. Half of it holds this many of 255.
    static constexpr int kMostPacked = 1 << 24;

    static const TurningPoints& Points() {
        static const TurningPoints points = MakeTurningPoints();
        return points;
    }

    const TurningPoints& m_Points = Points();
    std::array<std::uint64_t, kNeighbours> m_All{};
    std::array<std::array<Distances, kEntries + 1>, kOctants> m_Between{};
    std::array<std::array<std::uint64_t, kEntries + 1>, kOctants> m_Packed{};
    int m_PackedPixels = 0;
};

RegionSums SumRegion(const std::uint8_t* plane, int width, const EstRect& rect) {
    const NeighbourRings& rings = ActiveNeighbourRings();
    RegionSums sums;
    RingSamples samples = {};
    RingMeasures measures;
    for (std::int64_t y = std::int64_t{rect.top} + 1; y < std::int64_t{rect.bottom} - 1; ++y) {
        for (std::int64_t x = std::int64_t{rect.left} + 1; x < std::int64_t{rect.right} - 1; x += kRingColumns) {
            const auto count = static_cast<int>(std::min<std::int64_t>(kRingColumns, rect.right - 1 - x));
            const std::uint8_t* const before = plane + static_cast<std::ptrdiff_t>(y * width + x - 1);
            // Copies, since vectors read past the piece and nothing may be read past the plane.
            const auto bytes = static_cast<std::size_t>(count) + 2;
            std::memcpy(samples.above, before - width, bytes);
            std::memcpy(samples.own, before, bytes);
            std::memcpy(samples.below, before + width, bytes);
            rings.Measure(samples, count, measures);
            sums.Add(measures, count);
        }
    }
    sums.Unpack();
    return sums;
}

// (1 - slope) * corner + slope * side, without a product of more than 64 bits: corner plus slope times the difference,
// whose upper and lower part are multiplied apart.
MotionCost Blend(std::int64_t corner, std::int64_t side, std::int64_t slope) {
    const std::int64_t difference = side - corner;
    const std::int64_t low = slope * (difference & (kOne - 1));
    return {corner + slope * (difference >> kFractionBits) + (low >> kFractionBits), low & (kOne - 1)};
}

} // namespace

std::array<MotionCost, kMotionDegrees> MotionCosts(const std::uint8_t* plane, int width, const EstRect& rect) {
    const RegionSums sums = SumRegion(plane, width, rect);
    std::array<MotionCost, kMotionDegrees> costs;
    for (std::size_t octant = 0; octant < kOctants; ++octant) {
        const auto& between = sums.Between(octant);
        std::uint64_t corner = sums.All()[octant | 1];
        std::uint64_t side = sums.All()[(octant + 1) & 6];
        for (const Distances& turning : between) {
            side -= 2 * turning.side;
        }
        for (std::size_t entry = 0; entry < kEntries; ++entry) {
            corner -= 2 * between[entry].corner;
            side += 2 * between[entry].side;
            // From one degree to the next, the table is read upward in octants 0, 2 .. and downward in 1, 3 ..
            const std::size_t degree = octant * kEntries + (octant % 2 == 0 ? entry : kEntries - 1 - entry);
            costs[degree] = Blend(static_cast<std::int64_t>(corner), static_cast<std::int64_t>(side), kSlopes[entry]);
        }
    }
    return costs;
}

EstRect TrimBottom(const EstRect& rect, int width, int height) {
    // The last byte read, at column right - 1 of row bottom - 1, is at most the last of the plane. A right edge beyond
    // the plane costs a row for each width that it runs on.
    const int rowsBeyond = width > 0 ? (std::max(rect.right, 1) - 1) / width : height;
    EstRect trimmed = rect;
    trimmed.bottom = std::min(rect.bottom, height - rowsBeyond);
    return trimmed;
}

} // namespace focus
