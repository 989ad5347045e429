#pragma once

#include "Common/Matrix.h"
#include "Common/Point.h"
#include "DisplayReport/basics/ChannelPalette.h"

#include <cstddef>
#include <string>
#include <vector>

class ProjectorConfig;
class XMLConfigManager;

namespace Veltrani::DisplayReport {

struct DisplayScene;
struct SceneChannel;

/// A line of the drawing of axes, with the words that belong to it. World frame, native units; every point is finite.
struct SceneMark {
    std::vector<Point<double, 3>> line;  ///< its corners, at least two
    std::string label;                   ///< UTF-8; empty for a line without words
    Point<double, 3> labelPlace;         ///< beside which its words stand
    Colour colour;
    bool hasArrow = false;  ///< at its end

    enum class Stroke { THICK, THIN, PALE };
    Stroke stroke = Stroke::THICK;  ///< pale: what others are measured from
};

/// Draws into a scene what the numbers of a configuration are measured from: the axes of the world, the frame of a
/// mirror with the eye in it, the (s, t) of a screen that channels are addressed by, and of every channel its direction
/// of view, the three turns of its orientation, the angles of its frustum and the (u, v) of its picture. Of a channel
/// that is addressed by the screen only (u, v), since everything else counts for nothing there.
///
/// Angles are labelled in degrees with their signs, as the file states them: of a direction that tables bend the one
/// before.
class MarkCollector {
public:
    /// @param only the channel whose marks are wanted; null for all channels
    MarkCollector(const XMLConfigManager& config, const ProjectorConfig* only) : m_config(config), m_only(only) {}

    /// Adds the marks, and to each channel the lines of its list. Of the channels whose marks are not wanted only the
    /// outlines stay. The scene is one that was collected from the same
    /// configuration, on the current screen of the `ScreenManager`.
    void addTo(DisplayScene& scene) const;

private:
    void addChannel(DisplayScene& scene, std::size_t number, const Matrix<double, 3>& base) const;
    [[nodiscard]] const ProjectorConfig* projectorOf(const SceneChannel& channel) const;

    const XMLConfigManager& m_config;
    const ProjectorConfig* m_only;
};

}  // namespace Veltrani::DisplayReport
