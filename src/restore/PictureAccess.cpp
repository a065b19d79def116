#include "restore/PictureAccess.h"

#include "restore/SlidingDct.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace restore {
namespace {

using claribox::PictureView;
using claribox::SampleType;

void Require(bool holds, const std::string& sentence) {
    if (!holds) {
        throw std::invalid_argument(sentence);
    }
}

unsigned char* RowOf(const PictureView& picture, int y) {
    return static_cast<unsigned char*>(picture.pixels) + y * picture.rowBytes;
}

/// Calls work(address of a sample, index of its pixel) for one colour, 0 red or grey, of a stretch of a row.
template <typename Work>
void ForEachSample(const PictureView& picture, int y, int left, int count, int colour, Work work) {
    const int place = picture.order == claribox::ColourOrder::BGR && picture.channels > 1 ? 2 - colour : colour;
    const int bytes = SampleBytes(picture.type);
    unsigned char* at = RowOf(picture, y) + (static_cast<std::ptrdiff_t>(left) * picture.channels + place) * bytes;
    for (int k = 0; k < count; ++k, at += picture.channels * bytes) {
        work(at, k);
    }
}

template <typename Sample>
void ReadAs(const PictureView& picture, int y, int left, int count, float* const (&samples)[3]) {
    for (int colour = 0; colour < Colours(picture); ++colour) {
        float* const to = samples[colour];
        ForEachSample(picture, y, left, count, colour, [to](const unsigned char* at, int k) {
            Sample sample;
            std::memcpy(&sample, at, sizeof sample);
            to[k] = static_cast<float>(sample);
        });
    }
}

template <typename Sample>
Sample FromFloat(float level) {
    if constexpr (std::is_integral_v<Sample>) {
        constexpr auto kWhite = static_cast<float>(std::numeric_limits<Sample>::max());
        return static_cast<Sample>(std::lrint(std::clamp(level, 0.0f, kWhite)));
    } else {
        return level;
    }
}

template <typename Sample>
void WriteAs(const PictureView& picture, int y, int left, int count, const float* const (&samples)[3]) {
    for (int colour = 0; colour < Colours(picture); ++colour) {
        const float* const from = samples[colour];
        ForEachSample(picture, y, left, count, colour, [from](unsigned char* at, int k) {
            const Sample sample = FromFloat<Sample>(from[k]);
            std::memcpy(at, &sample, sizeof sample);
        });
    }
}

} // namespace

int SampleBytes(SampleType type) {
    return type == SampleType::UInt8 ? 1 : type == SampleType::UInt16 ? 2 : 4;
}

double WhiteLevel(SampleType type) {
    return type == SampleType::UInt8 ? 255.0 : type == SampleType::UInt16 ? 65535.0 : 1.0;
}

double LeastVariance(SampleType type) {
    return type == SampleType::Float32 ? 1e-12 : 1.0 / 12.0;
}

void Check(const PictureView& picture) {
    Require(picture.pixels != nullptr, "the picture has no pixels; give the address of the first");
    Require(picture.channels == 1 || picture.channels == 3 || picture.channels == 4,
            "a picture has 1, 3 or 4 channels, not " + std::to_string(picture.channels));
    Require(picture.type == SampleType::UInt8 || picture.type == SampleType::UInt16 ||
                picture.type == SampleType::Float32,
            "a sample is UInt8, UInt16 or Float32");
    Require(picture.width >= kBlockSide && picture.height >= kBlockSide,
            "a picture of " + std::to_string(picture.width) + " by " + std::to_string(picture.height) +
                " pixels is too small; give one of 16 by 16 or more");
    const int bytes = SampleBytes(picture.type);
    const std::ptrdiff_t least = static_cast<std::ptrdiff_t>(picture.width) * picture.channels * bytes;
    Require(std::abs(picture.rowBytes) >= least && picture.rowBytes % bytes == 0,
            "a row takes " + std::to_string(least) + " bytes or more, in whole samples, not " +
                std::to_string(picture.rowBytes));
}

void ReadRow(const PictureView& picture, int y, int left, int count, float* const (&samples)[3]) {
    switch (picture.type) {
    case SampleType::UInt8:
        return ReadAs<std::uint8_t>(picture, y, left, count, samples);
    case SampleType::UInt16:
        return ReadAs<std::uint16_t>(picture, y, left, count, samples);
    case SampleType::Float32:
        return ReadAs<float>(picture, y, left, count, samples);
    }
}

void WriteRow(const PictureView& picture, int y, int left, int count, const float* const (&samples)[3]) {
    switch (picture.type) {
    case SampleType::UInt8:
        return WriteAs<std::uint8_t>(picture, y, left, count, samples);
    case SampleType::UInt16:
        return WriteAs<std::uint16_t>(picture, y, left, count, samples);
    case SampleType::Float32:
        return WriteAs<float>(picture, y, left, count, samples);
    }
}

PictureCopy::PictureCopy(const PictureView& picture) : m_View(picture) {
    m_View.rowBytes = static_cast<std::ptrdiff_t>(picture.width) * picture.channels * SampleBytes(picture.type);
    m_Bytes.resize(RowBytes() * static_cast<std::size_t>(picture.height));
    m_View.pixels = m_Bytes.data();
    for (int y = 0; y < picture.height; ++y) {
        std::memcpy(RowOf(m_View, y), RowOf(picture, y), RowBytes());
    }
}

void PictureCopy::CopyTo(const PictureView& picture) const {
    for (int y = 0; y < picture.height; ++y) {
        std::memcpy(RowOf(picture, y), RowOf(m_View, y), RowBytes());
    }
}

} // namespace restore
