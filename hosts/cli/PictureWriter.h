// The libvips writer of a file format, and what it cannot keep.
#pragma once

#include <vips/vips8>

#include <string>
#include <vector>

namespace cli {

class PictureWriter {
public:
    /// The writer for the ending of `path`. Throws `PictureError` where there is none.
    explicit PictureWriter(const std::string& path);

    /// The writer for the format `image` was read from, for a device, whose name has no ending.
    explicit PictureWriter(const vips::VImage& image);

    /// libvips' name of it, such as "jpegsave".
    std::string Name() const;

    /// What of `image` the format cannot keep, a sentence each.
    std::vector<std::string> Losses(const vips::VImage& image) const;

    /// Writes `image` to the file `path`, whatever its ending; `quality`, 1 to 100, counts for lossy formats only.
    void Write(const vips::VImage& image, const std::string& path, int quality) const;

private:
    VipsForeignSaveClass* Class() const;

    std::string m_Operation; ///< such as "VipsForeignSaveJpegFile" or "jpegsave"
};

} // namespace cli
