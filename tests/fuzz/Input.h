// Numbers and pixels drawn from the bytes of a fuzzer, so that each byte keeps its meaning while others change.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <span>

/// Where the bytes have run out every number is the lowest of its range.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : m_Bytes(data, size) {
        // A failed expectation ends the process, so that the fuzzer keeps the bytes.
        GTEST_FLAG_SET(throw_on_failure, true);
    }

    /// From `low` to `high`, both included; takes as many bytes as the range needs.
    int Number(int low, int high) {
        const std::uint64_t range = static_cast<std::uint64_t>(std::int64_t{high} - low) + 1;
        std::uint64_t value = 0;
        for (std::uint64_t covered = 1; covered < range; covered <<= 8) {
            value = value << 8 | Byte();
        }
        return static_cast<int>(low + static_cast<std::int64_t>(value % range));
    }
    bool Flag() { return Number(0, 1) != 0; }

    template <typename T, std::size_t count>
    T Pick(const T (&choices)[count]) {
        return choices[Number(0, static_cast<int>(count) - 1)];
    }

    /// Repeats what is left of the bytes.
    void Fill(std::span<unsigned char> target) {
        for (std::size_t k = 0; k < target.size() && !m_Bytes.empty(); ++k) {
            target[k] = m_Bytes[k % m_Bytes.size()];
        }
    }

    std::uint8_t Byte() {
        if (m_Bytes.empty()) {
            return 0;
        }
        const std::uint8_t first = m_Bytes.front();
        m_Bytes = m_Bytes.subspan(1);
        return first;
    }

private:
    std::span<const std::uint8_t> m_Bytes;
};

struct Size {
    int width;
    int height;
};

/// Small, thin either way, or as large as the square that CImageDenoiser measures.
inline Size PictureSize(Input& input) {
    switch (input.Number(0, 15)) {
    case 0:
        return {input.Number(1, 2000), input.Number(1, 3)};
    case 1:
        return {input.Number(1, 3), input.Number(1, 2000)};
    case 2:
        return {input.Number(90, 130), input.Number(90, 130)};
    default:
        return {input.Number(1, 64), input.Number(1, 64)};
    }
}
