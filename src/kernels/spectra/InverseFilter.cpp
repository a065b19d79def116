#include "claribox/ChFunctions.h"

#include "kernels/numbers/RoundToFloat.h"
#include "kernels/spectra/PictureTransform.h"
#include "kernels/spectra/SpectrumPasses.h"

void ChInverseFilter(unsigned char* plane, int width, int height, DFT_Buffer& otf) {
    const std::uint32_t count = kernels::ElementCount(width, height);
    DFT_Buffer work(count, 256);
    KernelTable.ExpandU8ToComplex(plane, work.m_Spectrum, count);
    const kernels::PictureTransform transform(width, height);
    transform.Forward(work.m_Spectrum);
    // The whole normalisation of the pair of transforms stands between them. SSCAL would take a pass over memory of its
    // own: its rounding, after that of the product, happens in the same pass, and the bytes are the same.
    const float scale = kernels::RoundToFloat(1.0 / count);
    kernels::ActiveSpectrumPasses().MultiplyAndScale(otf.m_Spectrum, work.m_Spectrum, count, scale);
    transform.Backward(work.m_Spectrum);
    // One call for the whole plane: the members treat the last elements of a call in ways of their own.
    KernelTable.PackComplexToU8(work.m_Spectrum, plane, count);
}
