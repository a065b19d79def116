#include "NeighbourRings.h"

#include "simd/Vector.h"

namespace focus::CLARIBOX_VECTOR_CLASS {
namespace {

using namespace simd::CLARIBOX_VECTOR_CLASS;

constexpr int kStep = kLanes<std::uint16_t>;
static_assert(kRingColumns / kStep * 255 <= INT16_MAX && kStep <= kRingSlack);

U16 LaneNumbers() {
    U16 numbers{};
    for (int k = 0; k < kStep; ++k) {
        numbers[k] = static_cast<std::uint16_t>(k);
    }
    return numbers;
}

std::uint32_t SumOf(U16 numbers) {
    const I32 sums = MultiplyAddPairs(reinterpret_cast<I16>(numbers), I16{} + std::int16_t{1});
    std::uint32_t sum = 0;
    for (int k = 0; k < kLanes<std::int32_t>; ++k) {
        sum += static_cast<std::uint32_t>(sums[k]);
    }
    return sum;
}

void Measure(const RingSamples& samples, int count, RingMeasures& measures) {
    const std::uint8_t* const neighbours[kNeighbours] = {samples.own + 2,   samples.above + 2, samples.above + 1,
                                                         samples.above,     samples.own,       samples.below,
                                                         samples.below + 1, samples.below + 2};
    const U16 numbers = LaneNumbers();
    U16 sums[kNeighbours] = {};
    for (int x = 0; x < count; x += kStep) {
        const U16 inside = reinterpret_cast<U16>(numbers < U16{} + static_cast<std::uint16_t>(count - x));
        const U16 pixels = LoadWidenedU8(samples.own + x + 1);
        I16 changes[kNeighbours];
        U16 distances[kNeighbours];
        Unrolled<kNeighbours>([&](int j) {
            const I16 change = reinterpret_cast<I16>((LoadWidenedU8(neighbours[j] + x) - pixels) & inside);
            changes[j] = change;
            distances[j] = reinterpret_cast<U16>(change > -change ? change : -change);
            sums[j] += distances[j];
        });
        Unrolled<kNeighbours>([&](int octant) {
            const int side = (octant + 1) & 6;
            const int corner = octant | 1;
            const I16 opposite = (changes[corner] ^ changes[side]) >> 15; // signs differ
            const U16 pair = (distances[corner] << 8) | distances[side];
            Store(measures.pairs[octant] + x, pair & reinterpret_cast<U16>(opposite));
        });
    }
    Unrolled<kNeighbours>([&](int j) { measures.distances[j] = SumOf(sums[j]); });
}

} // namespace

const NeighbourRings kNeighbourRings = {Measure};

} // namespace focus::CLARIBOX_VECTOR_CLASS
