// A block between guard bytes, with seeded fills and a comparison that names the first difference.
//
//     GuardedBuffer<std::uint8_t> plane(width * height, 1);   // data() at an odd address
//     FillRandom(plane, 7);
//     ... code under test writes to plane.data() ...
//     EXPECT_TRUE(plane.GuardsIntact());
//     EXPECT_TRUE(SameBytes(expected, plane, width));         // prints the row and column of the first difference
//
// Guards catch stray writes in every build; under the address sanitizer they are also poisoned, so that stray reads
// fail as well.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#define CLARIBOX_TEST_POISON 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define CLARIBOX_TEST_POISON 1
#endif
#endif
#if defined(CLARIBOX_TEST_POISON)
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(address, size) (static_cast<void>(address), static_cast<void>(size))
#define ASAN_UNPOISON_MEMORY_REGION(address, size) (static_cast<void>(address), static_cast<void>(size))
#endif

/// `count` elements that start `misalignment` bytes past a multiple of 64, between guards of `kGuardBytes` bytes. With
/// a misalignment that is no multiple of `alignof(T)`, hand `data()` only to code that takes any address; `Read` and
/// `Write` reach elements through copies of bytes and are safe there.
template <typename T>
class GuardedBuffer {
    static_assert(std::is_trivially_copyable_v<T>);

public:
    static constexpr std::size_t kGuardBytes = 256;

    explicit GuardedBuffer(std::size_t count, std::size_t misalignment = 0)
        : m_Count(count), m_Block(2 * kGuardBytes + 64 + misalignment + count * sizeof(T)) {
        const std::size_t past = reinterpret_cast<std::uintptr_t>(m_Block.data()) % 64;
        m_Start = kGuardBytes + (64 - past) + misalignment;
        for (std::size_t k = 0; k < m_Block.size(); ++k) {
            const bool isElement = k >= m_Start && k - m_Start < size_bytes();
            m_Block[k] = isElement ? 0 : Guard(k);
        }
        Poison();
    }
    ~GuardedBuffer() { ASAN_UNPOISON_MEMORY_REGION(m_Block.data(), m_Block.size()); }
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;

    T* data() { return reinterpret_cast<T*>(bytes()); }
    const T* data() const { return reinterpret_cast<const T*>(bytes()); }
    unsigned char* bytes() { return m_Block.data() + m_Start; }
    const unsigned char* bytes() const { return m_Block.data() + m_Start; }
    std::size_t size() const { return m_Count; }
    std::size_t size_bytes() const { return m_Count * sizeof(T); }

    T Read(std::size_t index) const {
        T value;
        std::memcpy(&value, bytes() + index * sizeof(T), sizeof(T));
        return value;
    }
    void Write(std::size_t index, T value) { std::memcpy(bytes() + index * sizeof(T), &value, sizeof(T)); }

    /// Whether every byte outside the elements is as it was, and if not, which one changed first.
    ::testing::AssertionResult GuardsIntact() const {
        ASAN_UNPOISON_MEMORY_REGION(m_Block.data(), m_Block.size());
        const ::testing::AssertionResult result = CompareGuards();
        Poison();
        return result;
    }

private:
    // Differs from byte to byte, so that a guard shifted or copied over another shows as well.
    static unsigned char Guard(std::size_t k) { return static_cast<unsigned char>(0xA5u ^ (k * 29u)); }

    void Poison() const {
        const std::size_t end = m_Start + size_bytes();
        ASAN_POISON_MEMORY_REGION(m_Block.data(), m_Start);
        ASAN_POISON_MEMORY_REGION(m_Block.data() + end, m_Block.size() - end);
    }

    ::testing::AssertionResult CompareGuards() const {
        for (std::size_t k = 0; k < m_Block.size(); ++k) {
            if (k == m_Start && m_Count > 0) {
                k = m_Start + size_bytes();
            }
            if (m_Block[k] != Guard(k)) {
                return ::testing::AssertionFailure()
                       << "guard byte at offset " << static_cast<std::ptrdiff_t>(k - m_Start) << " of a block of "
                       << size_bytes() << " bytes was overwritten with " << int{m_Block[k]};
            }
        }
        return ::testing::AssertionSuccess();
    }

    std::size_t m_Count;
    std::vector<unsigned char> m_Block;
    std::size_t m_Start = 0;
};

/// Fills every byte with noise that depends on `seed` alone, on every platform.
inline void FillRandomBytes(std::span<unsigned char> bytes, std::uint32_t seed) {
    std::mt19937 generator(seed);
    for (unsigned char& byte : bytes) {
        byte = static_cast<unsigned char>(generator() >> 24);
    }
}

template <typename T>
void FillRandom(GuardedBuffer<T>& buffer, std::uint32_t seed) {
    FillRandomBytes({buffer.bytes(), buffer.size_bytes()}, seed);
}

/// Compares `count` elements byte by byte, so that floats differ where their bits do. A failure tells the index of the
/// first difference (also as row and column where `columns` is given), both values, and how many elements differ.
template <typename T>
::testing::AssertionResult SameBytes(const T* expected, const T* actual, std::size_t count, std::size_t columns = 0) {
    const auto* left = reinterpret_cast<const unsigned char*>(expected);
    const auto* right = reinterpret_cast<const unsigned char*>(actual);
    std::size_t first = count;
    std::size_t differing = 0;
    for (std::size_t k = 0; k < count; ++k) {
        if (std::memcmp(left + k * sizeof(T), right + k * sizeof(T), sizeof(T)) != 0) {
            first = differing == 0 ? k : first;
            ++differing;
        }
    }
    if (differing == 0) {
        return ::testing::AssertionSuccess();
    }
    T values[2];
    std::memcpy(&values[0], left + first * sizeof(T), sizeof(T));
    std::memcpy(&values[1], right + first * sizeof(T), sizeof(T));
    auto result = ::testing::AssertionFailure() << differing << " of " << count << " elements differ, first " << first;
    if (columns > 0) {
        result << " (row " << first / columns << ", column " << first % columns << ")";
    }
    return result << ": expected " << ::testing::PrintToString(values[0]) << ", actual "
                  << ::testing::PrintToString(values[1]);
}

template <typename T>
::testing::AssertionResult SameBytes(const GuardedBuffer<T>& expected, const GuardedBuffer<T>& actual,
                                     std::size_t columns = 0) {
    if (expected.size() != actual.size()) {
        return ::testing::AssertionFailure() << "sizes differ: " << expected.size() << " and " << actual.size();
    }
    return SameBytes(expected.data(), actual.data(), expected.size(), columns);
}
