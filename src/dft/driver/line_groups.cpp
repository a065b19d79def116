#include "dft/driver/line_groups.h"

#include "dft/base/record_fields.h"
#include "dft/memory/work_memory.h"
#include "dft/plans/methods.h"
#include "dft/pow2/pow2.h"
#include "dft/pow2/record_kernels.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace dft {
namespace {

/// Adjacent columns copied together, so that each cache line is fetched once for all of them. Given: the group of four
/// decides which statuses count.
constexpr std::ptrdiff_t kColumnGroup = 4;

/// Larger batches go line by line: their memory would be out of proportion. Chosen, not tuned.
constexpr std::uint64_t kLargestBatchBytes = std::uint64_t{64} << 20;

/// The engine's own routines: of general plans and of powers of two.
template <typename Real>
bool IsGeneral(DftRoutine routine, Direction direction) {
    return routine == (direction == kForward ? GeneralRoutine<kForward, Real> : GeneralRoutine<kBackward, Real>);
}
template <typename Real>
bool IsPow2(DftRoutine routine, Direction direction) {
    constexpr DftRoutine kRoutines[2][2] = {{c1d_forward_pow2, c1d_backward_pow2},
                                            {z1d_forward_pow2, z1d_backward_pow2}};
    return routine == kRoutines[kPrecision<Real>][direction];
}

/// Columns before the first that starts a cache line in all rows or in every other: groups from there on touch the
/// fewest lines. 0 if no grouping gains anything.
template <typename Real>
std::ptrdiff_t LinesBeforeBoundary(const Lines<Real>& lines) {
    constexpr std::ptrdiff_t cacheLine = 64;
    constexpr auto element = static_cast<std::ptrdiff_t>(sizeof(Complex<Real>));
    const auto past = static_cast<std::ptrdiff_t>(reinterpret_cast<std::uintptr_t>(lines.base) % cacheLine);
    const bool isShared = lines.elementStride % (cacheLine / 2 / element) == 0;
    return lines.lineStride == 1 && isShared && past % element == 0 ? (cacheLine - past) % cacheLine / element : 0;
}

/// One of the engine's own routines on batches of lines. Lines of a power of two mostly need no gathering: rows run
/// one by one with vectors within them, columns where they lie.
template <typename Real>
class Batches {
public:
    Batches(const DftDescriptor& record, Direction direction)
        : m_Direction(direction), m_LineBytes(static_cast<std::uint64_t>(record.length) * sizeof(Complex<Real>)) {
        const DftRoutine routine = RoutineOf<Real>(record, direction);
        if (IsGeneral<Real>(routine, direction)) {
            m_Plan = record.*RecordFields<Real>::kPlan;
            m_Exist = m_Plan != nullptr && m_Plan->tag == kDftPlanTag && m_Plan->norm_flag == kUnscaled &&
                      m_Plan->length == record.length;
            m_Scale = ScaleFactor<Real>(record, direction);
            m_WorkBytes = m_Exist ? static_cast<std::uint64_t>(m_Plan->work_bytes) : 0;
        } else if (IsPow2<Real>(routine, direction)) {
            m_Exist = true;
            m_Schedule = ScheduleOf<Real>(record, direction);
            m_WorkBytes = m_LineBytes;
        }
        const std::uint64_t bytes = static_cast<std::uint64_t>(m_Lanes) * (m_LineBytes + m_WorkBytes);
        m_Exist = m_Exist && m_Lanes > 1 && bytes <= kLargestBatchBytes;
    }

    /// False for other routines, for batches of one line and for those too large.
    bool Exist() const { return m_Exist; }

    std::int32_t Transform(const Lines<Real>& lines) const {
        if (m_Plan == nullptr && lines.elementStride == 1 && m_Pow2.has_vectors(m_Schedule.log2_length)) {
            return TransformRows(lines);
        }
        // The passes at the ends of columns take spectra in natural order and apply no factor.
        const bool isPlain = m_Plan == nullptr && m_Schedule.log2_length >= 4 && m_Schedule.ordered &&
                             m_Schedule.scaleBefore == 1 && m_Schedule.scaleAfter == 1;
        const bool isColumns = lines.lineStride == 1 && lines.count >= m_Lanes;
        return isPlain && isColumns ? TransformColumns(lines) : TransformInBatches(lines);
    }

private:
    std::int32_t TransformRows(const Lines<Real>& rows) const {
        const LineBuffer<Complex<Real>> work(static_cast<std::size_t>(rows.length));
        if (work.data() == nullptr) {
            return DFT_NO_MEMORY;
        }
        for (std::ptrdiff_t j = 0; j < rows.count; ++j) {
            m_Pow2.line[m_Direction](m_Schedule, rows.base + j * rows.lineStride, work.data());
        }
        return DFT_OK;
    }

    /// Columns where they lie, but for those before the first cache line and after the last full group.
    std::int32_t TransformColumns(const Lines<Real>& columns) const {
        const std::ptrdiff_t leading = LeadingLines(columns);
        const std::ptrdiff_t firstOfRest = leading + (columns.count - leading) / m_Lanes * m_Lanes;
        {
            const LineBuffer<Real> work(BatchReals(m_WorkBytes));
            if (work.data() == nullptr) {
                return DFT_NO_MEMORY;
            }
            for (std::ptrdiff_t first = leading; first < firstOfRest; first += m_Lanes) {
                m_Pow2.columns[m_Direction](m_Schedule, Part(columns, first, m_Lanes), work.data());
            }
        }
        std::int32_t status = leading > 0 ? TransformInBatches(Part(columns, 0, leading)) : DFT_OK;
        if (status == DFT_OK && firstOfRest < columns.count) {
            status = TransformInBatches(Part(columns, firstOfRest, columns.count - firstOfRest));
        }
        return status;
    }

