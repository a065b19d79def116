#include "dft/plans/butterflies.h"
#include "dft/plans/method_kernels.h"
#include "dft/pow2/passes.h"

namespace dft::CLARIBOX_VECTOR_CLASS {
namespace {

/// One run over a line or a batch.
template <Direction direction, typename V>
class MixedRadixRun {
public:
    /// `holder` takes the intermediate stages: the output, or an array apart where input and output are the same.
    /// `scratch` has room for one element less than the largest factor.
    MixedRadixRun(const BasicDftPlan<Real<V>>& plan, const LaneComplex<V>* input, LaneComplex<V>* holder,
                  LaneComplex<V>* output, LaneComplex<V>* scratch)
        : m_Plan(plan), m_Input(input), m_Holder(holder), m_Output(output), m_Scratch(scratch) {}

    void Run() { Block(0, 0, m_Holder, 0); }

private:
    using Element = LaneComplex<V>;
    using Stage = StageRecord<Real<V>>;

    /// One block of stage `index`, radix * span elements, at `block`. Inside a group its tail blocks begin at
    /// `digit_reversal[entry]`, all counted from `offset` in the input.
    void Block(int index, std::ptrdiff_t offset, Element* block, int entry) {
        const Stage& stage = m_Plan.stages[index];
        if (index == m_Plan.last_stage) {
            Tail(stage, offset + m_Plan.digit_reversal[entry], block);
        } else {
            const bool leavesGroup = stage.radix * stage.span > kGroupPoints;
            const int entries =
                leavesGroup ? 0 : m_Plan.stages[m_Plan.last_stage].count / m_Plan.stages[index + 1].count;
            for (int i = 0; i < stage.radix; ++i) {
                Block(index + 1, leavesGroup ? offset + static_cast<std::ptrdiff_t>(i) * stage.stride : offset,
                      block + static_cast<std::ptrdiff_t>(i) * stage.span, entry + i * entries);
            }
        }
        Butterflies(stage, block, index == 0 ? m_Output : block);
    }

    /// The transforms of the last factor's length, one a residue of the last radix.
    void Tail(const Stage& stage, std::ptrdiff_t offset, Element* block) {
        const std::ptrdiff_t step = static_cast<std::ptrdiff_t>(stage.stride) * stage.radix;
        const int length = stage.span;
        for (int r = 0; r < stage.radix; ++r) {
            const Element* const source = m_Input + offset + static_cast<std::ptrdiff_t>(r) * stage.stride;
            Element* const results = block + static_cast<std::ptrdiff_t>(r) * length;
            const auto load = [=](int k) { return source[k * step]; };
            const auto store = [=](int j, Element value) { results[j] = value; };
            if (length == 3) {
                Dft3<direction, V>(load, store);
            } else if (length == 5) {
                Dft5<direction, V>(load, store);
            } else {
                DftOdd<direction, V>(length, stage.tail_matrix, m_Scratch, load, store);
            }
        }
    }

    void Butterflies(const Stage& stage, const Element* block, Element* results) {
        switch (stage.radix) {
        case 2:
            return Pass<2, 1>(stage, block, results, [](auto load, auto store) { Transform2<direction>(load, store); });
        case 3:
            return Pass<3, 1>(stage, block, results, [](auto load, auto store) { Dft3<direction, V>(load, store); });
        case 4:
            return Pass<4, 1>(stage, block, results, [](auto load, auto store) { Transform4<direction>(load, store); });
        case 5:
            return Pass<5, 1>(stage, block, results, [](auto load, auto store) { Dft5<direction, V>(load, store); });
        default:
            return Pass<0, 0>(stage, block, results, [&](auto load, auto store) {
                DftOdd<direction, V>(stage.radix, stage.radix_matrix, m_Scratch, load, store);
            });
        }
    }

    /// One transform of the radix for each j below the span, on elements a span apart. Twiddles of i below
    /// `firstTwiddle` are not stored. `fixedRadix` is the radix where the compiler shall know it.
    template <int fixedRadix, int firstTwiddle, typename Transform>
    static void Pass(const Stage& stage, const Element* block, Element* results, Transform transform) {
        const std::ptrdiff_t span = stage.span;
        const int twiddlesEach = (fixedRadix > 0 ? fixedRadix : stage.radix) - firstTwiddle;
        transform([=](int k) { return block[k * span]; }, [=](int j, Element value) { results[j * span] = value; });
        const Complex<Real<V>>* twiddles = stage.twiddles;
        for (std::ptrdiff_t column = 1; column < span; ++column) {
            twiddles += twiddlesEach;
            transform(
                [=](int k) {
                    const Element x = block[k * span + column];
                    return k == 0 ? x : Rotate<direction>(x, twiddles[k - firstTwiddle]);
                },
                [=](int j, Element value) { results[j * span + column] = value; });
        }
    }

    const BasicDftPlan<Real<V>>& m_Plan;
    const Element* m_Input;
    Element* m_Holder;
    Element* m_Output;
    Element* m_Scratch;
};

struct RunMixedRadix {
    template <Direction direction, typename V>
    static void Run(const BasicDftPlan<Real<V>>& plan, const LaneComplex<V>* input, LaneComplex<V>* output,
                    LaneComplex<V>* work) {
        if (input != output) {
            return MixedRadixRun<direction, V>(plan, input, output, output, work).Run();
        }
        // A multiple of two keeps the scratch of single lines on 16 bytes.
        LaneComplex<V>* const scratch = work + (plan.stages[0].radix * plan.stages[0].span + 1) / 2 * 2;
        MixedRadixRun<direction, V>(plan, input, work, output, scratch).Run();
    }
};

} // namespace

const PlanKernels<float> kMixedRadixKernelsSingle = KernelsFor<RunMixedRadix, BatchSingle>::kKernels;
const PlanKernels<double> kMixedRadixKernelsDouble = KernelsFor<RunMixedRadix, BatchDouble>::kKernels;

} // namespace dft::CLARIBOX_VECTOR_CLASS
