#pragma once

#include "DisplayReport/still/Drawing.h"

#include <string>

namespace Veltrani::DisplayReport {

struct DisplayScene;

/// Draws a still of a scene: the screen, on it the picture, the outline and the targets of every channel in its colour,
/// frusta, eye point, mirror and scales; beside it the channels with their counts, below it the first notes.
///
/// The screen is opaque where it is seen from the side of the eye point, unless a mirror shows it; transparent from
/// behind. Where there is a measured screen, the content one is left out.
class ScenePainter {
public:
    /// @param view one of `SceneCamera::views`
    /// @param width, height of the picture, pixels, above zero
    ScenePainter(std::string view, int width, int height);

    [[nodiscard]] Drawing paint(const DisplayScene& scene) const;

private:
    std::string m_view;
    int m_width;
    int m_height;
};

}  // namespace Veltrani::DisplayReport
