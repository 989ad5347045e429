#include "DisplayFit/detail/FitLibrary.h"

#include "Common/LoadedModule.h"

#include <cstddef>

namespace Veltrani::DisplayFitDetail {

namespace {

const FitLibrary& openSolver() {
    // The module with all that it brings.
    constexpr std::size_t NEEDED = std::size_t{64} << 20U;
    const LoadedModule module{"fitting", SM_FIT_MODULE, SM_FIT_MODULE_ENTRY, "Ceres and glog", NEEDED};
    using Entry = const FitLibrary* (*)();
    return *reinterpret_cast<Entry>(module.open())();
}

}  // namespace

const FitLibrary& FitLibrary::get() {
    static const FitLibrary& library = openSolver();
    return library;
}

}  // namespace Veltrani::DisplayFitDetail
