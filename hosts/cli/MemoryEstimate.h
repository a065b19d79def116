// How much memory one picture will take, estimated before it is decoded.
#pragma once

#include "PictureShape.h"

#include <cstdint>
#include <string>

namespace cli {

/// What decoding a picture costs depends on, beside its shape.
struct StoredPicture {
    std::string reader;     ///< libvips' name of it, such as "jpegload_source"
    int bytesPerPixel;      ///< as decoded, before the reduction to 8 bits a sample
    bool turned;            ///< an orientation has to be applied, which takes a second copy
    std::int64_t heldBytes; ///< of the undecoded picture, where it is kept in memory
};

/// Upper estimates in bytes. The steps follow one another, so that only the costliest counts.
struct MemoryEstimate {
    std::int64_t throughout; ///< the picture itself, the undecoded one, and the process with its threads' stacks
    std::int64_t decoding;
    std::int64_t turning;
    std::int64_t working;
    std::int64_t writing;

    std::int64_t Peak() const;
};

/// `workingBytes` are those an operation takes beside the picture, `writer` is libvips' name, such as "jpegsave".
MemoryEstimate EstimateMemory(const PictureShape& shape, const StoredPicture& stored, std::int64_t workingBytes,
                              const std::string& writer);

} // namespace cli
