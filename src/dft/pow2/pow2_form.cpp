#include "dft/pow2/pow2_form.h"

#include "dft/base/record_fields.h"
#include "dft/pow2/static_tables.h"

#include <bit>

namespace dft {
namespace {

int Log2(std::int32_t power) {
    return std::countr_zero(static_cast<std::uint32_t>(power));
}

} // namespace

template <typename Real>
Pow2Form<Real> FormOf(const DftDescriptor& record, Direction direction) {
    constexpr int precision = kPrecision<Real>;
    const DftTuning& tuning = dft_tuning();
    const int bits = record.log2_length;
    Pow2Form<Real> form{};
    form.log2_length = bits;
    if (bits < tuning.small_log2_below[precision]) {
        form.groupBits = form.blockBits = bits;
    } else if (record.length <= tuning.two_level_up_to[precision]) {
        form.groupBits = form.blockBits = Log2(tuning.two_level_block[precision]);
    } else {
        form.groupBits = Log2(tuning.group[precision]);
        form.blockBits = Log2(tuning.group_block[precision]);
    }
    form.ordered = record.ordering == DFT_ORDERED;
    form.even = static_tables<Real>().even;
    form.odd = static_tables<Real>().odd;

    const void* block = nullptr;
    if constexpr (precision == 0) {
        block = record.table_single;
    } else {
        block = record.table_double;
    }
    const auto* const base =
        reinterpret_cast<const Real*>(static_cast<const unsigned char*>(block) + TableOffset(block, tuning));
    if (HasTriples<Real>(bits, tuning)) {
        form.triples = base;
    } else if (bits > kStaticBits) {
        form.stages = base;
    }
    if (bits >= kFirstListBits) {
        form.lists = ListsOf(base, bits);
    }

    // Forward in double precision, and in single but for one variant, the factor goes in with the first pass.
    const bool first = direction == kForward && !(precision == 0 && tuning.scale_last_forward);
    const Real scale = ScaleFactor<Real>(record, direction);
    form.scaleBefore = first ? scale : Real{1};
    form.scaleAfter = first ? Real{1} : scale;
    return form;
}

#define CLARIBOX_INSTANTIATE(Real) template Pow2Form<Real> FormOf(const DftDescriptor&, Direction)
CLARIBOX_INSTANTIATE(float);
CLARIBOX_INSTANTIATE(double);
#undef CLARIBOX_INSTANTIATE

} // namespace dft
