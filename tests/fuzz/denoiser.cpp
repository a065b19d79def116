// CImageDenoiser: all that its header allows. All vector classes give the same bytes, and nothing but the planes is
// touched.
#include "common/ForcedVectorClass.h"
#include "common/GuardedBuffer.h"
#include "fuzz/Input.h"

#include <claribox/CImageDenoiser.h>

#include <array>
#include <climits>
#include <cstdio>

namespace {

enum class Operation { Denoise, Rgb, Band };
constexpr Operation kOperations[] = {Operation::Denoise, Operation::Band, Operation::Rgb};

struct Request {
    Size size;
    Operation operation;
    float threshold;
    int type;
    int band;
    bool measured;

    explicit Request(Input& input) : size(PictureSize(input)), operation(input.Pick(kOperations)) {
        threshold = static_cast<float>(input.Number(-1024, 64512)) / 16.0f;
        type = input.Flag() ? input.Number(INT_MIN, INT_MAX) : input.Number(0, 2);
        band = input.Flag() ? input.Number(INT_MIN, INT_MAX) : input.Number(0, 2);
        measured = input.Flag() && size.width >= 96 && size.height >= 96;
    }
    std::size_t Bytes() const { return static_cast<std::size_t>(size.width * size.height); }

    void Run(CImageDenoiser& denoiser, unsigned char* first, unsigned char* second, unsigned char* third) const {
        denoiser.SetSize(size.width, size.height);
        denoiser.SetThreshold(threshold, -1.0f);
        denoiser.SetThresholdType(type);
        denoiser.SetAutoMeasure(measured);
        if (operation == Operation::Band) {
            return denoiser.ShowFreqBand(first, band);
        }
        const auto member = operation == Operation::Rgb ? &CImageDenoiser::Denoise_RGB : &CImageDenoiser::Denoise_YUV;
        (denoiser.*member)(first, second, third);
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Where sides of 8 pixels and less bring their messages.
    static std::FILE* const silent = std::freopen("/dev/null", "w", stdout);
    EXPECT_NE(silent, nullptr);
    Input input(data, size);
    CImageDenoiser usual;
    CImageDenoiser forced;
    for (int pictures = input.Number(1, 2); pictures > 0; --pictures) {
        const Request request(input);
        const simd::VectorClass vectors = input.Pick(simd::kVectorClasses);
        const int misalignment = input.Number(0, 63);
        using Plane = GuardedBuffer<unsigned char>;
        const auto planes = [&](int shift) {
            const auto past = static_cast<std::size_t>(shift);
            return std::array<Plane, 3>{Plane(request.Bytes(), past), Plane(request.Bytes()), Plane(request.Bytes())};
        };
        auto before = planes(0);
        auto once = planes(0);
        auto again = planes(misalignment);
        for (auto* each : {&before, &once, &again}) {
            for (std::size_t k = 0; k < 3; ++k) {
                Input rest = input;
                for (std::size_t skipped = 0; skipped < 7 * k; ++skipped) {
                    rest.Byte();
                }
                rest.Fill({(*each)[k].bytes(), request.Bytes()});
            }
        }
        request.Run(usual, once[0].data(), once[1].data(), once[2].data());
        {
            const ForcedVectorClass other(vectors);
            request.Run(forced, again[0].data(), again[1].data(), again[2].data());
        }
        for (std::size_t k = 0; k < 3; ++k) {
            EXPECT_TRUE(SameBytes(once[k], again[k]));
            EXPECT_TRUE(once[k].GuardsIntact() && again[k].GuardsIntact());
            const bool mayChange =
                request.operation == Operation::Denoise || (request.operation == Operation::Band && k == 0);
            EXPECT_TRUE(mayChange || SameBytes(before[k], once[k]));
        }
    }
    return 0;
}
