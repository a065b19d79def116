// The picture formats that are written, and what each of them cannot keep.
#pragma once

#include <vips/vips8>

#include <string>
#include <vector>

namespace cli {

struct PictureFormat;

class PictureWriter {
public:
    /// The writer for the ending of `path`, or for one that is named without any path, such as "jpg". Throws
    /// `PictureError` where there is none.
    explicit PictureWriter(const std::string& path);

    /// The writer for the format `image` was read from, for a device, whose name has no ending.
    explicit PictureWriter(const vips::VImage& image);

    /// libvips' name of it, such as "jpegsave".
    std::string Name() const;

    /// Whether both write the same format, such as jpg and jpeg.
    bool SameFormat(const PictureWriter& other) const { return m_Format == other.m_Format; }

    /// What of `image` the format cannot keep, a sentence each.
    std::vector<std::string> Losses(const vips::VImage& image) const;

    /// Writes `image` to an open file, device or pipe, which stays open; `quality`, 1 to 100, counts for lossy formats
    /// only. What fails throws `vips::VError`.
    void Write(const vips::VImage& image, int descriptor, int quality) const;

    /// The endings of what can be written, "jpg, png or tif", for messages.
    static std::string FormatNames();

private:
    std::string m_Ending; ///< in small letters, without its dot
    const PictureFormat* m_Format;
};

} // namespace cli
