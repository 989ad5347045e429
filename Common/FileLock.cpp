#include "Common/FileLock.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <thread>
#include <utility>

namespace Veltrani {

namespace {

using Clock = std::chrono::steady_clock;

/// The pause between two attempts to take a lock that is held elsewhere. The system would wait without a limit.
constexpr std::chrono::milliseconds BETWEEN_LOOKS{10};

[[noreturn]] void fail(const std::string& path, const std::string& reason) {
    throw VeltraniException(L"Unable to lock " + fromUtf8OrBytes(path) + L": " + fromUtf8OrBytes(reason));
}

/// Returns false when it is still locked elsewhere at the end.
bool waitForLock(int descriptor, Clock::time_point end) {
    while (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK) {
            if (Clock::now() >= end) {
                return false;
            }
            std::this_thread::sleep_for(BETWEEN_LOOKS);
        } else if (errno != EINTR) {
            return true;  // a file system without locks
        }
    }
    return true;
}

/// Returns true when the name still leads to the file that was opened.
bool isStillAt(const std::string& path, int descriptor) {
    struct stat opened {};
    struct stat named {};
    return ::fstat(descriptor, &opened) == 0 && ::stat(path.c_str(), &named) == 0 && opened.st_dev == named.st_dev &&
           opened.st_ino == named.st_ino;
}

}  // namespace

FileLock::FileLock(const std::string& utf8Path, std::chrono::milliseconds patience) {
    const Clock::time_point end = Clock::now() + patience;
    do {
        release();
        // Opened for writing: some file systems lock nothing else for one process alone.
        m_descriptor = ::open(utf8Path.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
        if (m_descriptor < 0 && errno == ENOENT) {
            return;
        }
        if (m_descriptor < 0) {
            fail(utf8Path, std::generic_category().message(errno));
        }
        if (!waitForLock(m_descriptor, end)) {
            release();
            fail(utf8Path, "another program holds its lock; let that program finish, then try again");
        }
    } while (!isStillAt(utf8Path, m_descriptor));
}

FileLock::~FileLock() {
    release();
}

void FileLock::release() {
    if (m_descriptor >= 0) {
        ::close(std::exchange(m_descriptor, -1));
    }
}

}  // namespace Veltrani
