// A part of a picture's plane of floats, with a margin.
#pragma once

#include "memory/HugePages.h"
#include "restore/Area.h"

#include <algorithm>
#include <cstddef>
#include <memory>

namespace restore {

/// The samples of an area, and kMargin more on each side: at the edge of the picture they mirror those inside
/// (half-sample symmetric), elsewhere they are not used. Samples have the picture's coordinates.
class Plane {
public:
    static constexpr int kMargin = 16;

    explicit Plane(const Area& area)
        : m_Area(area), m_Stride(area.Width() + area.Width() % 2 + 2 * kMargin), m_Samples(new float[Count()]()) {
        memory::AdviseHugePages(m_Samples.get(), Count() * sizeof(float));
    }

    std::ptrdiff_t Stride() const { return m_Stride; }
    float* At(int x, int y) const {
        return m_Samples.get() + (y - m_Area.top + kMargin) * m_Stride + (x - m_Area.left + kMargin);
    }

    /// Fills the margin where the area ends at `picture`'s edge.
    void Mirror(const Area& picture) {
        for (int y = m_Area.top; y < m_Area.bottom; ++y) {
            for (int k = 0; k < kMargin; ++k) {
                if (m_Area.left == picture.left) {
                    *At(m_Area.left - 1 - k, y) = *At(m_Area.left + k, y);
                }
                if (m_Area.right == picture.right) {
                    *At(m_Area.right + k, y) = *At(m_Area.right - 1 - k, y);
                }
            }
        }
        const auto copyRow = [this](int from, int to) {
            std::copy_n(At(m_Area.left - kMargin, from), m_Stride, At(m_Area.left - kMargin, to));
        };
        for (int k = 0; k < kMargin; ++k) {
            if (m_Area.top == picture.top) {
                copyRow(m_Area.top + k, m_Area.top - 1 - k);
            }
            if (m_Area.bottom == picture.bottom) {
                copyRow(m_Area.bottom - 1 - k, m_Area.bottom + k);
            }
        }
    }

private:
    std::size_t Count() const {
        const int rows = m_Area.Height() + m_Area.Height() % 2 + 2 * kMargin;
        return static_cast<std::size_t>(m_Stride) * static_cast<std::size_t>(rows);
    }

    Area m_Area;
    std::ptrdiff_t m_Stride;
    std::unique_ptr<float[]> m_Samples;
};

} // namespace restore
