// The spectrum of a picture.
#pragma once

#include "KernelTable.h"

#include <cstddef>
#include <cstdint>

/// Owns height rows of width complex elements, row after row without padding, aligned to 64 bytes. It does not know its
/// size: whoever passes it on passes width and height beside it. In a spectrum the frequencies stand in the natural
/// order of the discrete Fourier transform, the zero frequency first.
class DFT_Buffer {
public:
    /// Room for `count` elements, with contents undefined, behind a headroom of `head` elements, a multiple of 8, which
    /// is never read or written: buffers of one shape that are used at the same moment start at different offsets.
    DFT_Buffer(std::uint32_t count, std::uint32_t head)
        : m_Head(head), m_Spectrum(static_cast<ChComplex*>(ChAlignedAlloc(
                                       (static_cast<std::size_t>(count) + head) * sizeof(ChComplex), 64)) +
                                   head) {}
    ~DFT_Buffer() { ChAlignedFree(m_Spectrum - m_Head); }
    DFT_Buffer(const DFT_Buffer&) = delete;
    DFT_Buffer& operator=(const DFT_Buffer&) = delete;

    std::uint32_t m_Head;  ///< elements of headroom
    ChComplex* m_Spectrum; ///< the first element of the data
};
