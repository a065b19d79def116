#include "dft/pow2/pow2_runs.h"

#include "dft/pow2/columns.h"
#include "dft/pow2/fft_passes.h"
#include "dft/pow2/pow2_along.h"
#include "dft/pow2/pow2_pieces.h"
#include "dft/pow2/pow2_split.h"

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

/// Swaps each index with the one of its bits reversed, lengths 1 to 8.
template <typename V>
void ReverseTiny(int bits, LaneComplex<V>* data) {
    if (bits == 2) {
        Swap(data[1], data[2]);
    } else if (bits == 3) {
        Swap(data[1], data[4]);
        Swap(data[3], data[6]);
    }
}

/// Lengths 1 to 8.
template <Direction direction, typename V>
void RunTiny(const Pow2Form<Real<V>>& form, LaneComplex<V>* data) {
    if (direction == kBackward && !form.ordered) {
        ReverseTiny(form.log2_length, data);
    }
    FftRunTiny<direction, V>(form.log2_length, data, data);
    if (direction == kForward && !form.ordered) {
        ReverseTiny(form.log2_length, data);
    }
}

/// Lines beside each other, or one by itself.
template <Direction direction, typename V>
void RunBeside(const Pow2Form<Real<V>>& form, LaneComplex<V>* data, LaneComplex<V>* scratch) {
    const int bits = form.log2_length;
    if (bits < 4) {
        RunTiny<direction>(form, data);
    } else {
        LaneComplex<V>* const work = form.ordered ? scratch : data;
        RunPasses<Beside<V>, direction>(form, data, work, Spectrum<LaneComplex<V>*>{data, form.ordered}, bits, 0);
    }
}

template <Direction direction, typename V>
void Batch(const DftDescriptor& record, Real<V>* data, Real<V>* scratch) {
    const Pow2Form<Real<V>> form = FormOf<Real<V>>(record, direction);
    auto* const elements = reinterpret_cast<LaneComplex<V>*>(data);
    Scale(elements, form.log2_length, form.scaleBefore);
    RunBeside<direction, V>(form, elements, reinterpret_cast<LaneComplex<V>*>(scratch));
    Scale(elements, form.log2_length, form.scaleAfter);
}

/// The passes at both ends take the place of bringing columns together and back.
template <Direction direction, typename V>
void RunColumns(const DftDescriptor& record, const Lines<Real<V>>& lines, Real<V>* scratch) {
    const Pow2Form<Real<V>> form = FormOf<Real<V>>(record, direction);
    const Columns<V> columns{lines.base, lines.elementStride};
    RunPasses<Beside<V>, direction>(form, ColumnsInTurn<V>{columns, lines.length - 1},
                                    reinterpret_cast<LaneComplex<V>*>(scratch), Spectrum<Columns<V>>{columns, true},
                                    form.log2_length, 0);
}

/// The block of 2^bits elements that is number `block` of its size, of one line, at `data` and at `scratch`.
template <Direction direction, typename V>
void RunAlong(const Pow2Form<Real<V>>& form, Real<V>* data, LaneComplex<V>* scratch, int bits, std::ptrdiff_t block,
              bool whole) {
    const Spectrum<LaneComplex<V>*> none{scratch, false};
    const LastSixteens<V> last(form, scratch, data, bits, block);
    const bool natural = whole && form.ordered;
    if constexpr (direction == kForward) {
        if (whole) {
            RunPasses<Along<V>, direction>(form, Interleaved<V>{data}, scratch, none, bits, block);
        } else {
            RunPasses<Along<V>, direction>(form, scratch, scratch, none, bits, block);
        }
        last.template Run<direction>(natural);
    } else {
        last.template Run<direction>(natural);
        if (whole) {
            RunPasses<Along<V>, direction>(form, Interleaved<V>{data}, scratch, none, bits, block);
        } else {
            RunPasses<Along<V>, direction>(form, scratch, scratch, none, bits, block);
        }
    }
}

