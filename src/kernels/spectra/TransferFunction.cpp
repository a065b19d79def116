#include "claribox/ChFunctions.h"

#include "kernels/spectra/PictureTransform.h"
#include "kernels/spectra/RowColumnTransform.h"
#include "kernels/spectra/SpectrumPasses.h"

#include <algorithm>
#include <cstddef>

namespace {

/// The elements of one dimension of a kernel that fit into the same dimension of a picture, the element `centre` being
/// the origin: those before it wrap around to the far edge. A kernel longer than the picture is trimmed to as many
/// elements as the picture has, the origin again the one at half their number: nothing may be written twice or outside.
struct FittingPart {
    FittingPart(int kernelSize, int pictureSize)
        : centre(kernelSize / 2), begin(std::max(0, centre - pictureSize / 2)),
          end(std::min(kernelSize, centre - pictureSize / 2 + pictureSize)) {}

    int centre;
    int begin;
    int end;
};

void ExpandRow(const float* from, ChComplex* to, int count) {
    if (count > 0) {
        KernelTable.ExpandF32ToComplex(from, to, static_cast<std::uint32_t>(count));
    }
}

/// The kernel, padded with zeros to the size of the picture and shifted so that its centre lies on element (0, 0): as
/// ChMatrix::ZeroPad and ChMatrix::CircShift would leave it, without matrices of the picture's size on the way.
void PlaceKernel(const ChMatrix<float>& psf, ChComplex* spectrum, int width, int height) {
    const std::uint32_t count = kernels::ElementCount(width, height);
    std::fill_n(spectrum, count, ChComplex{0.0f, 0.0f});
    if (count == 0 || psf.Count() == 0) {
        return;
    }
    const FittingPart rows(psf.m_Rows, height);
    const FittingPart cols(psf.m_Cols, width);
    for (int i = rows.begin; i < rows.end; ++i) {
        const int y = i < rows.centre ? i - rows.centre + height : i - rows.centre;
        ChComplex* const row = spectrum + static_cast<std::ptrdiff_t>(y) * width;
        ExpandRow(psf.Row(i) + cols.centre, row, cols.end - cols.centre);
        ExpandRow(psf.Row(i) + cols.begin, row + (width - (cols.centre - cols.begin)), cols.centre - cols.begin);
    }
}

} // namespace

void ChPSF2OTF(DFT_Buffer& otf, ChMatrix<float> psf, int width, int height) {
    PlaceKernel(psf, otf.m_Spectrum, width, height);
    if (width <= 0 || height <= 0) {
        return;
    }
    // The rows without a part of the kernel are zeros, and so are their transforms.
    const FittingPart rows(psf.m_Rows, height);
    const int below = psf.Count() == 0 ? 0 : rows.end - rows.centre;
    const int above = psf.Count() == 0 ? 0 : rows.centre - rows.begin;
    kernels::RowColumnTransform transform(width, height);
    transform.ForwardRows(otf.m_Spectrum, below);
    transform.ForwardRows(otf.m_Spectrum + static_cast<std::ptrdiff_t>(height - above) * width, above);
    transform.ForwardColumns(otf.m_Spectrum);
}

void ChInverseOTF(DFT_Buffer& otf, int width, int height, float noise) {
    kernels::ActiveSpectrumPasses().Invert(otf.m_Spectrum, kernels::ElementCount(width, height), noise);
}
