#include "Common/AtomicFile.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
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

/// Returns the path that the last component leads to when it is a symbolic link, whether a file is there yet or not;
/// links further up are left to the system.
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

constexpr std::string_view RANDOM_PART = "XXXXXX";  // of mkostemp

/// FNV-1a of 64 bits, the same in every build: a later version of the program finds the files of an earlier one.
std::uint64_t hashOf(std::string_view text) {
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (const char character : text) {
        hash = (hash ^ static_cast<unsigned char>(character)) * 0x100000001b3U;
    }
    return hash;
}

/// What the names of all temporary files for one file begin with: short, as the file's own name may be as long as names
/// can be.
std::string prefixFor(const std::string& target) {
    std::array<char, 17> digits{};
    std::snprintf(digits.data(), digits.size(), "%016llx",
                  static_cast<unsigned long long>(hashOf(std::string_view(target).substr(target.rfind('/') + 1))));
    return folderOf(target) + ".save-" + digits.data() + '-';
}

bool isSameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// Returns true when the name still leads to the open file. The number of its names proves less: it may have others,
/// and some file systems count none.
bool isStillNamed(int descriptor, const std::string& path) {
    struct stat opened {};
    struct stat named {};
    return ::fstat(descriptor, &opened) == 0 && ::lstat(path.c_str(), &named) == 0 && isSameFile(opened, named);
}

/// Removes a temporary file unless a process is writing it, which then holds its lock. One that was made this moment
/// and is not locked yet is removed as well: its writer notices, see `createLocked`.
void removeLeftover(const std::string& path) {
    struct stat named {};
    // Examined first: opening some devices has an effect of its own.
    if (::lstat(path.c_str(), &named) != 0 || !S_ISREG(named.st_mode)) {
        return;
    }
    const int descriptor = ::open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0) {
        return;
    }
    // Examined again under the lock: a writer that has committed meanwhile has given the file its final name.
    if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0 && isStillNamed(descriptor, path)) {
        ::unlink(path.c_str());
    }
    ::close(descriptor);
}

struct FolderCloser {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

/// A folder that cannot be listed keeps its leftovers. Listed by the system: the iterator of the C++ library ends the
/// process where it lacks memory.
void removeLeftovers(const std::string& prefix) {
    const std::string folder = folderOf(prefix);
    const std::string start = prefix.substr(folder.size());
    const std::unique_ptr<DIR, FolderCloser> list(::opendir(folder.c_str()));
    while (const dirent* const entry = list == nullptr ? nullptr : ::readdir(list.get())) {
        const std::string name = entry->d_name;
        if (name.starts_with(start) && name.size() == start.size() + RANDOM_PART.size()) {
            removeLeftover(folder + name);
        }
    }
}

/// A place for the path of a temporary file, which a signal handler may read: it can neither allocate nor wait.
struct Slot {
    enum State : int { FREE, TAKEN, LIVE };

    std::atomic<int> state{FREE};
    std::array<char, PATH_MAX> path{};
};

static_assert(std::atomic<int>::is_always_lock_free, "a handler of signals must not wait for a lock");

constinit std::array<Slot, 16> slots{};

bool changeState(Slot& slot, int from, int to) noexcept {
    return slot.state.compare_exchange_strong(from, to);
}

/// Returns the number of the slot that holds the path now; -1 when all are in use.
int enter(const std::string& path) {
    for (std::size_t i = 0; i < slots.size() && path.size() < PATH_MAX; ++i) {
        if (changeState(slots[i], Slot::FREE, Slot::TAKEN)) {
            path.copy(slots[i].path.data(), path.size());
            slots[i].path[path.size()] = '\0';
            slots[i].state = Slot::LIVE;
            return static_cast<int>(i);
        }
    }
    return -1;
}

/// A slot that a handler has taken stays taken: the process ends.
void leave(int slot) {
    if (slot >= 0) {
        changeState(slots[static_cast<std::size_t>(slot)], Slot::LIVE, Slot::FREE);
    }
}

/// Keeps signals from being handled in this thread, for as long as it lives.
class SignalsHeldBack {
public:
    SignalsHeldBack() {
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_BLOCK, &all, &m_before);
    }
    ~SignalsHeldBack() { ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    SignalsHeldBack(const SignalsHeldBack&) = delete;
    SignalsHeldBack& operator=(const SignalsHeldBack&) = delete;

private:
    sigset_t m_before{};
};

/// Waits for a process that is looking whether the file is a leftover. False when it has removed it. Where files cannot
/// be locked nothing is ever taken for a leftover.
bool lock(int descriptor, const std::string& path) {
    while (::flock(descriptor, LOCK_EX) != 0 && errno == EINTR) {
    }
    return isStillNamed(descriptor, path);
}

}  // namespace

