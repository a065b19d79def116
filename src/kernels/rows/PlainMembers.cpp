#include "kernels/rows/PlainMembers.h"

#include "kernels/rows/UnalignedAccess.h"

#include <algorithm>
#include <cstring>

namespace kernels {

void* Copy(void* destination, const void* source, std::uint32_t bytes) {
    // memcpy does not allow null pointers even for zero bytes.
    return bytes == 0 ? destination : std::memcpy(destination, source, bytes);
}

void PackS32ToU8(const std::int32_t* source, std::uint8_t* destination, std::uint32_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        destination[i] = static_cast<std::uint8_t>(std::clamp(LoadElement(source, i), 0, 255));
    }
}

void PackF32ToU8(const float* source, std::uint8_t* destination, std::uint32_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const float value = LoadElement(source, i);
        if (!(value >= 0.0f)) { // NaN too: the x87 conversion to integer gives it a low byte of 0
            destination[i] = 0;
        } else if (value > 255.0f) {
            destination[i] = 255;
        } else {
            destination[i] = static_cast<std::uint8_t>(value);
        }
    }
}

void ExpandU8ToF32(const std::uint8_t* source, float* destination, std::uint32_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        StoreElement(destination, i, static_cast<float>(source[i]));
    }
}

void ScaleF32(float* vector, float factor, std::int32_t count) {
    for (std::int32_t i = 0; i < count; ++i) {
        const auto index = static_cast<std::size_t>(i);
        StoreElement(vector, index, LoadElement(vector, index) * factor);
    }
}

float DotF32(const float* first, const float* second, std::int32_t count) {
    long double sum = 0.0L;
    for (std::int32_t i = 0; i < count; ++i) {
        const auto index = static_cast<std::size_t>(i);
        sum +=
            static_cast<long double>(LoadElement(first, index)) * static_cast<long double>(LoadElement(second, index));
    }
    return static_cast<float>(sum);
}

void DecimateU8(std::uint8_t* destination, const std::uint8_t* source, std::int32_t width, std::int32_t height) {
    if (width <= 0 || height <= 0) {
        return;
    }
    const auto stride = static_cast<std::size_t>(width);
    const std::size_t columns = stride / 2;
    const std::size_t rows = static_cast<std::size_t>(height) / 2;
    for (std::size_t y = 0; y < rows; ++y) {
        for (std::size_t x = 0; x < columns; ++x) {
            destination[y * columns + x] = source[2 * y * stride + 2 * x];
        }
    }
}

void ExpandU8ToComplex(const std::uint8_t* source, ChComplex* destination, std::uint32_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        StoreElement(destination, i, ChComplex{static_cast<float>(source[i]), 0.0f});
    }
}

void PackComplexToU8(ChComplex* source, std::uint8_t* destination, std::uint32_t count) {
    auto* const parts = reinterpret_cast<float*>(source); // only reached through bytes
    for (std::size_t i = 0; i < count; ++i) {
        float value = LoadElement(parts, 2 * i);
        value = value > 0.0f ? value : 0.0f; // in this order: NaN and -0 become 0
        value = value < 255.0f ? value : 255.0f;
        StoreElement(parts, 2 * i, value);
        destination[i] = static_cast<std::uint8_t>(value);
    }
}

void ExpandF32ToComplex(const float* source, ChComplex* destination, std::uint32_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        StoreElement(destination, i, ChComplex{LoadElement(source, i), 0.0f});
    }
}

} // namespace kernels
