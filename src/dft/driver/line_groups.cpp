#include "dft/driver/line_groups.h"

#include "dft/base/record_fields.h"
#include "dft/memory/work_memory.h"
#include "dft/plans/general_routines.h"
#include "dft/plans/methods.h"
#include "dft/pow2/pow2.h"
#include "dft/pow2/record_kernels.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace dft {
namespace {

/// Lines taken from adjacent columns together, so that each cache line of the array is fetched for several of them.
constexpr std::ptrdiff_t kColumnGroup = 4;

/// Batches beyond this go line by line: their memory would be out of proportion to the job's.
constexpr std::uint64_t kLargestBatchBytes = std::uint64_t{64} << 20;

/// The engine's own routines: of a general plan, and of a power of two, the latter by precision and direction.
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

/// A record's routine on batches of lines. A routine that is none of the engine's own has none such.
template <typename Real>
class BatchRoutine {
public:
    BatchRoutine(const DftDescriptor& record, Direction direction) : m_Direction(direction) {
        const DftRoutine routine = RoutineOf<Real>(record, direction);
        const BasicDftPlan<Real>* const plan = record.*RecordFields<Real>::kPlan;
        const auto length = static_cast<std::uint64_t>(record.length);
        m_LineBytes = length * sizeof(Complex<Real>);
        if (IsGeneral<Real>(routine, direction)) {
            m_Exists = plan != nullptr && plan->tag == kDftPlanTag && plan->norm_flag == kUnscaled &&
                       plan->length == record.length;
            m_Plan = plan;
            m_Scale = ScaleFactor<Real>(record, direction);
            m_WorkBytes = m_Exists ? static_cast<std::uint64_t>(plan->work_bytes) : 0;
        } else if (IsPow2<Real>(routine, direction)) {
            m_Exists = true;
            m_Schedule = ScheduleOf<Real>(record, direction);
            m_WorkBytes = m_LineBytes;
        }
        const auto lanes = static_cast<std::uint64_t>(m_Lanes);
        m_Exists = m_Exists && lanes > 1 && lanes * (m_LineBytes + m_WorkBytes) <= kLargestBatchBytes;
    }

    bool Exists() const { return m_Exists; }
    std::ptrdiff_t Lanes() const { return m_Lanes; }
    std::size_t BatchReals() const { return Reals(m_LineBytes); }
    std::size_t WorkReals() const { return Reals(m_WorkBytes); }

    /// The factor that `Run` leaves to be applied.
    Real Scale() const { return m_Scale; }

    /// Whether `RunRow` or `RunColumns` may take the place of bringing lines together. The passes at the ends of
    /// columns take spectra in natural order and apply no factor.
    bool RunsRows() const { return m_Plan == nullptr && m_Kernels.has_vectors(m_Schedule.log2_length); }
    bool RunsColumns() const {
        return m_Plan == nullptr && m_Schedule.log2_length >= 4 && m_Schedule.ordered && m_Schedule.scaleBefore == 1 &&
               m_Schedule.scaleAfter == 1;
    }
    /// One line of adjacent elements, where it lies. `work` holds another.
    void RunRow(Complex<Real>* row, Complex<Real>* work) const { m_Kernels.line[m_Direction](m_Schedule, row, work); }
    /// As many adjacent columns as a batch has lanes, where they lie.
    void RunColumns(const Lines<Real>& columns, Real* work) const {
        m_Kernels.columns[m_Direction](m_Schedule, columns, work);
    }

    /// In place.
    void Run(Real* batch, Real* work) const {
        if (m_Plan != nullptr) {
            KernelsOf(*m_Plan).batch[m_Direction](*m_Plan, batch, batch, work);
        } else {
            m_Kernels.batch[m_Direction](m_Schedule, batch, work);
        }
    }

private:
    std::size_t Reals(std::uint64_t bytesOfLine) const {
        return static_cast<std::size_t>(static_cast<std::uint64_t>(m_Lanes) * bytesOfLine / sizeof(Real));
    }

