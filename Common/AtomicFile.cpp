#include "Common/AtomicFile.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <system_error>
#include <utility>

namespace Veltrani {

namespace {

[[noreturn]] void fail(const std::string& path, const std::string& reason) {
    throw VeltraniException(L"Unable to write " + fromUtf8OrBytes(path) + L": " + fromUtf8OrBytes(reason));
}

std::string systemReason() {
    return std::generic_category().message(errno);
}

std::string folderOf(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

/// The path that the last component leads to when it is a symbolic link, whether a file is there yet or not; links
/// further up are left to the system.
std::string withoutLinks(const std::string& requested) {
    constexpr int MOST_LINKS = 40;  // as many as the system itself follows
    std::string path = requested;
    for (int i = 0; i < MOST_LINKS; ++i) {
        std::array<char, PATH_MAX> target{};
        const ssize_t size = ::readlink(path.c_str(), target.data(), target.size());
        if (size < 0) {
            return path;
        }
        const std::string link(target.data(), static_cast<std::size_t>(size));
        path = link.starts_with('/') ? link : folderOf(path) + link;
    }
    errno = ELOOP;
    fail(requested, systemReason());
}

/// What is at the path now; nothing when there is no file yet.
std::optional<struct stat> existingFile(const std::string& requested, const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        if (errno == ENOENT) {
            return std::nullopt;
        }
        fail(requested, systemReason());
    }
    if (!S_ISREG(status.st_mode)) {
        fail(requested, "it exists and is not a regular file");
    }
    if (::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0) {
        fail(requested, systemReason());
    }
    return status;
}

/// Gives the new file what the old one had, or what the process gives its other files. The owner is a courtesy that
/// only a privileged process can render, the mode a promise; the owner comes first, as a change of owner may clear bits
/// of the mode.
bool takeOver(int descriptor, const std::optional<struct stat>& old) {
    if (old) {
        const bool owned = ::fchown(descriptor, old->st_uid, old->st_gid) == 0 || errno == EPERM;
        return owned && ::fchmod(descriptor, old->st_mode & ALLPERMS) == 0;
    }
    constexpr mode_t NEW_FILE_MODE = 0666;
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return ::fchmod(descriptor, NEW_FILE_MODE & ~mask) == 0;
}

}  // namespace

AtomicFile::AtomicFile(const std::string& utf8Path) {
    if (utf8Path.empty() || utf8Path.find('\0') != std::string::npos) {
        fail(utf8Path, "the file name is empty or contains a zero character");
    }
    m_target = withoutLinks(utf8Path);
    const std::optional<struct stat> old = existingFile(utf8Path, m_target);
    // A short name of its own: the target's name may be as long as a name can be.
    m_temporary = folderOf(m_target) + ".save-XXXXXX";
    m_descriptor = ::mkostemp(m_temporary.data(), O_CLOEXEC);
    if (m_descriptor < 0) {
        fail(utf8Path, systemReason());
    }
    if (!takeOver(m_descriptor, old)) {
        const std::string reason = systemReason();
        discard();
        fail(utf8Path, reason);
    }
}

AtomicFile::~AtomicFile() {
    discard();
}

void AtomicFile::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(m_descriptor, bytes.data(), bytes.size());
        if (count >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            fail(m_target, systemReason());
        }
    }
}

void AtomicFile::commit() {
    if (::fsync(m_descriptor) != 0) {
        fail(m_target, systemReason());
    }
    // Some file systems report a failed write only here.
    if (::close(std::exchange(m_descriptor, -1)) != 0 || std::rename(m_temporary.c_str(), m_target.c_str()) != 0) {
        const std::string reason = systemReason();
        ::unlink(m_temporary.c_str());
        fail(m_target, reason);
    }
    // The rename itself reaches the disk with the folder. Not all file systems can do that, and the content is safe.
    const int folder = ::open(folderOf(m_target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder >= 0) {
        ::fsync(folder);
        ::close(folder);
    }
}

void AtomicFile::discard() {
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
        ::unlink(m_temporary.c_str());
        m_descriptor = -1;
    }
}

}  // namespace Veltrani
