// Pictures for the command to work on, and the library's own answer to what it should make of them.
#pragma once

#include <claribox/CImageFocus.h>

#include <vips/vips8>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

/// A picture of these samples, row after row: 1 or 2 bands of greyscale, 3 or 4 of colour.
vips::VImage FromSamples(const std::vector<unsigned char>& samples, int width, int height, int bands);

/// Random samples, the same for the same seed.
vips::VImage RandomPicture(int width, int height, int bands, unsigned seed);

/// One colour everywhere, in a format and colour space of libvips. Blurring leaves it as it is.
vips::VImage PlainPicture(const std::vector<double>& colour, VipsBandFormat format, VipsInterpretation space);

/// A copy of `picture` with EXIF, XMP, an ICC profile and a resolution of 300 dpi.
vips::VImage WithMetadata(const vips::VImage& picture, int orientation);

/// What an operation of the library makes of `picture`, of 8 bits: each colour channel and grey by itself, alpha as is.
vips::VImage Expected(const vips::VImage& picture,
                      const std::function<void(CImageFocus&, unsigned char*, FoPixelFmt, int)>& operation);

/// All samples of a picture, row after row.
std::vector<unsigned char> Samples(const vips::VImage& picture);

/// The bytes of a field such as "icc-profile-data"; empty where there is none.
std::string Blob(const vips::VImage& picture, const char* field);

vips::VImage Load(const std::filesystem::path& path);
void Save(const vips::VImage& picture, const std::filesystem::path& path);

/// A JPEG file with a mark amid its pixels, behind which its decoder makes do without them.
std::string Damaged(std::string jpeg);

/// Saves `picture` in a folder of its own, runs the verb and options of `line` on it, expects that to succeed without a
/// word, and returns the output. Both files have this ending.
vips::VImage Made(const vips::VImage& picture, const std::string& line, const std::string& ending = ".png");