AtomicFile::AtomicFile(const std::string& utf8Path) {
    if (utf8Path.empty() || utf8Path.find('\0') != std::string::npos) {
        fail(utf8Path, "the file name is empty or contains a zero character");
    }
    m_target = withoutLinks(utf8Path);
    const std::optional<struct stat> old = existingFile(utf8Path, m_target);
    createLocked(utf8Path);
    if (!takeOver(m_descriptor, old)) {
        const std::string reason = systemReason();
        discard();
        fail(utf8Path, reason);
    }
}

AtomicFile::~AtomicFile() {
    discard();
}

/// A signal between the making of the file and its entry in a slot would leave it behind.
bool AtomicFile::create(const std::string& prefix) {
    const SignalsHeldBack held;
    std::string name = prefix + std::string(RANDOM_PART);
    m_descriptor = ::mkostemp(name.data(), O_CLOEXEC);
    if (m_descriptor < 0) {
        return false;
    }
    m_temporary = std::move(name);
    m_slot = enter(m_temporary);
    return true;
}

void AtomicFile::createLocked(const std::string& requested) {
    // Each try but the last has met a process that was removing leftovers at this very moment.
    constexpr int MOST_TRIES = 100;
    const std::string prefix = prefixFor(m_target);
    removeLeftovers(prefix);
    for (int i = 0; i < MOST_TRIES; ++i) {
        if (!create(prefix)) {
            fail(requested, systemReason());
        }
        if (lock(m_descriptor, m_temporary)) {
            return;
        }
        m_temporary.clear();  // a file of that name belongs to another writer
        discard();
    }
    fail(requested, "other programs keep removing its temporary file");
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

void AtomicFile::commit(const std::function<void()>& beforeReplacing) {
    // Some file systems report a failed write only when the file is closed; a second descriptor keeps the lock until
    // the file has its final name.
    const int second = ::fsync(m_descriptor) == 0 ? ::fcntl(m_descriptor, F_DUPFD_CLOEXEC, 0) : -1;
    if (second < 0 || ::close(std::exchange(m_descriptor, second)) != 0) {
        fail(m_target, systemReason());
    }
    if (beforeReplacing) {
        beforeReplacing();
    }
    if (std::rename(m_temporary.c_str(), m_target.c_str()) != 0) {
        fail(m_target, systemReason());
    }
    m_temporary.clear();
    discard();
    // The rename itself reaches the disk with the folder. Not all file systems can do that, and the content is safe.
    const int folder = ::open(folderOf(m_target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder >= 0) {
        ::fsync(folder);
        ::close(folder);
    }
}

void AtomicFile::discard() {
    // Removed before its lock ends, so that no other process takes it for a leftover.
    if (!m_temporary.empty()) {
        ::unlink(m_temporary.c_str());
        m_temporary.clear();
    }
    leave(std::exchange(m_slot, -1));
    if (m_descriptor >= 0) {
        ::close(std::exchange(m_descriptor, -1));
    }
}

void AtomicFile::removeTemporaryFiles() noexcept {
    const int before = errno;
    for (Slot& slot : slots) {
        if (changeState(slot, Slot::LIVE, Slot::TAKEN)) {
            ::unlink(slot.path.data());
        }
    }
    errno = before;
}

}  // namespace Veltrani
