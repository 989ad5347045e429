#include "Configuration/Internal/FileAccess.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <optional>
#include <system_error>
#include <utility>

namespace Veltrani {

namespace {

constexpr int MOST_LINKS = 40;         // as many as the system itself follows
constexpr int MOST_NAMES_TRIED = 100;  // leftovers of earlier crashes that bear the same process number
constexpr std::size_t BLOCK_BYTES = std::size_t{64} * 1024;

class Descriptor {
public:
    explicit Descriptor(int number) : m_number(number) {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    [[nodiscard]] int number() const { return m_number; }
    [[nodiscard]] bool isOpen() const { return m_number >= 0; }
    /// False when the system reports a write that failed late.
    bool close() { return m_number < 0 || ::close(std::exchange(m_number, -1)) == 0; }

private:
    int m_number;
};

/// Removes a file at the end of the scope unless it was kept.
class TemporaryFile {
public:
    explicit TemporaryFile(std::string path) : m_path(std::move(path)) {}
    ~TemporaryFile() {
        if (!m_path.empty()) {
            ::unlink(m_path.c_str());
        }
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    void keep() { m_path.clear(); }

private:
    std::string m_path;
};

std::wstring wideCause(int error) {
    return fromUtf8OrBytes(std::generic_category().message(error));
}

[[noreturn]] void failReading(const std::string& path, const std::wstring& cause) {
    throw VeltraniMissingFileException(L"Cannot read the configuration \"" + fromUtf8OrBytes(path) + L"\": " + cause);
}

[[noreturn]] void failWriting(const std::string& path, const std::wstring& cause) {
    throw VeltraniException(__FILE__, __LINE__,
                            L"Cannot save the configuration \"" + fromUtf8OrBytes(path) + L"\": " + cause +
                                L"; the file was left as it was");
}

/// Why a text cannot be a path, before the system is asked.
std::optional<std::wstring> faultOfPath(const std::string& path) {
    if (path.empty()) {
        return L"the path is empty";
    }
    if (path.find('\0') != std::string::npos || fromUtf8(path).empty()) {
        return L"the path is not UTF-8 text";
    }
    return std::nullopt;
}

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

/// The path that the last component leads to when it is a symbolic link; links further up are left to the system.
std::string withoutLinks(const std::string& requested) {
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
    failWriting(requested, wideCause(ELOOP));
}

/// What is at the path now; nothing when there is no file yet.
std::optional<struct stat> existingFile(const std::string& requested, const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        if (errno == ENOENT) {
            return std::nullopt;
        }
        failWriting(requested, wideCause(errno));
    }
    if (!S_ISREG(status.st_mode)) {
        failWriting(requested, L"it is not a regular file");
    }
    if (::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0) {
        failWriting(requested, wideCause(errno));
    }
    return status;
}

/// Opens a new file beside `path`; its name goes into `name`.
int openBeside(const std::string& path, std::string& name) {
    for (int i = 0; i < MOST_NAMES_TRIED; ++i) {
        name = folderOf(path) + ".display-" + std::to_string(::getpid()) + "-" + std::to_string(i) + ".tmp";
        const int descriptor = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666);
        if (descriptor >= 0 || errno != EEXIST) {
            return descriptor;
        }
    }
    return -1;
}

bool writeAll(int descriptor, std::string_view content) {
    while (!content.empty()) {
        const ssize_t written = ::write(descriptor, content.data(), content.size());
        if (written < 0 && errno != EINTR) {
            return false;
        }
        content.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
    }
    return true;
}

/// The owner is a courtesy that only a privileged process can render; the mode is a promise. The owner comes first: a
/// change of owner may clear bits of the mode.
bool takeOver(int descriptor, const struct stat& old) {
    if (::fchown(descriptor, old.st_uid, old.st_gid) != 0 && errno != EPERM) {
        return false;
    }
    return ::fchmod(descriptor, old.st_mode & 07777U) == 0;
}

/// Makes the renaming itself durable. The new content is in place by now, so a folder that cannot be opened or flushed
/// is no reason to report a failed save.
void flushFolder(const std::string& path) {
    const std::string folder = folderOf(path);
    const Descriptor descriptor(::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (descriptor.isOpen()) {
        ::fsync(descriptor.number());
    }
}

}  // namespace

std::string readFile(const std::string& path, std::size_t limit) {
    if (const std::optional<std::wstring> fault = faultOfPath(path)) {
        failReading(path, *fault);
    }
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.number(), &status) != 0) {
        failReading(path, wideCause(errno));
    }
    if (!S_ISREG(status.st_mode)) {
        failReading(path, L"it is not a regular file");
    }
    std::string content;
    std::array<char, BLOCK_BYTES> block{};
    while (content.size() <= limit) {
        const ssize_t size = ::read(file.number(), block.data(), std::min(block.size(), limit + 1 - content.size()));
        if (size < 0 && errno != EINTR) {
            failReading(path, wideCause(errno));
        }
        if (size == 0) {
            break;
        }
        content.append(block.data(), size < 0 ? 0 : static_cast<std::size_t>(size));
    }
    return content;
}

void replaceFile(const std::string& path, std::string_view content) {
    if (const std::optional<std::wstring> fault = faultOfPath(path)) {
        failWriting(path, *fault);
    }
    const std::string target = withoutLinks(path);
    const std::optional<struct stat> old = existingFile(path, target);
    std::string name;
    Descriptor file(openBeside(target, name));
    if (!file.isOpen()) {
        failWriting(path, wideCause(errno));
    }
    TemporaryFile temporary(name);
    const bool isWritten = writeAll(file.number(), content) && (!old || takeOver(file.number(), *old)) &&
                           ::fsync(file.number()) == 0 && file.close();
    if (!isWritten || ::rename(name.c_str(), target.c_str()) != 0) {
        failWriting(path, wideCause(errno));
    }
    temporary.keep();
    flushFolder(target);
}

}  // namespace Veltrani
