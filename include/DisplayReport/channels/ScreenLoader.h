#pragma once

#include "DisplayReport/basics/Fault.h"

#include <vector>

class XMLConfigManager;

namespace Veltrani::DisplayReport {

/// Builds the screens of a configuration, for a program that works on one display.
class ScreenLoader {
public:
    ScreenLoader() = delete;

    /// Loads content, measured mesh and model cloud into the `ScreenManager`, in place of whatever it holds.
    ///
    /// The files of every shape are read in the unit and along the axes that the configuration states;
    /// `ScreenManager::setScreenGeometry` by itself hands these on for meshes only. What can be loaded is loaded.
    /// @return the faults of the rest
    [[nodiscard]] static std::vector<Fault> load(XMLConfigManager& config);
};

}  // namespace Veltrani::DisplayReport