    std::int32_t TransformInBatches(const Lines<Real>& lines) const {
        const LineBuffer<Real> batch(BatchReals(m_LineBytes));
        const LineBuffer<Real> work(BatchReals(m_WorkBytes));
        if (batch.data() == nullptr || work.data() == nullptr) {
            return DFT_NO_MEMORY;
        }
        const LineTransport<Real>& transport = ActiveLineTransport<Real>();
        const auto run = [&] {
            if (m_Plan != nullptr) {
                KernelsOf(*m_Plan).batch[m_Direction](*m_Plan, batch.data(), batch.data(), work.data());
            } else {
                m_Pow2.batch[m_Direction](m_Schedule, batch.data(), work.data());
            }
        };
        const std::ptrdiff_t leading = LeadingLines(lines);
        Lines<Real> group = Part(lines, 0, leading > 0 ? leading : m_Lanes);
        transport.gather(group, batch.data());
        for (std::ptrdiff_t first = group.count; first < lines.count; first += group.count) {
            run();
            const Lines<Real> next = Part(lines, first, m_Lanes);
            transport.exchange(batch.data(), group, next, m_Scale);
            group = next;
        }
        run();
        transport.scatter(batch.data(), group, m_Scale);
        return DFT_OK;
    }

    /// Lines of a first batch that is not full.
    std::ptrdiff_t LeadingLines(const Lines<Real>& lines) const {
        return lines.count > m_Lanes ? LinesBeforeBoundary(lines) % m_Lanes : 0;
    }
    std::size_t BatchReals(std::uint64_t bytesOfLine) const {
        return static_cast<std::size_t>(static_cast<std::uint64_t>(m_Lanes) * bytesOfLine / sizeof(Real));
    }

    Direction m_Direction;
    std::ptrdiff_t m_Lanes = BatchLanes<Real>();
    const Pow2Kernels<Real>& m_Pow2 = ActivePow2Kernels<Real>();
    Pow2Schedule<Real> m_Schedule = {};         ///< of a power of two
    const BasicDftPlan<Real>* m_Plan = nullptr; ///< null for a power of two
    Real m_Scale = 1;                           ///< what the kernels leave to be applied
    std::uint64_t m_LineBytes;
    std::uint64_t m_WorkBytes = 0; ///< of one line
    bool m_Exist = false;
};

template <typename Real>
std::int32_t TransformWhereTheyLie(DftDescriptor* record, Direction direction, const Lines<Real>& lines, void* work) {
    std::int32_t status = DFT_OK;
    for (std::ptrdiff_t j = 0; j < lines.count && status == DFT_OK; ++j) {
        Complex<Real>* const line = lines.base + j * lines.lineStride;
        status = RoutineOf<Real>(*record, direction)(line, line, record, work);
    }
    return status;
}

template <typename Real>
std::int32_t TransformInCopies(DftDescriptor* record, Direction direction, const Lines<Real>& lines, StatusRule rule,
                               void* work) {
    const std::ptrdiff_t perGroup = lines.lineStride == 1 && AreApart(lines) ? kColumnGroup : 1;
    const LineBuffer<Complex<Real>> buffer(static_cast<std::size_t>(std::min(perGroup, lines.count) * lines.length));
    if (buffer.data() == nullptr) {
        return DFT_NO_MEMORY;
    }
    const DftRoutine routine = RoutineOf<Real>(*record, direction);
    const bool isOwn = IsGeneral<Real>(routine, direction) || IsPow2<Real>(routine, direction);
    for (std::ptrdiff_t first = 0; first < lines.count; first += perGroup) {
        const Lines<Real> group = Part(lines, first, perGroup);
        const bool isTested = rule == StatusRule::AllTested || group.count == perGroup || isOwn;
        for (std::ptrdiff_t k = 0; k < lines.length; ++k) {
            dft_copy_strided(group.count, group.base + k * group.elementStride, group.lineStride, buffer.data() + k,
                             group.length);
        }
        for (std::ptrdiff_t j = 0; j < group.count; ++j) {
            Complex<Real>* const line = buffer.data() + j * lines.length;
            const std::int32_t status = routine(line, line, record, work);
            if (isTested && status != DFT_OK) {
                return status;
            }
        }
        for (std::ptrdiff_t k = 0; k < lines.length; ++k) {
            dft_copy_strided(group.count, buffer.data() + k, group.length, group.base + k * group.elementStride,
                             group.lineStride);
        }
    }
    return DFT_OK;
}

} // namespace

template <typename Real>
std::int32_t TransformLines(DftDescriptor* record, Direction direction, const Lines<Real>& lines, StatusRule rule,
                            void* work) {
    if (lines.count > 1 && AreApart(lines)) {
        const Batches<Real> batches(*record, direction);
        if (batches.Exist()) {
            return batches.Transform(lines);
        }
    }
    if (lines.elementStride == 1) {
        return TransformWhereTheyLie(record, direction, lines, work);
    }
    return TransformInCopies(record, direction, lines, rule, work);
}

template std::int32_t TransformLines(DftDescriptor*, Direction, const Lines<float>&, StatusRule, void*);
template std::int32_t TransformLines(DftDescriptor*, Direction, const Lines<double>&, StatusRule, void*);

} // namespace dft
