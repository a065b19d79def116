#include "processor/VectorMembers.h"

#include "processor/VectorPasses.h"

#include <mmintrin.h>

namespace processor::mmx {
namespace {

template <typename T>
__m64 Load(const T* address) {
    __m64 vector;
    __builtin_memcpy(&vector, address, sizeof vector);
    return vector;
}

void Store(std::uint8_t* address, __m64 vector) {
    __builtin_memcpy(address, &vector, sizeof vector);
}

} // namespace

void PackS32ToU8(const std::int32_t* source, std::uint8_t* destination, std::uint32_t count) {
    const std::uint32_t whole = InWholePasses<8>(count);
    for (std::uint32_t i = 0; i < whole; i += 8) {
        const __m64 low = _mm_packs_pi32(Load(source + i), Load(source + i + 2));
        const __m64 high = _mm_packs_pi32(Load(source + i + 4), Load(source + i + 6));
        Store(destination + i, _mm_packs_pu16(low, high));
    }
    _mm_empty();
    kernels::PackS32ToU8(source + whole, destination + whole, count - whole);
}

void DecimateU8(std::uint8_t* destination, const std::uint8_t* source, std::int32_t width, std::int32_t height) {
    DecimateRows<8>(destination, source, width, height, [](const std::uint8_t* row, std::uint8_t* output) {
        const __m64 evenBytes = _mm_set1_pi16(0x00FF);
        Store(output, _mm_packs_pu16(_mm_and_si64(Load(row), evenBytes), _mm_and_si64(Load(row + 8), evenBytes)));
    });
    _mm_empty(); // the tails of the rows hold no floating-point code that could meet the MMX state
}

} // namespace processor::mmx
