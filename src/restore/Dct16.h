// Cosine transforms of 16 samples in registers, unnormalised. For vector sources only.
#pragma once

namespace restore::CLARIBOX_VECTOR_CLASS {

/// 1 / (2 cos(pi (2 i + 1) / (2 n))), by n = 2, 4, 8, 16.
template <int n>
inline constexpr float kHalfSecants[n / 2] = {};
template <>
inline constexpr float kHalfSecants<2>[1] = {0.70710678118654752440f};
template <>
inline constexpr float kHalfSecants<4>[2] = {0.54119610014619698440f, 1.30656296487637652785f};
template <>
inline constexpr float kHalfSecants<8>[4] = {0.50979557910415916894f, 0.60134488693504528054f, 0.89997622313641570463f,
                                             2.56291544774150617881f};
template <>
inline constexpr float kHalfSecants<16>[8] = {0.50241928618815570551f, 0.52249861493968888062f, 0.56694403481635770368f,
                                              0.64682178335999012954f, 0.78815462345125022473f, 1.06067768599034747134f,
                                              1.72244709823833392782f, 5.10114861868916385802f};

/// x[k] = sum over i of x[i] * cos(pi k (2 i + 1) / (2 n)) (B. G. Lee, "A new algorithm to compute the discrete cosine
/// transform", 1984).
template <int n, typename V>
inline void Dct(V (&x)[n]) {
    if constexpr (n > 1) {
        V even[n / 2];
        V odd[n / 2];
        for (int i = 0; i < n / 2; ++i) {
            even[i] = x[i] + x[n - 1 - i];
            odd[i] = (x[i] - x[n - 1 - i]) * kHalfSecants<n>[i];
        }
        Dct<n / 2>(even);
        Dct<n / 2>(odd);
        for (int k = 0; k < n / 2; ++k) {
            x[2 * k] = even[k];
            x[2 * k + 1] = k + 1 < n / 2 ? odd[k] + odd[k + 1] : odd[k];
        }
    }
}

/// x[i] = sum over k of x[k] * cos(pi k (2 i + 1) / (2 n)), the transpose of the above.
template <int n, typename V>
inline void TransposedDct(V (&x)[n]) {
    if constexpr (n > 1) {
        V even[n / 2];
        V odd[n / 2];
        for (int k = 0; k < n / 2; ++k) {
            even[k] = x[2 * k];
            odd[k] = k > 0 ? x[2 * k + 1] + x[2 * k - 1] : x[1];
        }
        TransposedDct<n / 2>(even);
        TransposedDct<n / 2>(odd);
        for (int i = 0; i < n / 2; ++i) {
            const V scaled = odd[i] * kHalfSecants<n>[i];
            x[i] = even[i] + scaled;
            x[n - 1 - i] = even[i] - scaled;
        }
    }
}

} // namespace restore::CLARIBOX_VECTOR_CLASS
