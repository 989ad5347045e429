#include "Common/AtomicFile.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <system_error>

namespace Veltrani {

namespace {

[[noreturn]] void fail(const std::string& path, const std::string& reason) {
    throw VeltraniException(L"Unable to write " + fromUtf8OrBytes(path) + L": " + fromUtf8OrBytes(reason));
}

std::string systemReason() {
    return std::generic_category().message(errno);
}

/// The name without symbolic links, so that the file behind a link is replaced and not the link; the name itself where
/// there is no such file yet.
std::string resolved(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr), &std::free);
    return real ? std::string(real.get()) : path;
}

std::string folderOf(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

}  // namespace

AtomicFile::AtomicFile(const std::string& utf8Path) : m_target(resolved(utf8Path)) {
    if (utf8Path.empty() || utf8Path.find('\0') != std::string::npos) {
        fail(utf8Path, "the file name is empty or contains a zero character");
    }
    constexpr mode_t NEW_FILE_MODE = 0666;
    mode_t mode = 0;
    struct stat status {};
    const bool exists = ::stat(m_target.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode)) {
        fail(utf8Path, "it exists and is not a regular file");
    }
    if (exists && ::access(m_target.c_str(), W_OK) != 0) {
        fail(utf8Path, systemReason());
    }
    // mkostemp makes the file for its owner alone; a new file gets what the process gives its other files.
    if (exists) {
        mode = status.st_mode & ALLPERMS;
    } else {
        const mode_t mask = ::umask(0);
        ::umask(mask);
        mode = NEW_FILE_MODE & ~mask;
    }
    // A short name of its own: the target's name may be as long as a name can be.
    m_temporary = folderOf(m_target) + (m_target.rfind('/') == std::string::npos ? "/" : "") + ".save-XXXXXX";
    m_descriptor = ::mkostemp(m_temporary.data(), O_CLOEXEC);
    if (m_descriptor < 0) {
        fail(utf8Path, systemReason());
    }
    if (::fchmod(m_descriptor, mode) != 0) {
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
    if (std::rename(m_temporary.c_str(), m_target.c_str()) != 0) {
        fail(m_target, systemReason());
    }
    ::close(m_descriptor);
    m_descriptor = -1;
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
