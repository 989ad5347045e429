#include "ScreenManager/detail/CloudLibrary.h"

#include "Common/LoadedModule.h"

#include <cstddef>

namespace Veltrani::ScreenManagerDetail {

namespace {

const CloudLibrary& open() {
    // The module and all that it brings took 62 MB where it was measured.
    constexpr std::size_t NEEDED = std::size_t{96} << 20;
    const LoadedModule module{"point clouds", SM_CLOUD_MODULE, SM_CLOUD_MODULE_ENTRY, "the Point Cloud Library",
                              NEEDED};
    using Entry = const CloudLibrary* (*)();
    return *reinterpret_cast<Entry>(module.open())();
}

}  // namespace

const CloudLibrary& CloudLibrary::get() {
    static const CloudLibrary& library = open();
    return library;
}

}  // namespace Veltrani::ScreenManagerDetail
