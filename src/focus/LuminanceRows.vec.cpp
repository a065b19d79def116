// Plain loops: the compiler vectorises them. All sums fit the type they are formed in.
#include "LuminanceRows.h"

#include "simd/Vector.h"

namespace focus::CLARIBOX_VECTOR_CLASS {
namespace {

template <typename Sum, int shift, int red, int green, int blue, int step>
void Weigh(const PlaneRow& planes, std::uint8_t* luminance, int count) {
    const std::uint8_t* const first = planes.first;
    const std::uint8_t* const second = planes.second;
    const std::uint8_t* const third = planes.third;
    for (int x = 0; x < count; ++x) {
        const auto sum =
            static_cast<Sum>(static_cast<Sum>(red) * first[step * x] + static_cast<Sum>(green) * second[step * x] +
                             static_cast<Sum>(blue) * third[step * x]);
        luminance[x] = static_cast<std::uint8_t>(sum >> shift);
    }
}

} // namespace

const LuminanceRows kLuminanceRows = {Weigh<std::uint16_t, 8, 77, 150, 29, 1>, Weigh<std::uint16_t, 8, 77, 150, 29, 2>,
                                      Weigh<std::uint32_t, 16, 19595, 38469, 7471, 1>};

} // namespace focus::CLARIBOX_VECTOR_CLASS
