#include "DisplayReport/still/StillLibrary.h"

#include "Common/LoadedModule.h"

#include <cstddef>

namespace Veltrani::DisplayReport {

namespace {

const StillLibrary& open() {
    // The module with all that it brings, its fonts, and the stack and the heap of Pango's threads, which would end the
    // process where it could not be started.
    constexpr std::size_t NEEDED = std::size_t{320} << 20U;
    const LoadedModule module{"stills", SM_STILL_MODULE, SM_STILL_MODULE_ENTRY, "Cairo and Pango", NEEDED};
    using Entry = const StillLibrary* (*)();
    return *reinterpret_cast<Entry>(module.open())();
}

}  // namespace

const StillLibrary& StillLibrary::get() {
    static const StillLibrary& library = open();
    return library;
}

}  // namespace Veltrani::DisplayReport
