#include "FitSession/FitWork.h"

#include "Common/LoadedModule.h"

namespace Veltrani::FitSession {

namespace {

const FitWork& openWork() {
    // The module with the library of fits.
    constexpr std::size_t NEEDED = std::size_t{16} << 20U;
    const LoadedModule module{"fits", SM_FIT_WORK_MODULE, SM_FIT_WORK_MODULE_ENTRY, "the library of fits", NEEDED};
    using Entry = const FitWork* (*)();
    return *reinterpret_cast<Entry>(module.open())();
}

}  // namespace

const FitWork& FitWork::get() {
    static const FitWork& work = openWork();
    return work;
}

}  // namespace Veltrani::FitSession
