// A file that appears under its name complete or not at all.
#pragma once

#include <filesystem>
#include <string>

namespace cli {

/// Opens a file without a name in the folder of `path`, to be filled and then committed: whatever ends the process
/// before, nothing is left of it. Where the file system has no such files it has a temporary name instead.
///
/// Standard output, a device or a pipe is written to directly: nothing may be renamed over it, and it keeps nothing. A
/// pipe is waited for until somebody reads from it.
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

    /// Brings the bytes to the disk and gives the file its name, and the permissions and, where that is allowed, the
    /// owner of the one it replaces.
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

/// The path at the end of the links at `path`, whether a file is there or not; `path` itself where they lead round in a
/// circle.
std::filesystem::path BehindLinks(std::filesystem::path path);

/// Removes the temporary files that processes which are no more left in `folder`; those of living ones are locked.
void RemoveLeftovers(const std::filesystem::path& folder);

} // namespace cli
