#include "kernels/spectra/RowPairs.h"

#include "simd/Transpose.h"

namespace kernels::CLARIBOX_VECTOR_CLASS {
namespace {

using namespace simd::CLARIBOX_VECTOR_CLASS;

constexpr int kStep = kLanes<float>;

template <int... k>
F32 Reversed(F32 x, Indices<0, k...>) {
    return __builtin_shufflevector(x, x, (kStep - 1 - k)...);
}

/// Elements k .. k + kStep - 1, or with their order reversed.
struct Parts {
    F32 re;
    F32 im;
};
Parts LoadParts(const ChComplex* address) {
    Parts x;
    LoadSeparated(address, x.re, x.im);
    return x;
}
Parts Reversed(Parts x) {
    return {Reversed(x.re, Indices<kStep>{}), Reversed(x.im, Indices<kStep>{})};
}

void Pack(const float* a, const float* b, ChComplex* row, int count) {
    int k = 0;
    for (; k + kStep <= count; k += kStep) {
        StoreJoined(row + k, Load<F32>(a + k) * 0.5f, Load<F32>(b + k) * 0.5f);
    }
    for (; k < count; ++k) {
        row[k] = {a[k] * 0.5f, b[k] * 0.5f};
    }
}

void Unpack(const ChComplex* row, float* a, float* b, int count) {
    int k = 0;
    for (; k + kStep <= count; k += kStep) {
        const Parts x = LoadParts(row + k);
        Store(a + k, x.re);
        Store(b + k, x.im);
    }
    for (; k < count; ++k) {
        a[k] = row[k].re;
        b[k] = row[k].im;
    }
}

// x is the element k of a row, y the element count - k.
template <typename Part>
void Halves(Part xRe, Part xIm, Part yRe, Part yIm, Part (&a)[2], Part (&b)[2]) {
    a[0] = xRe + yRe;
    a[1] = xIm - yIm;
    b[0] = xIm + yIm;
    b[1] = yRe - xRe;
}

void Separate(const ChComplex* row, ChComplex* a, ChComplex* b, int count) {
    a[0] = {row[0].re + row[0].re, 0.0f};
    b[0] = {row[0].im + row[0].im, 0.0f};
    const int last = count / 2;
    int k = 1;
    for (; k + kStep <= last + 1; k += kStep) {
        const Parts x = LoadParts(row + k);
        const Parts y = Reversed(LoadParts(row + count - k - kStep + 1));
        F32 first[2];
        F32 second[2];
        Halves(x.re, x.im, y.re, y.im, first, second);
        StoreJoined(a + k, first[0], first[1]);
        StoreJoined(b + k, second[0], second[1]);
    }
    for (; k <= last; ++k) {
        float first[2];
        float second[2];
        Halves(row[k].re, row[k].im, row[count - k].re, row[count - k].im, first, second);
        a[k] = {first[0], first[1]};
        b[k] = {second[0], second[1]};
    }
}

void Combine(const ChComplex* a, const ChComplex* b, ChComplex* row, int count) {
    row[0] = {a[0].re, b[0].re};
    const int last = (count - 1) / 2;
    int k = 1;
    for (; k + kStep <= last + 1; k += kStep) {
        const Parts x = LoadParts(a + k);
        const Parts y = LoadParts(b + k);
        StoreJoined(row + k, x.re - y.im, x.im + y.re);
        const Parts mirrored = Reversed({x.re + y.im, y.re - x.im});
        StoreJoined(row + count - k - kStep + 1, mirrored.re, mirrored.im);
    }
    for (; k <= last; ++k) {
        row[k] = {a[k].re - b[k].im, a[k].im + b[k].re};
        row[count - k] = {a[k].re + b[k].im, b[k].re - a[k].im};
    }
    if (count % 2 == 0) {
        row[count / 2] = {a[count / 2].re, b[count / 2].re};
    }
}

} // namespace

const RowPairs kRowPairs = {Pack, Unpack, Separate, Combine};

} // namespace kernels::CLARIBOX_VECTOR_CLASS
