// CImageFocus: all that its header allows. One processor and several, and all vector classes, give the same bytes, and
// nothing but the pixels' colours is touched.
#include "common/ForcedVectorClass.h"
#include "common/GuardedBuffer.h"
#include "focus/ForcedCensus.h"
#include "fuzz/Input.h"

#include <claribox/CImageFocus.h>

#include <algorithm>
#include <climits>
#include <cstdlib>

namespace {

enum class Operation { Blur, MotionBlur, DeBlur, DeMotionBlur, Guess };
constexpr Operation kOperations[] = {Operation::Blur, Operation::MotionBlur, Operation::DeBlur, Operation::DeMotionBlur,
                                     Operation::Guess};

struct Request {
    Size size;
    Operation operation;
    int format;
    int pitch;
    int radius;
    int length;
    int degree;

    explicit Request(Input& input) : size(PictureSize(input)), operation(input.Pick(kOperations)) {
        if (operation == Operation::Guess && input.Number(0, 3) == 3) {
            size = {input.Number(505, 540), input.Number(505, 540)}; // it looks for a square of 512
        }
        format = input.Number(0, 7) == 7 ? input.Number(2, INT_MAX) : input.Number(0, 1);
        pitch = size.width * PixelBytes() + (input.Flag() ? input.Number(0, 40) : 0);
        pitch *= input.Flag() ? -1 : 1;
        radius = operation == Operation::Blur ? input.Number(1, 30) : input.Number(-300, 300);
        const int side = std::min(size.width, size.height);
        length =
            input.Number(1, operation == Operation::MotionBlur ? std::min(side, 200) : std::min(side / 2 + 49, 60));
        degree = input.Flag() ? input.Number(-360, INT_MAX) : input.Number(-360, 400);
    }
    int PixelBytes() const { return format == FoPixelFmt_BGR24 ? 3 : 4; }
    std::size_t Bytes() const {
        return static_cast<std::size_t>((size.height - 1) * std::abs(pitch) + size.width * PixelBytes());
    }
    std::size_t TopRow() const { return pitch < 0 ? static_cast<std::size_t>((size.height - 1) * -pitch) : 0; }
    bool MayChange(std::size_t at) const {
        const auto column = static_cast<int>(at % static_cast<std::size_t>(std::abs(pitch)));
        return operation != Operation::Guess && (format == FoPixelFmt_BGR24 || format == FoPixelFmt_BGRX32) &&
               column < size.width * PixelBytes() && column % PixelBytes() < 3;
    }

    /// Returns the guess.
    int Run(CImageFocus& focus, unsigned char* pixels) const {
        focus.SetSize(size.width, size.height);
        focus.SetRadius(radius);
        focus.SetMotionLength(length);
        focus.SetMotionDegree(degree);
        const auto layout = static_cast<FoPixelFmt>(format);
        if (operation == Operation::Guess) {
            return focus.GuessMotionDegree(pixels, layout, pitch);
        }
        constexpr void (CImageFocus::*members[])(unsigned char*, FoPixelFmt, int) = {
            &CImageFocus::Blur, &CImageFocus::MotionBlur, &CImageFocus::DeBlur, &CImageFocus::DeMotionBlur};
        (focus.*members[static_cast<int>(operation)])(pixels, layout, pitch);
        return 0;
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    // One object lives through pictures of several sizes.
    CImageFocus serial;
    CImageFocus threaded;
    for (int pictures = input.Number(1, 2); pictures > 0; --pictures) {
        const Request request(input);
        const simd::VectorClass vectors = input.Pick(simd::kVectorClasses);
        GuardedBuffer<unsigned char> before(request.Bytes());
        GuardedBuffer<unsigned char> once(request.Bytes());
        GuardedBuffer<unsigned char> again(request.Bytes());
        for (GuardedBuffer<unsigned char>* each : {&before, &once, &again}) {
            input.Fill({each->bytes(), each->size_bytes()});
        }
        int guess = 0;
        {
            const ForcedCensus one(1, 1, 1);
            guess = request.Run(serial, once.data() + request.TopRow());
        }
        {
            const ForcedVectorClass other(vectors);
            const ForcedCensus several(2, 2, 2);
            EXPECT_EQ(request.Run(threaded, again.data() + request.TopRow()), guess);
        }
        EXPECT_TRUE(SameBytes(once, again));
        EXPECT_TRUE(once.GuardsIntact() && again.GuardsIntact());
        EXPECT_TRUE(guess >= 0 && guess < 360) << guess;
        for (std::size_t at = 0; at < request.Bytes(); ++at) {
            if (!request.MayChange(at)) {
                EXPECT_EQ(once.bytes()[at], before.bytes()[at]) << at;
            }
        }
    }
    return 0;
}
