#pragma once

#include "DisplayReport/basics/Progress.h"

#include <cstddef>

class XMLConfigManager;

namespace Veltrani::DisplayReport {

struct DisplayScene;

/// Adds the light of the channels to a scene: the shading of the current screen, cut along the borders of the light by
/// the measurement that `CoverageSurvey` reports, so that picture and figures agree; and for every channel the lattice
/// of its picture and the arrow towards its upper edge.
///
///     DisplayScene scene = SceneCollector().collect(title, config, survey, faults);
///     SceneLighter(limits.triangles, progress).addTo(scene, config);
class SceneLighter {
public:
    /// @param mostTriangles of the shading, about; more are thinned
    /// @param progress called with steps of about equal length
    explicit SceneLighter(std::size_t mostTriangles, Progress progress = {});

    /// The scene is one that was collected from the same configuration, on the current screen of the `ScreenManager`.
    /// Where nothing can be measured the scene stays as it was, and a note states why.
    void addTo(DisplayScene& scene, const XMLConfigManager& config) const;

private:
    std::size_t m_mostTriangles;
    Progress m_progress;
};

}  // namespace Veltrani::DisplayReport
