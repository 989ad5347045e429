#include "DisplayReport/still/StillLibrary.h"

#include "Common/LoadedModule.h"

#include <cstddef>

namespace Veltrani::DisplayReport {

namespace {

const StillLibrary& open() {
    // The module with all that it brings, and its fonts.
    constexpr std::size_t NEEDED = std::size_t{64} << 20U;
    const LoadedModule module{"stills", SM_STILL_MODULE, SM_STILL_MODULE_ENTRY,
                              "Cairo, HarfBuzz, FriBidi and Fontconfig", NEEDED};
    using Entry = const StillLibrary* (*)();
    return *reinterpret_cast<Entry>(module.open())();
}

}  // namespace

const StillLibrary& StillLibrary::get() {
    static const StillLibrary& library = open();
    return library;
}

}  // namespace Veltrani::DisplayReport