    Direction m_Direction;
    std::ptrdiff_t m_Lanes = BatchLanes<Real>();
    const Pow2Kernels<Real>& m_Kernels = ActivePow2Kernels<Real>();
    Pow2Schedule<Real> m_Schedule = {}; ///< of a power of two
    bool m_Exists = false;
    const BasicDftPlan<Real>* m_Plan = nullptr; ///< null for a power of two
    Real m_Scale = 1;
    std::uint64_t m_LineBytes = 0;
    std::uint64_t m_WorkBytes = 0; ///< of one line
};

/// Columns before the first that starts a cache line, in all rows or in every other: groups that begin there touch the
/// fewest lines. 0 where no group size gains anything.
template <typename Real>
std::ptrdiff_t LinesBeforeBoundary(const Lines<Real>& lines) {
    constexpr std::ptrdiff_t cacheLine = 64;
    constexpr auto element = static_cast<std::ptrdiff_t>(sizeof(Complex<Real>));
    const auto past = static_cast<std::ptrdiff_t>(reinterpret_cast<std::uintptr_t>(lines.base) % cacheLine);
    const bool isShared = lines.elementStride % (cacheLine / 2 / element) == 0;
    return lines.lineStride == 1 && isShared && past % element == 0 ? (cacheLine - past) % cacheLine / element : 0;
}

/// Lines of a first batch that is not full.
template <typename Real>
std::ptrdiff_t LeadingLines(const BatchRoutine<Real>& routine, const Lines<Real>& lines) {
    return lines.count > routine.Lanes() ? LinesBeforeBoundary(lines) % routine.Lanes() : 0;
}

template <typename Real>
std::int32_t TransformInBatches(const BatchRoutine<Real>& routine, const Lines<Real>& lines) {
    const LineBuffer<Real> batch(routine.BatchReals());
    const LineBuffer<Real> work(routine.WorkReals());
    if (batch.data() == nullptr || work.data() == nullptr) {
        return DFT_NO_MEMORY;
    }
    const LineTransport<Real>& transport = ActiveLineTransport<Real>();
    const std::ptrdiff_t leading = LeadingLines(routine, lines);
    Lines<Real> group = Part(lines, 0, leading > 0 ? leading : routine.Lanes());
    transport.gather(group, batch.data());
    for (std::ptrdiff_t first = group.count; first < lines.count; first += group.count) {
        routine.Run(batch.data(), work.data());
        const Lines<Real> next = Part(lines, first, routine.Lanes());
        transport.exchange(batch.data(), group, next, routine.Scale());
        group = next;
    }
    routine.Run(batch.data(), work.data());
    transport.scatter(batch.data(), group, routine.Scale());
    return DFT_OK;
}

template <typename Real>
std::int32_t TransformRows(const BatchRoutine<Real>& routine, const Lines<Real>& rows) {
    const LineBuffer<Complex<Real>> work(static_cast<std::size_t>(rows.length));
    if (work.data() == nullptr) {
        return DFT_NO_MEMORY;
    }
    for (std::ptrdiff_t j = 0; j < rows.count; ++j) {
        routine.RunRow(rows.base + j * rows.lineStride, work.data());
    }
    return DFT_OK;
}

/// Columns where they lie, but for those before the first cache line and after the last full group.
template <typename Real>
std::int32_t TransformColumns(const BatchRoutine<Real>& routine, const Lines<Real>& columns) {
    const std::ptrdiff_t leading = LeadingLines(routine, columns);
    const std::ptrdiff_t firstOfRest = leading + (columns.count - leading) / routine.Lanes() * routine.Lanes();
    {
        const LineBuffer<Real> work(routine.WorkReals());
        if (work.data() == nullptr) {
            return DFT_NO_MEMORY;
        }
        for (std::ptrdiff_t first = leading; first < firstOfRest; first += routine.Lanes()) {
            routine.RunColumns(Part(columns, first, routine.Lanes()), work.data());
        }
    }
    for (const Lines<Real>& others :
         {Part(columns, 0, leading), Part(columns, firstOfRest, columns.count - firstOfRest)}) {
        const std::int32_t status = others.count > 0 ? TransformInBatches(routine, others) : DFT_OK;
        if (status != DFT_OK) {
            return status;
        }
    }
    return DFT_OK;
}

template <typename Real>
std::int32_t TransformWhereTheyLie(DftDescriptor* record, Direction direction, const Lines<Real>& lines, void* work) {
    std::int32_t status = DFT_OK;
    for (std::ptrdiff_t j = 0; j < lines.count && status == DFT_OK; ++j) {
        Complex<Real>* const line = lines.base + j * lines.lineStride;
        status = RoutineOf<Real>(*record, direction)(line, line, record, work);
    }
    return status;
}

/// Copies lines to or from a buffer in which they stand one after the other.
template <typename Real>
void Gather(const Lines<Real>& lines, Complex<Real>* buffer) {
    for (std::ptrdiff_t k = 0; k < lines.length; ++k) {
        dft_copy_strided(lines.count, lines.base + k * lines.elementStride, lines.lineStride, buffer + k, lines.length);
    }
}
template <typename Real>
void Scatter(Complex<Real>* buffer, const Lines<Real>& lines) {
    for (std::ptrdiff_t k = 0; k < lines.length; ++k) {
        dft_copy_strided(lines.count, buffer + k, lines.length, lines.base + k * lines.elementStride, lines.lineStride);
    }
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
        Gather(group, buffer.data());
        for (std::ptrdiff_t j = 0; j < group.count; ++j) {
            Complex<Real>* const line = buffer.data() + j * lines.length;
            const std::int32_t status = routine(line, line, record, work);
            if (isTested && status != DFT_OK) {
                return status;
            }
        }
        Scatter(buffer.data(), group);
    }
    return DFT_OK;
}

} // namespace

template <typename Real>
std::int32_t TransformLines(DftDescriptor* record, Direction direction, const Lines<Real>& lines, StatusRule rule,
                            void* work) {
    if (lines.count > 1 && AreApart(lines)) {
        const BatchRoutine<Real> routine(*record, direction);
        if (routine.Exists() && lines.elementStride == 1 && routine.RunsRows()) {
            return TransformRows(routine, lines);
        }
        if (routine.Exists() && lines.lineStride == 1 && lines.count >= routine.Lanes() && routine.RunsColumns()) {
            return TransformColumns(routine, lines);
        }
        if (routine.Exists()) {
            return TransformInBatches(routine, lines);
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
