// The one job that the library gives to the DFT engine.
#pragma once

#include "claribox/KernelTable.h"
#include "dft/dft.h"

#include <algorithm>
#include <cstdint>

namespace kernels {

/// Number of elements of a picture or spectrum, as the row primitives count them; 0 where a size is zero or below.
inline std::uint32_t ElementCount(int width, int height) {
    return static_cast<std::uint32_t>(std::max(width, 0)) * static_cast<std::uint32_t>(std::max(height, 0));
}

/// Transforms spectra of `height` rows of `width` elements, whatever the sizes, in place, in single precision and
/// without any scale factor. Lives for one call: nothing is kept from one to the next. Statuses of the engine are not
/// looked at; where it fails, the data is in no defined state.
class PictureTransform {
public:
    PictureTransform(int width, int height) {
        const int lengths[2] = {height, width};
        dft::dfti_create_descriptor(&m_Descriptor, dft::DFT_SINGLE, dft::DFT_COMPLEX, 2, lengths);
        dft::dfti_commit_descriptor(m_Descriptor);
    }
    ~PictureTransform() { dft::dfti_free_descriptor(&m_Descriptor); }
    PictureTransform(const PictureTransform&) = delete;
    PictureTransform& operator=(const PictureTransform&) = delete;

    void Forward(ChComplex* data) const { dft::dfti_compute_forward(m_Descriptor, data); }
    void Backward(ChComplex* data) const { dft::dfti_compute_backward(m_Descriptor, data); }

private:
    dft::DftDescriptor* m_Descriptor = nullptr;
};

} // namespace kernels
