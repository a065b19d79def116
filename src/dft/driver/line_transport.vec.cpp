#include "dft/driver/line_transport.h"

#include "dft/lane_complex.h"
#include "simd/Vector.h"

namespace dft::CLARIBOX_VECTOR_CLASS {
namespace {

using simd::CLARIBOX_VECTOR_CLASS::Indices;
using simd::CLARIBOX_VECTOR_CLASS::Load;
using simd::CLARIBOX_VECTOR_CLASS::Store;
using simd::CLARIBOX_VECTOR_CLASS::Unrolled;

/// Elements first .. last - 1 of lines at any strides.
template <typename V>
void GatherPlain(const Lines<Real<V>>& lines, std::ptrdiff_t first, std::ptrdiff_t last, Real<V>* batch) {
    constexpr int lanes = kLines<V>;
    for (std::ptrdiff_t k = first; k < last; ++k) {
        const Complex<Real<V>>* const row = lines.base + k * lines.elementStride;
        Real<V>* const element = batch + 2 * lanes * k;
        for (int j = 0; j < lanes; ++j) {
            const Complex<Real<V>> x = j < lines.count ? row[j * lines.lineStride] : Complex<Real<V>>{};
            element[j] = x.re;
            element[lanes + j] = x.im;
        }
    }
}
template <typename V>
void ScatterPlain(const Real<V>* batch, const Lines<Real<V>>& lines, std::ptrdiff_t first, std::ptrdiff_t last,
                  Real<V> scale) {
    constexpr int lanes = kLines<V>;
    for (std::ptrdiff_t k = first; k < last; ++k) {
        Complex<Real<V>>* const row = lines.base + k * lines.elementStride;
        const Real<V>* const element = batch + 2 * lanes * k;
        for (int j = 0; j < lines.count; ++j) {
            row[j * lines.lineStride] = {element[j] * scale, element[lanes + j] * scale};
        }
    }
}

template <typename V>
void GatherLines(const Lines<Real<V>>& lines, Real<V>* batch) {
    GatherPlain<V>(lines, 0, lines.length, batch);
}
template <typename V>
void ScatterLines(const Real<V>* batch, const Lines<Real<V>>& lines, Real<V> scale) {
    ScatterPlain<V>(batch, lines, 0, lines.length, scale);
}

} // namespace

const LineTransport<float> kLineTransportSingle = {kLines<BatchSingle>, GatherLines<BatchSingle>,
                                                   ScatterLines<BatchSingle>};
const LineTransport<double> kLineTransportDouble = {kLines<BatchDouble>, GatherLines<BatchDouble>,
                                                    ScatterLines<BatchDouble>};

} // namespace dft::CLARIBOX_VECTOR_CLASS
