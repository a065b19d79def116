// Plain loops: the compiler turns them into shuffles of each class.
#include "PackedPixels.h"

#include "simd/Vector.h"

namespace focus::CLARIBOX_VECTOR_CLASS {
namespace {

template <int kBytes>
void Split(const std::uint8_t* __restrict pixels, const PlaneRow& planes, int count) {
    std::uint8_t* __restrict const first = planes.first;
    std::uint8_t* __restrict const second = planes.second;
    std::uint8_t* __restrict const third = planes.third;
    for (int x = 0; x < count; ++x) {
        third[x] = pixels[kBytes * x];
        second[x] = pixels[kBytes * x + 1];
        first[x] = pixels[kBytes * x + 2];
    }
}

template <int kBytes>
void Merge(std::uint8_t* __restrict pixels, const PlaneRow& planes, int count) {
    const std::uint8_t* __restrict const first = planes.first;
    const std::uint8_t* __restrict const second = planes.second;
    const std::uint8_t* __restrict const third = planes.third;
    for (int x = 0; x < count; ++x) {
        pixels[kBytes * x] = third[x];
        pixels[kBytes * x + 1] = second[x];
        pixels[kBytes * x + 2] = first[x];
    }
}

} // namespace

const PackedPixelRows kPackedPixelRows = {Split<3>, Split<4>, Merge<3>, Merge<4>};

} // namespace focus::CLARIBOX_VECTOR_CLASS
