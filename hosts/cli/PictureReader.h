// Opens pictures of the formats that are read, from files and from standard input.
#pragma once

#include <vips/vips8>

#include <cstdint>
#include <string>
#include <string_view>

namespace cli {

/// Stands for standard input in place of a name; a file that is called so is reached as "./-".
bool IsStandardInput(const std::string& input);

/// What messages call an input.
std::string InputName(const std::string& input);

/// Blocks libvips' readers of all other formats: many of them are easily deceived about what a file holds, and some
/// take very long to recognise it. To be called once after `vips_init`.
void AllowReadersOfPicturesOnly();

/// What fails throws `PictureError`.
class PictureReader {
public:
    /// Recognises the format of a file, or of standard input, which is read to its end.
    explicit PictureReader(const std::string& input);

    /// The picture, not yet decoded, as a stream that may be read once. Throws `vips::VError`, here or while it is
    /// decoded, if the file ends early or part of it makes no sense and, unless `tolerant`, if its decoder has to
    /// guess.
    vips::VImage Open(bool tolerant) const;

    /// Whether `tolerant` makes a difference to `Open`.
    bool CanBeTolerant() const;

    /// Bytes of the undecoded picture held in memory.
    std::int64_t HeldBytes() const { return static_cast<std::int64_t>(m_Bytes.size()); }

private:
    void Recognise(std::string_view head);
    void ReadAll();
    void AddComments(vips::VImage& image) const;
    vips::VSource Source() const;

    std::string m_Path;
    std::string m_Bytes;  ///< of standard input, which can be read but once
    std::string m_Reader; ///< libvips' name of it, such as "jpegload_source"
};

} // namespace cli
