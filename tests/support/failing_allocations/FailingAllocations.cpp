// Preloaded into a program: counts what it allocates once its main function has been entered, and lets some of it fail.
//
// Environment: SM_FAIL_FROM, the number of the first allocation that fails (the first of all is 1); SM_FAIL_COUNT, how
// many fail; SM_FAIL_IN, a part of the file name of the one library whose allocations count, all when empty;
// SM_ALLOCATIONS, a file that receives how many there were.
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);

}  // extern "C"

namespace {

using Main = int (*)(int, char**, char**);
using StartMain = int (*)(Main, int, char**, void (*)(), void (*)(), void (*)(), void*);

std::atomic<bool> isStarted{false};
std::atomic<long> allocations{0};
long firstToFail = 0;  // none
long lastToFail = 0;
std::uintptr_t firstCaller = 0;
std::uintptr_t lastCaller = UINTPTR_MAX;
Main realMain = nullptr;

long numberIn(const char* variable) {
    const char* const text = std::getenv(variable);
    return text == nullptr ? 0 : std::atol(text);
}

void writeCount() {
    const char* const path = std::getenv("SM_ALLOCATIONS");
    const int file = path == nullptr ? -1 : ::open(path, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (file >= 0) {
        ::dprintf(file, "%ld", allocations.load());
        ::close(file);
    }
}

/// Finds where a library is now: to look for it at every allocation takes a lock of the loader.
int findLibrary(dl_phdr_info* info, std::size_t /*size*/, void* name) {
    if (std::strstr(info->dlpi_name, static_cast<const char*>(name)) == nullptr) {
        return 0;
    }
    firstCaller = UINTPTR_MAX;
    lastCaller = 0;
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const std::uintptr_t begin = info->dlpi_addr + info->dlpi_phdr[i].p_vaddr;
        if (info->dlpi_phdr[i].p_type == PT_LOAD) {
            firstCaller = std::min<std::uintptr_t>(firstCaller, begin);
            lastCaller = std::max<std::uintptr_t>(lastCaller, begin + info->dlpi_phdr[i].p_memsz);
        }
    }
    return 1;
}

int mainUnderWatch(int count, char** arguments, char** environment) {
    firstToFail = numberIn("SM_FAIL_FROM");
    lastToFail = firstToFail + numberIn("SM_FAIL_COUNT") - 1;
    if (const char* const library = std::getenv("SM_FAIL_IN"); library != nullptr && *library != '\0') {
        ::dl_iterate_phdr(&findLibrary, const_cast<char*>(library));
    }
    isStarted = true;
    const int code = realMain(count, arguments, environment);
    isStarted = false;
    writeCount();
    return code;
}

/// @param caller an address in the function that allocates
bool mayAllocate(const void* caller) {
    const auto place = reinterpret_cast<std::uintptr_t>(caller);
    if (!isStarted || place < firstCaller || place > lastCaller) {
        return true;
    }
    const long number = ++allocations;
    if (firstToFail == 0 || number < firstToFail || number > lastToFail) {
        return true;
    }
    errno = ENOMEM;
    return false;
}

}  // namespace

extern "C" {

int __libc_start_main(Main main, int count, char** arguments, void (*start)(), void (*end)(), void (*loader)(),
                      void* stack) {
    realMain = main;
    const auto real = reinterpret_cast<StartMain>(::dlsym(RTLD_NEXT, "__libc_start_main"));
    return real(&mainUnderWatch, count, arguments, start, end, loader, stack);
}

void* malloc(std::size_t size) {
    return mayAllocate(__builtin_return_address(0)) ? __libc_malloc(size) : nullptr;
}

void* calloc(std::size_t count, std::size_t size) {
    return mayAllocate(__builtin_return_address(0)) ? __libc_calloc(count, size) : nullptr;
}

void* realloc(void* block, std::size_t size) {
    return mayAllocate(__builtin_return_address(0)) ? __libc_realloc(block, size) : nullptr;
}

void* memalign(std::size_t alignment, std::size_t size) {
    return mayAllocate(__builtin_return_address(0)) ? __libc_memalign(alignment, size) : nullptr;
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return mayAllocate(__builtin_return_address(0)) ? __libc_memalign(alignment, size) : nullptr;
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
    void* const made = mayAllocate(__builtin_return_address(0)) ? __libc_memalign(alignment, size) : nullptr;
    if (made == nullptr) {
        return ENOMEM;
    }
    *block = made;
    return 0;
}

}  // extern "C"
