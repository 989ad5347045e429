#pragma once

#include "DisplayReport/still/Drawing.h"

namespace Veltrani::DisplayReport {

class SceneCamera;
class SceneLegend;
struct DisplayScene;

/// Draws the residuals of a scene on its screen: of every measured point, where it was measured, and from there towards
/// where the light of its place in the picture lands as the display was fitted.
class ResidualPainter {
public:
    /// @param pixel what counts as a pixel of a picture of usual size
    ResidualPainter(const SceneCamera& camera, const SceneLegend& legend, double pixel)
        : m_camera(camera), m_legend(legend), m_pixel(pixel) {}

    /// Nothing for a scene without residuals.
    /// @param drawing with everything else, the legend included
    void addTo(Drawing& drawing, const DisplayScene& scene) const;

private:
    const SceneCamera& m_camera;
    const SceneLegend& m_legend;
    double m_pixel;
};

}  // namespace Veltrani::DisplayReport
