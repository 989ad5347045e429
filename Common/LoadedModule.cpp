#include "Common/LoadedModule.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <dlfcn.h>
#include <sys/mman.h>

#include <filesystem>
#include <new>
#include <system_error>

namespace Veltrani {

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

[[noreturn]] void fail(const LoadedModule& module, const fs::path& path, const std::string& found) {
    throw VeltraniException(fromUtf8("Unable to open the module for " + module.purpose + " " + path.string() +
                                     ": found " + found + "; expected the module of this version beside " +
                                     OWN_FILE.filename().string() + " and " + module.libraries +
                                     "; install ScreenManager again, and the packages that it needs"));
}

std::string loaderFault() {
    const char* const text = ::dlerror();
    return text == nullptr ? "no reason" : text;
}

}  // namespace

void requireAddressSpace(std::size_t bytes) {
    void* const place = ::mmap(nullptr, bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (place == MAP_FAILED) {
        throw std::bad_alloc();
    }
    ::munmap(place, bytes);
}

void* LoadedModule::open() const {
    const fs::path path = OWN_FILE.parent_path() / file;
    if (!path.is_absolute()) {
        // Without a folder the loader would search for the name, in the working folder as well.
        fail(*this, path, "no folder of the library that needs it");
    }
    if (memory > 0) {
        requireAddressSpace(memory);
    }
    void* const handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        fail(*this, path, loaderFault());
    }
    void* const address = ::dlsym(handle, entry.c_str());
    if (address == nullptr) {
        fail(*this, path, loaderFault());
    }
    return address;
}

}  // namespace Veltrani
