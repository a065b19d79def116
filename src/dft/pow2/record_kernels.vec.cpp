#include "dft/pow2/record_kernels.h"

#include "dft/pow2/fft_run.h"
#include "dft/pow2/lane_blocks.h"
#include "dft/pow2/record_passes.h"

namespace dft::CLARIBOX_VECTOR_CLASS {
namespace {

template <typename T, typename V>
void Scale(LaneComplex<V>* data, int bits, T factor) {
    if (factor != T{1}) {
        for (std::ptrdiff_t k = 0; k < std::ptrdiff_t{1} << bits; ++k) {
            data[k] = data[k] * factor;
        }
    }
}

/// Lengths 1 to 8.
template <Direction direction, typename V>
void RunTiny(const Pow2Schedule<Real<V>>& schedule, LaneComplex<V>* data) {
    const auto reverse = [&](Direction side) {
        if (direction == side && !schedule.ordered && schedule.log2_length == 2) {
            Swap(data[1], data[2]);
        } else if (direction == side && !schedule.ordered && schedule.log2_length == 3) {
            Swap(data[1], data[4]);
            Swap(data[3], data[6]);
        }
    };
    reverse(kBackward);
    FftRunTiny<direction, V>(schedule.log2_length, data, data);
    reverse(kForward);
}

/// Leaves of 4 elements, between the scratch array and a spectrum.
template <Direction direction, typename T, typename Layout>
auto SpectrumLeaves(const Pow2Schedule<T>& schedule, Layout data, bool isNatural) {
    return [&schedule, spectrum = Spectrum<Layout>{data, isNatural}](auto* work, int bits, std::ptrdiff_t block) {
        RunLastBlocks<direction>(schedule, work, spectrum, bits, block);
    };
}

/// Vectors across lines, or one line element by element: sub-transform `number` of a line that `levels` radix-2 passes
/// have divided.
template <Direction direction, typename V>
void RunAcross(const Pow2Schedule<Real<V>>& schedule, LaneComplex<V>* data, LaneComplex<V>* scratch, int levels,
               std::ptrdiff_t number) {
    const int bits = schedule.log2_length - levels;
    if (bits < 4) {
        return RunTiny<direction>(schedule, data);
    }
    const bool isNatural = levels == 0 && schedule.ordered;
    LaneComplex<V>* const part = data + (number << bits);
    RunPasses<AcrossLines<V>, direction>(schedule, part, isNatural ? scratch : part, bits, 2, number,
                                         SpectrumLeaves<direction>(schedule, data, isNatural));
}

template <Direction direction, typename V>
void Batch(const Pow2Schedule<Real<V>>& schedule, Real<V>* data, Real<V>* scratch) {
    auto* const elements = reinterpret_cast<LaneComplex<V>*>(data);
    Scale(elements, schedule.log2_length, schedule.scaleBefore);
    RunAcross<direction, V>(schedule, elements, reinterpret_cast<LaneComplex<V>*>(scratch), 0, 0);
    Scale(elements, schedule.log2_length, schedule.scaleAfter);
}

/// The passes at both ends take the place of bringing columns together and back.
template <Direction direction, typename V>
void RunColumns(const Pow2Schedule<Real<V>>& schedule, const Lines<Real<V>>& lines, Real<V>* scratch) {
    const Columns<V> columns{lines.base, lines.elementStride};
    RunPasses<AcrossLines<V>, direction>(schedule, PrefetchedColumns<V>{columns, lines.length - 1},
                                         reinterpret_cast<LaneComplex<V>*>(scratch), schedule.log2_length, 2, 0,
                                         SpectrumLeaves<direction>(schedule, columns, true));
}

/// Whether a line's blocks of 2^bits have vectors within them: a radix-4 pass above blocks of 16, and one of these a
/// lane.
template <typename V>
bool IsWithin(int bits) {
    constexpr int kShortest = kLines<V> == 16 ? 8 : kLines<V> == 8 ? 7 : 6;
    return kLines<V> > 1 && bits >= kShortest;
}

/// Vectors within the line, where that is possible: the blocks of 16 elements go from `data` to `scratch` and back, all
/// passes above them between `scratch` and, in a whole line, `data`.
template <Direction direction, typename V>
void RunLine(const Pow2Schedule<Real<V>>& schedule, Complex<Real<V>>* data, Complex<Real<V>>* scratch, int levels,
             std::ptrdiff_t number) {
    const int bits = schedule.log2_length - levels;
    if (!IsWithin<V>(bits)) {
        return RunAcross<direction, Real<V>>(schedule, data, scratch, levels, number);
    }
    if constexpr (kLines < V >> 1) {
        const std::ptrdiff_t offset = number << bits;
        auto* const work = reinterpret_cast<LaneComplex<V>*>(scratch + offset);
        const LastSixteens<V> last(schedule, work, &data[offset].re, bits, number);
        const bool natural = levels == 0 && schedule.ordered;
        const auto passes = [&](auto outer) {
            RunPasses<WithinLine<V>, direction>(schedule, outer, work, bits, 4, number, NoLeaves{});
        };
        if constexpr (direction == kBackward) {
            last.template Run<direction>(natural);
        }
        levels == 0 ? passes(Interleaved<V>{&data->re}) : passes(work);
        if constexpr (direction == kForward) {
            last.template Run<direction>(natural);
        }
    }
}

template <Direction direction, typename V>
void Line(const Pow2Schedule<Real<V>>& schedule, Complex<Real<V>>* data, Complex<Real<V>>* scratch) {
    Scale(data, schedule.log2_length, schedule.scaleBefore);
    RunLine<direction, V>(schedule, data, scratch, 0, 0);
    Scale(data, schedule.log2_length, schedule.scaleAfter);
}

template <Direction direction, typename V>
void Levels(const Pow2Schedule<Real<V>>& schedule, Complex<Real<V>>* data, Complex<Real<V>>* scratch, int levels) {
    const int bits = schedule.log2_length;
    Pow2Schedule<Real<V>> top = schedule;
    top.groupBits = top.blockBits = bits - levels;
    const auto passes = [&]<typename Vectors>(Vectors, auto outer, auto* work) {
        RunPasses<Vectors, direction>(top, outer, work, bits, bits - levels, 0, NoLeaves{});
    };
    if constexpr (direction == kForward) {
        Scale(data, bits, schedule.scaleBefore);
    }
    if (!IsWithin<V>(bits - levels)) {
        passes(AcrossLines<Real<V>>{}, data, data);
    } else if constexpr (kLines<V> > 1) {
        passes(WithinLine<V>{}, Interleaved<V>{&data->re}, reinterpret_cast<LaneComplex<V>*>(scratch));
    }
    if constexpr (direction == kBackward) {
        Scale(data, bits, schedule.scaleAfter);
    }
}

template <Direction direction, typename V>
void Subtransform(const Pow2Schedule<Real<V>>& schedule, Complex<Real<V>>* data, Complex<Real<V>>* scratch, int levels,
                  int number) {
    RunLine<direction, V>(schedule, data, scratch, levels, number);
    if constexpr (direction == kForward) {
        const int bits = schedule.log2_length - levels;
        Scale(data + (static_cast<std::ptrdiff_t>(number) << bits), bits, schedule.scaleAfter);
    }
}

template <typename V>
consteval Pow2Kernels<Real<V>> Kernels() {
    return {{Line<kForward, V>, Line<kBackward, V>},
            {Batch<kForward, V>, Batch<kBackward, V>},
            {RunColumns<kForward, V>, RunColumns<kBackward, V>},
            IsWithin<V>,
            {Levels<kForward, V>, Levels<kBackward, V>},
            {Subtransform<kForward, V>, Subtransform<kBackward, V>}};
}

} // namespace

const Pow2Kernels<float> kPow2KernelsSingle = Kernels<BatchSingle>();
const Pow2Kernels<double> kPow2KernelsDouble = Kernels<BatchDouble>();

} // namespace dft::CLARIBOX_VECTOR_CLASS
