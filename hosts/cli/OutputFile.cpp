#include "OutputFile.h"

#include "Errors.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>

namespace cli {
namespace {

namespace fs = std::filesystem;

fs::path TemporaryName(const fs::path& path) {
    static std::atomic<unsigned> counter = 0;
    return path.parent_path() / (".claribox-" + std::to_string(getpid()) + "-" + std::to_string(counter++));
}

[[noreturn]] void Fail(const std::string& what) {
    throw PictureError(what + ": " + std::strerror(errno));
}

} // namespace

bool IsDevice(const fs::path& path) {
    std::error_code none;
    const fs::file_status status = fs::status(path, none);
    return fs::exists(status) && !fs::is_regular_file(status) && !fs::is_directory(status);
}

OutputFile::OutputFile(const fs::path& path, bool replaceExisting)
    : m_Path(path), m_WritePath(path), m_ReplaceExisting(replaceExisting), m_Temporary(!IsDevice(path)) {
    if (!m_Temporary) {
        m_Descriptor = open(path.c_str(), O_WRONLY | O_CLOEXEC);
        if (m_Descriptor < 0) {
            Fail("cannot write to '" + path.string() + "'");
        }
        return;
    }
    std::error_code none;
    if (const fs::path target = fs::canonical(path, none); !target.empty()) {
        m_Path = target;
    }
    m_WritePath = TemporaryName(m_Path);
    m_Descriptor = open(m_WritePath.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (m_Descriptor < 0) {
        Fail("cannot create a file in '" + m_Path.parent_path().string() + "'");
    }
}

OutputFile::~OutputFile() {
    close(m_Descriptor);
    if (m_Temporary) {
        unlink(m_WritePath.c_str());
    }
}

void OutputFile::Commit() {
    if (!m_Temporary) {
        return;
    }
    struct stat replaced = {};
    if (m_ReplaceExisting && stat(m_Path.c_str(), &replaced) == 0) {
        // A picture whose mode cannot be kept, on a file system without modes, is still a picture.
        [[maybe_unused]] const int ignored = fchmod(m_Descriptor, replaced.st_mode & 07777);
    }
    // Some file systems tell of a full disk only here.
    if (fsync(m_Descriptor) != 0) {
        Fail("cannot be written");
    }
    // Without --force, a file that came into being meanwhile stays too.
    int renamed =
        renameat2(AT_FDCWD, m_WritePath.c_str(), AT_FDCWD, m_Path.c_str(), m_ReplaceExisting ? 0 : RENAME_NOREPLACE);
    if (renamed != 0 && (errno == EINVAL || errno == ENOSYS)) {
        renamed = rename(m_WritePath.c_str(), m_Path.c_str()); // a file system without that choice
    }
    if (renamed != 0) {
        Fail("cannot be given its name");
    }
    m_Temporary = false;
}

} // namespace cli
