#include "WeightedSums.h"

#include "simd/Vector.h"

namespace wavelet::CLARIBOX_VECTOR_CLASS {
namespace {

using namespace simd::CLARIBOX_VECTOR_CLASS;

constexpr int kBlock = 4; // vectors of sums that one pass keeps in registers

void WeightedSum(const float* const* sources, const float* weights, int terms, float* out, int count) {
    int x = 0;
    for (; x + kBlock * kLanes<float> <= count; x += kBlock * kLanes<float>) {
        F32 sum[kBlock] = {};
        for (int t = 0; t < terms; ++t) {
            const F32 weight = F32{} + weights[t];
            for (int k = 0; k < kBlock; ++k) {
                sum[k] = MultiplyAdd(Load<F32>(sources[t] + x + k * kLanes<float>), weight, sum[k]);
            }
        }
        for (int k = 0; k < kBlock; ++k) {
            Store(out + x + k * kLanes<float>, sum[k]);
        }
    }
    for (; x + kLanes<float> <= count; x += kLanes<float>) {
        F32 sum = {};
        for (int t = 0; t < terms; ++t) {
            sum = MultiplyAdd(Load<F32>(sources[t] + x), F32{} + weights[t], sum);
        }
        Store(out + x, sum);
    }
    for (; x < count; ++x) {
        float sum = 0.0f;
        for (int t = 0; t < terms; ++t) {
            sum = MultiplyAdd(sources[t][x], weights[t], sum);
        }
        out[x] = sum;
    }
}

} // namespace

const LineFunctions kLineFunctions = {WeightedSum};

} // namespace wavelet::CLARIBOX_VECTOR_CLASS