template <typename V>
inline constexpr bool kHasVectors = kLines<V> > 1;

/// Whether blocks of 2^bits elements of one line run with vectors along it.
template <typename V>
bool IsAlong(int bits) {
    if constexpr (kHasVectors<V>) {
        return bits >= kShortestAlong<V>;
    } else {
        return false;
    }
}

template <Direction direction, typename V>
void Line(const DftDescriptor& record, Complex<Real<V>>* data, Complex<Real<V>>* scratch) {
    const Pow2Form<Real<V>> form = FormOf<Real<V>>(record, direction);
    Scale(data, form.log2_length, form.scaleBefore);
    if (IsAlong<V>(form.log2_length)) {
        if constexpr (kHasVectors<V>) {
            RunAlong<direction, V>(form, &data->re, reinterpret_cast<LaneComplex<V>*>(scratch), form.log2_length, 0,
                                   true);
        }
    } else {
        RunBeside<direction, Real<V>>(form, data, scratch);
    }
    Scale(data, form.log2_length, form.scaleAfter);
}

template <Direction direction, typename V>
void Levels(const Pow2Form<Real<V>>& form, Complex<Real<V>>* data, Complex<Real<V>>* scratch, int levels) {
    const int bits = form.log2_length;
    if constexpr (direction == kForward) {
        Scale(data, bits, form.scaleBefore);
    }
    if (IsAlong<V>(bits - levels)) {
        if constexpr (kHasVectors<V>) {
            RunAllLevels<Along<V>, direction>(form, Interleaved<V>{&data->re},
                                              reinterpret_cast<LaneComplex<V>*>(scratch), bits, bits - levels, 0);
        }
    } else {
        RunAllLevels<Beside<Real<V>>, direction>(form, data, data, bits, bits - levels, 0);
    }
    if constexpr (direction == kBackward) {
        Scale(data, bits, form.scaleAfter);
    }
}

template <Direction direction, typename V>
void Piece(const Pow2Form<Real<V>>& form, Complex<Real<V>>* data, Complex<Real<V>>* scratch, int levels, int piece) {
    const int bits = form.log2_length - levels;
    const std::ptrdiff_t offset = static_cast<std::ptrdiff_t>(piece) << bits;
    Complex<Real<V>>* const part = data + offset;
    if (IsAlong<V>(bits)) {
        if constexpr (kHasVectors<V>) {
            RunAlong<direction, V>(form, &part->re, reinterpret_cast<LaneComplex<V>*>(scratch + offset), bits, piece,
                                   false);
        }
    } else {
        RunPasses<Beside<Real<V>>, direction>(form, part, part, Spectrum<Complex<Real<V>>*>{data, false}, bits, piece);
    }
    if constexpr (direction == kForward) {
        Scale(part, bits, form.scaleAfter);
    }
}

template <typename V>
consteval Pow2Runs<Real<V>> RunsOf() {
    return {kLines<V>,
            {Line<kForward, V>, Line<kBackward, V>},
            {Batch<kForward, V>, Batch<kBackward, V>},
            IsAlong<V>,
            {RunColumns<kForward, V>, RunColumns<kBackward, V>}};
}

} // namespace

const Pow2Runs<float> kPow2RunsSingle = RunsOf<BatchSingle>();
const Pow2Runs<double> kPow2RunsDouble = RunsOf<BatchDouble>();

const Pow2Pieces<float> kPow2PiecesSingle = {{Levels<kForward, BatchSingle>, Levels<kBackward, BatchSingle>},
                                             {Piece<kForward, BatchSingle>, Piece<kBackward, BatchSingle>}};
const Pow2Pieces<double> kPow2PiecesDouble = {{Levels<kForward, BatchDouble>, Levels<kBackward, BatchDouble>},
                                              {Piece<kForward, BatchDouble>, Piece<kBackward, BatchDouble>}};

} // namespace dft::CLARIBOX_VECTOR_CLASS
