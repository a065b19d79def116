// The methods of a plan, for one line and for a batch.
#include "dft/plans/plan_runs.h"

#include "dft/plans/bluestein.h"
#include "dft/plans/mixed_radix.h"
#include "dft/pow2/fft_passes.h"

namespace dft::CLARIBOX_VECTOR_CLASS {
namespace {

template <Direction direction, typename V>
void RunMixedRadix(const BasicDftPlan<Real<V>>& plan, const LaneComplex<V>* input, LaneComplex<V>* output,
                   LaneComplex<V>* work) {
    if (input != output) {
        return MixedRadixRun<direction, V>(plan, input, output, output, work).Run();
    }
    // A multiple of two keeps the scratch of single lines on 16 bytes.
    LaneComplex<V>* const scratch = work + (plan.stages[0].radix * plan.stages[0].span + 1) / 2 * 2;
    MixedRadixRun<direction, V>(plan, input, work, output, scratch).Run();
}

template <Direction direction, typename V>
void Run(const BasicDftPlan<Real<V>>& plan, const LaneComplex<V>* input, LaneComplex<V>* output, LaneComplex<V>* work) {
    if (plan.length == 3) {
        Dft3<direction, V>([=](int k) { return input[k]; }, [=](int j, LaneComplex<V> value) { output[j] = value; });
    } else if (plan.length < 5) {
        FftRunTiny<direction, V>(plan.length / 2, input, output); // 1, 2 and 4 are 2^0, 2^1 and 2^2
    } else if (plan.power_of_two != 0) {
        FftRun<direction, V>(*plan.fft_plan, input, output, work);
    } else if (plan.mixed_radix != 0) {
        RunMixedRadix<direction, V>(plan, input, output, work);
    } else if (plan.direct_matrix != nullptr) {
        DftOdd<direction, V>(
            plan.length, plan.direct_matrix, work, [=](int k) { return input[k]; },
            [=](int j, LaneComplex<V> value) { output[j] = value; });
    } else {
        RunBluestein<direction, V>(plan, input, output, work);
    }
}

template <Direction direction, typename T>
void RunLine(const BasicDftPlan<T>& plan, const Complex<T>* input, Complex<T>* output, void* work) {
    Run<direction, T>(plan, input, output, static_cast<Complex<T>*>(work));
}

template <Direction direction, typename V>
void RunBatch(const BasicDftPlan<Real<V>>& plan, const Real<V>* input, Real<V>* output, void* work) {
    // Vectors of g++ and clang may alias the elements that they are made of.
    Run<direction, V>(plan, reinterpret_cast<const LaneComplex<V>*>(input), reinterpret_cast<LaneComplex<V>*>(output),
                      static_cast<LaneComplex<V>*>(work));
}

} // namespace

const PlanRuns<float> kPlanRunsSingle = {kLines<BatchSingle>,
                                         {RunLine<kForward, float>, RunLine<kBackward, float>},
                                         {RunBatch<kForward, BatchSingle>, RunBatch<kBackward, BatchSingle>}};
const PlanRuns<double> kPlanRunsDouble = {kLines<BatchDouble>,
                                          {RunLine<kForward, double>, RunLine<kBackward, double>},
                                          {RunBatch<kForward, BatchDouble>, RunBatch<kBackward, BatchDouble>}};

} // namespace dft::CLARIBOX_VECTOR_CLASS
