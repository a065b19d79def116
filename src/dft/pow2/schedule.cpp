#include "dft/pow2/schedule.h"

#include "dft/base/record_fields.h"
#include "dft/base/variant.h"
#include "dft/pow2/stage_tables.h"

#include <bit>

namespace dft {
namespace {

int Log2(std::int32_t power) {
    return std::countr_zero(static_cast<std::uint32_t>(power));
}

} // namespace

template <typename Real>
Pow2Schedule<Real> ScheduleOf(const DftDescriptor& record, Direction direction) {
    constexpr int precision = kPrecision<Real>;
    const DftTuning& tuning = dft_tuning();
    const int bits = record.log2_length;
    Pow2Schedule<Real> schedule{};
    schedule.log2_length = bits;
    if (bits < tuning.small_log2_below[precision]) {
        schedule.groupBits = schedule.blockBits = bits;
    } else if (record.length <= tuning.two_level_up_to[precision]) {
        schedule.groupBits = schedule.blockBits = Log2(tuning.two_level_block[precision]);
    } else {
        schedule.groupBits = Log2(tuning.group[precision]);
        schedule.blockBits = Log2(tuning.group_block[precision]);
    }
    schedule.ordered = record.ordering == DFT_ORDERED;
    schedule.even = static_tables<Real>().even;
    schedule.odd = static_tables<Real>().odd;

    schedule.table = ReadCommitTable<Real>(bits, record.*RecordFields<Real>::kTable);

    // Forward in double precision, and in single but for one variant, the factor goes in with the first pass.
    const bool first = direction == kForward && !(precision == 0 && tuning.scale_last_forward);
    const Real scale = ScaleFactor<Real>(record, direction);
    schedule.scaleBefore = first ? scale : Real{1};
    schedule.scaleAfter = first ? Real{1} : scale;
    return schedule;
}

template Pow2Schedule<float> ScheduleOf(const DftDescriptor&, Direction);
template Pow2Schedule<double> ScheduleOf(const DftDescriptor&, Direction);

} // namespace dft
