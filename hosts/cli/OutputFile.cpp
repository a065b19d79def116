#include "OutputFile.h"

#include "Descriptors.h"
#include "Errors.h"
#include "OutputNames.h"
#include "Signals.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <regex>
#include <thread>

namespace cli {
namespace {

namespace fs = std::filesystem;

/// The limit of Linux on links followed in one path.
constexpr int kMostLinks = 40;

[[noreturn]] void Fail(const std::string& what) {
    throw PictureError(what + ": " + std::strerror(errno));
}

fs::path TemporaryName(const fs::path& path) {
    static std::atomic<unsigned> counter = 0;
    return FolderOf(path) / (".claribox-" + std::to_string(getpid()) + "-" + std::to_string(counter++));
}

bool IsTemporaryName(const std::string& name) {
    static const std::regex pattern(R"(\.claribox-[0-9]+-[0-9]+(\.[^.]*)?)");
    return std::regex_match(name, pattern);
}

/// The name by which an open file without one can be linked.
std::string ProcessName(int descriptor) {
    return "/proc/self/fd/" + std::to_string(descriptor);
}

int OpenDevice(const fs::path& path) {
    // A blocking open of a pipe without a reader would be restarted after a signal and never end.
    int descriptor = open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    while (descriptor < 0 && errno == ENXIO && fs::is_fifo(path)) {
        StopIfInterrupted();
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        descriptor = open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    }
    if (descriptor >= 0) {
        fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) & ~O_NONBLOCK);
    }
    return descriptor;
}

} // namespace

bool IsDevice(const fs::path& path) {
    std::error_code none;
    const fs::file_status status = fs::status(path, none);
    return fs::exists(status) && !fs::is_regular_file(status) && !fs::is_directory(status);
}

fs::path FolderOf(const fs::path& path) {
    return path.parent_path().empty() ? "." : path.parent_path();
}

fs::path BehindLinks(fs::path path) {
    const fs::path start = path;
    std::error_code error;
    for (int links = 0; fs::is_symlink(fs::symlink_status(path, error)); ++links) {
        const fs::path target = fs::read_symlink(path, error);
        if (error || links == kMostLinks) {
            return start;
        }
        path = FolderOf(path) / target; // an absolute target stands alone
    }
    return path;
}

void RemoveLeftovers(const fs::path& folder) {
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        if (!IsTemporaryName(entry.path().filename().string()) || !entry.is_regular_file(error)) {
            continue;
        }
        const int descriptor = open(entry.path().c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
        if (descriptor >= 0 && flock(descriptor, LOCK_EX | LOCK_NB) == 0) {
            unlink(entry.path().c_str());
        }
        if (descriptor >= 0) {
            close(descriptor);
        }
    }
}

OutputFile::OutputFile(const std::string& path, bool replaceExisting)
    : m_Path(BehindLinks(path)), m_ReplaceExisting(replaceExisting),
      m_IsStream(IsStandardOutput(path) || IsDevice(path)) {
    if (m_IsStream) {
        m_Descriptor = IsStandardOutput(path) ? fcntl(ResultDescriptor(), F_DUPFD_CLOEXEC, 0) : OpenDevice(path);
    } else {
        OpenUnnamed();
    }
    if (m_Descriptor < 0) {
        Fail(m_IsStream ? "cannot write to " + OutputName(path)
                        : "cannot create a file in " + Quoted(FolderOf(m_Path)));
    }
}

/// Without /proc an unnamed file could not be given a name.
void OutputFile::OpenUnnamed() {
    m_Descriptor = open(FolderOf(m_Path).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
    if (m_Descriptor >= 0 && access(ProcessName(m_Descriptor).c_str(), F_OK) != 0) {
        close(m_Descriptor);
        m_Descriptor = -1;
    }
    if (m_Descriptor >= 0) {
        flock(m_Descriptor, LOCK_EX);
    } else {
        OpenNamed();
    }
}

void OutputFile::OpenNamed() {
    struct stat made = {};
    do { // again if another process removed it as a leftover before it was locked
        if (m_Descriptor >= 0) {
            close(m_Descriptor);
        }
        m_Temporary = TemporaryName(m_Path);
        m_Descriptor = open(m_Temporary.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while ((m_Descriptor < 0 && errno == EEXIST) || (m_Descriptor >= 0 && flock(m_Descriptor, LOCK_EX) == 0 &&
                                                       fstat(m_Descriptor, &made) == 0 && made.st_nlink == 0));
    if (m_Descriptor < 0) {
        m_Temporary.clear();
    }
}

OutputFile::~OutputFile() {
    if (!m_Temporary.empty()) {
        unlink(m_Temporary.c_str()); // before others may lock it
    }
    if (m_Descriptor >= 0) {
        close(m_Descriptor);
    }
}

void OutputFile::KeepModeAndOwner() const {
    struct stat replaced = {};
    if (m_ReplaceExisting && stat(m_Path.c_str(), &replaced) == 0) {
        // Failing to keep the owner or mode is no reason to lose the picture. The mode comes last: a change of owner
        // clears some of its bits.
        [[maybe_unused]] int ignored = fchown(m_Descriptor, replaced.st_uid, replaced.st_gid);
        ignored = fchmod(m_Descriptor, replaced.st_mode & 07777);
    }
}

/// Returns false, with errno set, if that fails.
bool OutputFile::GiveNameOf(const fs::path& path) const {
    return linkat(AT_FDCWD, ProcessName(m_Descriptor).c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

void OutputFile::Commit() {
    if (m_IsStream) {
        return;
    }
    KeepModeAndOwner();
    // Some file systems report a full disk only here.
    if (fsync(m_Descriptor) != 0) {
        Fail("cannot be written");
    }
    if (m_Temporary.empty()) {
        if (GiveNameOf(m_Path)) {
            return;
        }
        // A link cannot replace another file, a rename can.
        while (errno == EEXIST && m_ReplaceExisting && m_Temporary.empty()) {
            const fs::path name = TemporaryName(m_Path);
            m_Temporary = GiveNameOf(name) ? name : fs::path();
        }
        if (m_Temporary.empty()) {
            Fail("cannot be given its name");
        }
    }
    // Without --force, a file that has appeared meanwhile is kept too.
    int renamed =
        renameat2(AT_FDCWD, m_Temporary.c_str(), AT_FDCWD, m_Path.c_str(), m_ReplaceExisting ? 0 : RENAME_NOREPLACE);
    if (renamed != 0 && (errno == EINVAL || errno == ENOSYS)) {
        renamed = rename(m_Temporary.c_str(), m_Path.c_str()); // a file system without that flag
    }
    if (renamed != 0) {
        Fail("cannot be given its name");
    }
    m_Temporary.clear();
}

} // namespace cli
