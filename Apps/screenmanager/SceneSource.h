#pragma once

#include "DisplayReport/DisplayScene.h"
#include "DisplayReport/SceneCollector.h"
#include "DisplayReport/TargetPlan.h"
#include "Verbosity.h"

#include <string>

class XMLConfigFile;

/// The scene of a display, for the commands that show one.
class SceneSource {
public:
    SceneSource() = delete;

    /// Builds the screen, places the targets and collects everything, with progress on a terminal. What cannot be
    /// loaded is missing in the scene, whose notes say so; they are told on standard error too, unless quiet.
    /// @param file the configuration, which heads the picture
    [[nodiscard]] static Veltrani::DisplayReport::DisplayScene collect(
        XMLConfigFile& config, const std::string& file, const Veltrani::DisplayReport::TargetPlan& plan,
        Verbosity verbosity, const Veltrani::DisplayReport::SceneCollector::Limits& limits);
};
