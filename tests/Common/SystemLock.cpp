#include "SystemLock.h"

#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace systemLock {

std::function<int()> beforeNext;

}  // namespace systemLock

/// The library calls this one in place of that of the system.
extern "C" int flock(int descriptor, int operation) noexcept {
    const auto before = std::exchange(systemLock::beforeNext, nullptr);
    if (const int reply = before ? before() : 0; reply != 0) {
        errno = reply;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_flock, descriptor, operation));
}
