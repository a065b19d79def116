// The ways in which the elements of lines stand in vectors. For vector sources only.
#pragma once

#include "dft/pow2/radix_passes.h"

namespace dft::CLARIBOX_VECTOR_CLASS {

/// Lines side by side, V holding the same element of all; with a scalar, a line by itself.
template <typename V>
struct Beside {
    using Vector = V;
    using Root = Real<V>;
    static constexpr int kPoints = 1; ///< elements of a line in a vector

    /// Number j of a series that stands in groups of four, `stride` numbers from group to group.
    static Root RootAt(const Real<V>* series, int stride, std::ptrdiff_t j) { return series[j / 4 * stride + j % 4]; }
};

/// One line, V holding consecutive elements.
template <typename V>
struct Along {
    using Vector = V;
    using Root = V;
    static constexpr int kPoints = kLines<V>;

    static Root RootAt(const Real<V>* series, int stride, std::ptrdiff_t j) {
        return Groups<kPoints>(series + j * kPoints / 4 * stride + j * kPoints % 4, stride);
    }

private:
    template <int count>
    using Part = typename simd::CLARIBOX_VECTOR_CLASS::VectorOf<Real<V>, count>::Type;

    template <int count, int... k>
    static Part<count> Joined(Part<count / 2> a, Part<count / 2> b, simd::CLARIBOX_VECTOR_CLASS::Indices<0, k...>) {
        return __builtin_shufflevector(a, b, k...);
    }
    template <int count>
    static Part<count> Groups(const Real<V>* from, int stride) {
        if constexpr (count <= 4) {
            return simd::CLARIBOX_VECTOR_CLASS::Load<Part<count>>(from);
        } else {
            return Joined<count>(Groups<count / 2>(from, stride), Groups<count / 2>(from + count / 8 * stride, stride),
                                 simd::CLARIBOX_VECTOR_CLASS::Indices<count>{});
        }
    }
};

/// Log2 of the elements of a line for which the first-level cache is surely large enough.
template <typename Way>
inline constexpr int kCachedLineBits = [] {
    int bits = 0;
    while ((sizeof(LaneComplex<typename Way::Vector>) / Way::kPoints) << (bits + 1) <= 32768) {
        ++bits;
    }
    return bits;
}();

/// Twiddles W^j, W^2j, W^3j of the elements of vector j. They stand in groups of four consecutive elements: the four
/// real parts of W^j, the four imaginary ones, then the same of W^2j and of W^3j. Forward roots, as in all tables.
template <typename Way, typename T>
struct TripleSeries {
    const T* series;
    TwiddleTriple<typename Way::Root> operator()(std::ptrdiff_t j) const {
        const auto part = [&](int number) { return Way::RootAt(series + 4 * number, 24, j); };
        return {{part(0), part(1)}, {part(2), part(3)}, {part(4), part(5)}};
    }
};

} // namespace dft::CLARIBOX_VECTOR_CLASS
