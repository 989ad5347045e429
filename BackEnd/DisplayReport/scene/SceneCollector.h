#pragma once

#include "DisplayReport/basics/Fault.h"
#include "DisplayReport/scene/DisplayScene.h"

#include <cstddef>
#include <string>
#include <vector>

class ProjectorConfig;
class XMLConfigManager;

namespace Veltrani::DisplayReport {

/// Collects the scene of a display from its configuration, the current screens of the `ScreenManager` and the targets
/// that were placed.
class SceneCollector {
public:
    /// How much a picture can hold; more is thinned, which the notes of the scene state.
    struct Limits {
        std::size_t triangles = 60000;  ///< per surface
        std::size_t points = 60000;     ///< of the cloud
        std::size_t targets = 100000;   ///< of all channels together
        std::size_t samples = 50000;    ///< of all outlines together
    };

    SceneCollector() : SceneCollector(Limits{}) {}
    explicit SceneCollector(const Limits& limits) : m_limits(limits) {}

    /// @param title what the picture is headed with, UTF-8
    /// @param screenFaults what was wrong when the screen was loaded; each becomes a note
    [[nodiscard]] DisplayScene collect(const std::string& title, const XMLConfigManager& config,
                                       const TargetSurvey& survey, const std::vector<Fault>& screenFaults) const;

private:
    void addScreens(DisplayScene& scene) const;
    void addCloud(DisplayScene& scene) const;
    /// Every so many columns and rows, and samples.
    void thinTargets(DisplayScene& scene) const;
    void thinOutlines(DisplayScene& scene) const;
    /// Finds out which samples of the outlines, and which pieces of the rims, lie past the edge of the screen.
    static void markContinuations(DisplayScene& scene);

    Limits m_limits;
};

}  // namespace Veltrani::DisplayReport
