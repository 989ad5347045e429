#pragma once

#include "Common/Point.h"
#include "DisplayReport/scene/DisplayScene.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Veltrani::DisplayReport {

/// Where a picture of a scene is taken from, and where a point of the scene lies in it.
///
/// A perspective camera that stands as near as it can with the whole frame of the scene in the picture.
class SceneCamera {
public:
    /// "home" (from the audience's side, from above), "front", "side", "top".
    [[nodiscard]] static std::vector<std::string> views();

    /// From the middle of the scene towards the camera, of length 1. The view must be one of `views`.
    [[nodiscard]] static Point<double, 3> directionOf(const std::string& view, const DisplayScene& scene);

    /// @param width, height of the picture, any unit, above zero; places are given in it
    SceneCamera(const DisplayScene& scene, const std::string& view, double width, double height);

    /// A point as the camera has it: to the right, up, and ahead, in native units.
    [[nodiscard]] Point<double, 3> seen(const Point<double, 3>& world) const;
    /// Where a seen point lies in the picture: to the right and down from the top left corner, and how near it is: 1 /
    /// distance ahead, in 1 / native units, which is linear across the picture. Only for points at least `nearest`
    /// ahead.
    [[nodiscard]] Point<double, 3> placed(const Point<double, 3>& seen) const;
    /// Both; none for a point that is not ahead.
    [[nodiscard]] std::optional<Point<double, 3>> place(const Point<double, 3>& world) const;

    /// The part of a straight line that is ahead, as `placed` places its ends; none for a line that is not ahead.
    [[nodiscard]] std::optional<std::pair<Point<double, 3>, Point<double, 3>>> placeLine(
        const Point<double, 3>& from, const Point<double, 3>& to) const;

    [[nodiscard]] double nearest() const { return m_nearest; }
    [[nodiscard]] const Point<double, 3>& position() const { return m_position; }
    /// From the middle of what is seen towards the camera, of length 1.
    [[nodiscard]] Point<double, 3> direction() const { return -m_ahead; }
    /// Units of the picture per native unit at the middle of the scene.
    [[nodiscard]] double magnification() const { return m_focus / m_distance; }

private:
    /// Moves and draws near until `points` fill the picture.
    void fit(const std::vector<Point<double, 3>>& points);

    Point<double, 3> m_middle;
    Point<double, 3> m_right;
    Point<double, 3> m_up;
    Point<double, 3> m_ahead;
    Point<double, 3> m_position;
    double m_distance = 0;  ///< from the middle
    double m_nearest = 0;
    double m_focus = 0;  ///< units of the picture per unit of slope
    double m_width = 0;
    double m_height = 0;
};

}  // namespace Veltrani::DisplayReport
