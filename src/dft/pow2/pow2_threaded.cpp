#include "dft/pow2/pow2.h"

#include "dft/base/chunks.h"
#include "dft/memory/work_memory.h"
#include "dft/pow2/permutation.h"
#include "dft/pow2/pow2_pieces.h"
#include "dft/pow2/pow2_runs.h"

namespace dft {
namespace {

constexpr int kShortestPieceBits = 4;

/// Log2 of the number of pieces: as many as threads, rounded down to a power of two.
int LevelsFor(std::int32_t threads, int log2_length) {
    int levels = 0;
    while (levels < log2_length - kShortestPieceBits && std::int64_t{2} << levels <= threads) {
        ++levels;
    }
    return levels;
}

template <typename Real>
std::int32_t Run(Direction direction, void* line, std::int32_t threads, DftDescriptor& record, DftRoutine serial) {
    const int levels = LevelsFor(threads, record.log2_length);
    if (levels == 0) {
        return serial(line, line, &record, nullptr);
    }
    auto* const data = static_cast<Complex<Real>*>(line);
    const LineBuffer<Complex<Real>> scratch(static_cast<std::size_t>(record.length));
    if (scratch.data() == nullptr) {
        return DFT_NO_MEMORY;
    }
    const Pow2Form<Real> form = FormOf<Real>(record, direction);
    const Pow2Pieces<Real>& runs = ActivePow2Pieces<Real>();
    const auto runPieces = [&] {
        RunChunks(1 << levels, 1 << levels,
                  [&](int piece) { runs.piece[direction](form, data, scratch.data(), levels, piece); });
    };
    if (direction == kForward) {
        runs.levels[direction](form, data, scratch.data(), levels);
        runPieces();
        if (form.ordered) {
            ReverseOrder(data, form.log2_length, form.lists);
        }
    } else {
        if (form.ordered) {
            ReverseOrder(data, form.log2_length, form.lists);
        }
        runPieces();
        runs.levels[direction](form, data, scratch.data(), levels);
    }
    return DFT_OK;
}

} // namespace

std::int32_t c1d_forw_dft(void* data, std::int32_t threads, DftDescriptor* record) {
    return Run<float>(kForward, data, threads, *record, c1d_forward_pow2);
}
std::int32_t c1d_back_dft(void* data, std::int32_t threads, DftDescriptor* record) {
    return Run<float>(kBackward, data, threads, *record, c1d_backward_pow2);
}
std::int32_t z1d_forw_dft(void* data, std::int32_t threads, DftDescriptor* record) {
    return Run<double>(kForward, data, threads, *record, z1d_forward_pow2);
}
std::int32_t z1d_back_dft(void* data, std::int32_t threads, DftDescriptor* record) {
    return Run<double>(kBackward, data, threads, *record, z1d_backward_pow2);
}

} // namespace dft
