#include "Yuv.h"

#include <algorithm>

namespace cli {
namespace {

constexpr int kMiddle = 128;

constexpr int Fixed(double factor) {
    return static_cast<int>(factor * 65536.0 + (factor < 0.0 ? -0.5 : 0.5));
}

} // namespace

unsigned char RoundedByte(std::int64_t number) {
    return static_cast<unsigned char>(std::clamp<std::int64_t>((number + (1 << 15)) >> 16, 0, 255));
}

// The factors are those of T.871.

Yuv::Yuv(int blue, int green, int red)
    : y(RoundedByte(Fixed(0.299) * red + Fixed(0.587) * green + Fixed(0.114) * blue)),
      u(RoundedByte((kMiddle << 16) + Fixed(-0.168736) * red + Fixed(-0.331264) * green + Fixed(0.5) * blue)),
      v(RoundedByte((kMiddle << 16) + Fixed(0.5) * red + Fixed(-0.418688) * green + Fixed(-0.081312) * blue)) {}

ColourTerms::ColourTerms(std::int64_t u, std::int64_t v)
    : blue(Fixed(1.772) * u), green(Fixed(-0.344136) * u + Fixed(-0.714136) * v), red(Fixed(1.402) * v) {}

YuvPlanes ToYuv(const PackedPixels& pixels) {
    YuvPlanes planes(CountOf(pixels));
    ForEachPixel(pixels, [&](int blue, int green, int red, std::size_t k) {
        const Yuv yuv(blue, green, red);
        planes.y[k] = yuv.y;
        planes.u[k] = yuv.u;
        planes.v[k] = yuv.v;
    });
    return planes;
}

void FromYuv(const YuvPlanes& planes, const PackedPixels& pixels) {
    ForEachPixel(pixels, [&](unsigned char& blue, unsigned char& green, unsigned char& red, std::size_t k) {
        const std::int64_t y = planes.y[k] << 16;
        const ColourTerms terms(planes.u[k] - kMiddle, planes.v[k] - kMiddle);
        blue = RoundedByte(y + terms.blue);
        green = RoundedByte(y + terms.green);
        red = RoundedByte(y + terms.red);
    });
}

} // namespace cli
