#include "ScreenManager/detail/CloudLibrary.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <dlfcn.h>
#include <sys/mman.h>

#include <cstddef>
#include <filesystem>
#include <new>
#include <string>
#include <system_error>

namespace Veltrani::ScreenManagerDetail {

namespace {

namespace fs = std::filesystem;

/// Returns the file of this library. It is determined when the library is loaded: a relative search path of the loader
/// counts from the working folder of that moment.
fs::path ownFile() {
    Dl_info info{};
    static const int PLACE_IN_LIBRARY = 0;
    std::error_code fault;
    if (::dladdr(&PLACE_IN_LIBRARY, &info) == 0 || info.dli_fname == nullptr) {
        return {};
    }
    return fs::canonical(info.dli_fname, fault);
}

const fs::path OWN_FILE = ownFile();

[[noreturn]] void fail(const fs::path& module, const std::string& found) {
    throw VeltraniException(
        fromUtf8("Unable to open the module for point clouds " + module.string() + ": found " + found +
                 "; expected the module of this version beside " + OWN_FILE.filename().string() +
                 " and the Point Cloud Library; install ScreenManager again, and the packages that it needs"));
}

std::string loaderFault() {
    const char* const text = ::dlerror();
    return text == nullptr ? "no reason" : text;
}

/// Throws `std::bad_alloc` unless there is room for the module and all that it brings, 62 MB where it was measured: the
/// loader names some library that it could not map, and an initialiser that runs out of memory would end the process.
void requireAddressSpace() {
    constexpr std::size_t NEEDED = std::size_t{96} << 20;
    void* const place = ::mmap(nullptr, NEEDED, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (place == MAP_FAILED) {
        throw std::bad_alloc();
    }
    ::munmap(place, NEEDED);
}

const CloudLibrary& open() {
    const fs::path module = OWN_FILE.parent_path() / SM_CLOUD_MODULE;
    if (!module.is_absolute()) {
        // Without a folder the loader would search for the name, in the working folder as well.
        fail(module, "no folder of the library that needs it");
    }
    requireAddressSpace();
    void* const handle = ::dlopen(module.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        fail(module, loaderFault());
    }
    using Entry = const CloudLibrary* (*)();
    const auto entry = reinterpret_cast<Entry>(::dlsym(handle, SM_CLOUD_MODULE_ENTRY));
    if (entry == nullptr) {
        fail(module, loaderFault());
    }
    return *entry();
}

}  // namespace

const CloudLibrary& CloudLibrary::get() {
    static const CloudLibrary& library = open();
    return library;
}

}  // namespace Veltrani::ScreenManagerDetail
