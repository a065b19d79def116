// The source rows that one output row needs, kept while the plane is overwritten from the top down.
#pragma once

#include "ConvolutionRows.h"

#include <cstdint>
#include <cstring>
#include <vector>

namespace focus {

/// Copies of the last `slots` rows of a plane, each with margins of zero samples on both sides; rows outside the plane
/// read as zeros. Memory: about slots * (width + margins) bytes, whatever the plane's height.
class RowRing {
public:
    RowRing(int width, int height, int slots, int leftMargin, int rightMargin)
        : m_width(width), m_height(height), m_slots(slots), m_leftMargin(leftMargin),
          m_stride(static_cast<std::size_t>(leftMargin) + static_cast<std::size_t>(width) +
                   static_cast<std::size_t>(rightMargin) + kRowSlack),
          m_rows(m_stride * (static_cast<std::size_t>(slots) + 1), 0) {}

    /// Takes a copy of row y of the plane, in place of row y - slots.
    void Put(int y, const std::uint8_t* row) {
        std::memcpy(SlotAt(y % m_slots), row, static_cast<std::size_t>(m_width));
    }

    /// Column 0 of row y, one of the last `slots` rows put or a row outside the plane.
    const std::uint8_t* Row(int y) const {
        const bool inside = y >= 0 && y < m_height;
        return const_cast<RowRing*>(this)->SlotAt(inside ? y % m_slots : m_slots);
    }

private:
    // The slot behind the last is never written and stands for the rows outside.
    std::uint8_t* SlotAt(int slot) {
        return m_rows.data() + m_stride * static_cast<std::size_t>(slot) + static_cast<std::size_t>(m_leftMargin);
    }

    int m_width;
    int m_height;
    int m_slots;
    int m_leftMargin;
    std::size_t m_stride;
    std::vector<std::uint8_t> m_rows;
};

} // namespace focus
