// A file that appears under its name complete or not at all.
#pragma once

#include <filesystem>
#include <string>

namespace cli {

/// Creates an empty file beside `path` under a temporary name, to be filled and then committed. A device or
/// pipe at `path` is written to directly instead: nothing may be renamed over it, and it keeps nothing.
///
/// What fails throws `PictureError`.
class OutputFile {
public:
    /// A link at `path` is followed: the file behind it is the one replaced.
    OutputFile(const std::filesystem::path& path, bool replaceExisting);

    /// Removes the temporary file unless it was committed.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Open for reading and writing, but for a device, which is open for writing only.
    int Descriptor() const { return m_Descriptor; }

    /// Brings the bytes to the disk and gives the file its name, and the permissions of the one it replaces.
    void Commit();

private:
    std::filesystem::path m_Path;
    std::string m_WritePath;
    bool m_ReplaceExisting;
    bool m_Temporary;
    int m_Descriptor;
};

/// Whether `path` exists and is neither file nor folder, such as /dev/null or a pipe.
bool IsDevice(const std::filesystem::path& path);

} // namespace cli
