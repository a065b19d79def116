// One picture: read through libvips, upright and of 8 bits a sample, and worked on in place.
#pragma once

#include "MemoryEstimate.h"
#include "PackedPixels.h"
#include "PictureReader.h"
#include "PictureShape.h"
#include "TryVips.h"

#include <vips/vips8>

#include <functional>
#include <string>
#include <vector>

namespace cli {

/// Not for use from two threads at once. What fails throws `PictureError`.
class Picture {
public:
    /// Reads the header only. Refuses pictures of one pixel, those whose bytes cannot be counted in 32 bits, and what
    /// is neither greyscale nor colour.
    explicit Picture(const std::string& input);

    PictureShape Shape() const;
    StoredPicture Stored() const;

    /// Reduces the picture to its BT.601 luminance, greyscale without alpha. To be called before `Decode`.
    void ReduceToLuminance();

    /// What is lost between the stored picture and the upright one of 8 bits, a sentence each; empty for most pictures.
    const std::vector<std::string>& Losses() const { return m_Losses; }

    /// Reads the pixels. A truncated file is an error, and so is damage that does not leave a whole picture.
    void Decode();

    /// Damage to the file that still leaves a whole picture, known after `Decode`; empty for most.
    const std::string& Damage() const { return m_Damage; }

    /// Has `operation` work on the decoded pixels, packed as the library takes them.
    void Apply(const std::function<void(const PackedPixels&)>& operation);

    /// The picture of 1 to 4 bands (grey, grey and alpha, colour, colour and alpha) with all its metadata. Its pixels
    /// may be read once before `Decode` and freely after.
    const vips::VImage& Image() const { return m_Image; }

private:
    template <typename Step>
    void Read(const std::string& fault, Step step);
    void Open();
    void RefuseUnfitSizes() const;
    void ReduceToEightBits();
    void ConvertToRgbOrGrey();

    PictureReader m_Reader; // outlives the image that reads from it
    // Keeps the metadata it was read with; a new image built around the pixels would lose most fields.
    vips::VImage m_Image;
    std::vector<std::string> m_Losses;
    std::string m_Damage;
    bool m_LuminanceAlone = false;
    int m_StoredBytesPerPixel = 0;
    bool m_Turned = false;
};

} // namespace cli
