// A file that appears under its name complete or not at all.
#pragma once

#include <filesystem>
#include <string>

namespace cli {

/// Opens an unnamed file in the folder of `path`, to be filled and then committed: if the process ends before, nothing
/// is left behind. On file systems without unnamed files it has a temporary name instead.
///
/// Standard output, a device or a pipe is written to directly: nothing may be renamed over it, and it keeps nothing.
/// Opening a pipe waits for a reader.
///
/// What fails throws `PictureError`.
class OutputFile {
public:
    /// A link at `path` is followed: the file behind it is the one replaced. "-" is standard output.
    OutputFile(const std::string& path, bool replaceExisting);

    /// Removes the temporary file unless it was committed.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Open for reading and writing, but for a stream or device, which is open for writing only.
    int Descriptor() const { return m_Descriptor; }

    /// Flushes the bytes to disk and gives the file its name, and the permissions and, where that is allowed, the owner
    /// of the one it replaces.
    void Commit();

private:
    void OpenUnnamed();
    void OpenNamed();
    void KeepModeAndOwner() const;
    bool GiveNameOf(const std::filesystem::path& path) const;

    std::filesystem::path m_Path;      ///< behind all links
    std::filesystem::path m_Temporary; ///< its name until it is committed; empty where it has none
    bool m_ReplaceExisting;
    bool m_IsStream;
    int m_Descriptor = -1;
};

/// Whether `path` exists and is neither file nor folder, such as /dev/null or a pipe.
bool IsDevice(const std::filesystem::path& path);

/// The folder that `path` lies in, "." where it names none.
std::filesystem::path FolderOf(const std::filesystem::path& path);

/// The path at the end of the links at `path`, whether a file is there or not; `path` itself if they form a loop.
std::filesystem::path BehindLinks(std::filesystem::path path);

/// Removes the temporary files that dead processes left in `folder`; those of running ones are locked.
void RemoveLeftovers(const std::filesystem::path& folder);

} // namespace cli
