// Preloaded into a program: closing a file is a fault of the disk, as some file systems report a write that they had
// taken before. The file is closed all the same.
//
// Environment: SM_FAIL_CLOSE, a part of the paths of these files.
#include <dlfcn.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <string_view>

extern "C" int close(int descriptor) {
    static const auto realClose = reinterpret_cast<int (*)(int)>(::dlsym(RTLD_NEXT, "close"));
    constexpr std::size_t LONGEST = 4096;
    std::array<char, LONGEST> path{};
    const ssize_t size = ::readlink(("/proc/self/fd/" + std::to_string(descriptor)).c_str(), path.data(), path.size());
    const char* const failing = std::getenv("SM_FAIL_CLOSE");
    const int result = realClose(descriptor);
    if (result != 0 || size < 0 || failing == nullptr ||
        std::string_view(path.data(), static_cast<std::size_t>(size)).find(failing) == std::string_view::npos) {
        return result;
    }
    errno = EIO;
    return -1;
}
