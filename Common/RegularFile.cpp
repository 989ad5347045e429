#include "Common/RegularFile.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <system_error>

namespace Veltrani {

namespace {

[[noreturn]] void fail(const std::string& path, const std::string& reason) {
    const std::wstring subject = path.empty() ? L"" : fromUtf8OrBytes(path) + L": ";
    throw VeltraniMissingFileException(subject + fromUtf8OrBytes(reason));
}

std::string systemReason() {
    return std::generic_category().message(errno);
}

const char* kindOf(mode_t mode) {
    switch (mode & S_IFMT) {
        case S_IFDIR:
            return "is a directory, not a file";
        case S_IFIFO:
            return "is a pipe, not a file";
        case S_IFSOCK:
            return "is a socket, not a file";
        default:
            return "is a device, not a file";
    }
}

}  // namespace

RegularFile::RegularFile(const std::string& utf8Path) : m_path(utf8Path) {
    if (utf8Path.empty()) {
        fail(utf8Path, "the file name is empty");
    }
    if (utf8Path.find('\0') != std::string::npos) {
        fail(utf8Path.substr(0, utf8Path.find('\0')), "the file name contains a zero character");
    }
    struct stat status {};
    // Examined first: opening some devices has an effect of its own.
    if (::stat(utf8Path.c_str(), &status) != 0) {
        fail(utf8Path, systemReason());
    }
    if (!S_ISREG(status.st_mode)) {
        fail(utf8Path, kindOf(status.st_mode));
    }
    m_descriptor = ::open(utf8Path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (m_descriptor < 0) {
        fail(utf8Path, systemReason());
    }
    // Examined again on what was opened: the name may lead elsewhere by now.
    if (::fstat(m_descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(m_descriptor);
        fail(utf8Path, kindOf(status.st_mode));
    }
    m_size = static_cast<std::size_t>(status.st_size);
}

RegularFile::~RegularFile() {
    ::close(m_descriptor);
}

std::string RegularFile::readAll(std::size_t limit) const {
    std::string content;
    const std::size_t expected = std::min(m_size, limit);
    if (expected > content.max_size() - 1) {
        throw std::bad_alloc();
    }
    // One byte more than announced: the read that finds the end of an unchanged file needs no larger buffer.
    content.resize(expected + 1);
    std::size_t filled = 0;
    while (const std::size_t count = readAt(filled, content.data() + filled, content.size() - filled)) {
        filled += count;
        if (filled > limit) {
            break;
        }
        if (filled == content.size()) {
            content.resize(std::min(content.size() + content.size() / 2 + 1, limit + 1));
        }
    }
    content.resize(filled);
    return content;
}

std::size_t RegularFile::readAt(std::size_t offset, char* buffer, std::size_t count) const {
    std::size_t filled = 0;
    while (filled < count) {
        const ssize_t read =
            ::pread(m_descriptor, buffer + filled, count - filled, static_cast<off_t>(offset + filled));
        if (read == 0) {
            break;
        }
        if (read > 0) {
            filled += static_cast<std::size_t>(read);
        } else if (errno != EINTR) {
            fail(m_path, systemReason());
        }
    }
    return filled;
}

std::string RegularFile::nameForReopening() const {
    std::string name = "/proc/self/fd/" + std::to_string(m_descriptor);
    return ::access(name.c_str(), R_OK) == 0 ? name : m_path;
}

}  // namespace Veltrani
