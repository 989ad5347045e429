#pragma once

#include "Common/Point.h"

#include <optional>
#include <string>
#include <vector>

class XMLConfigManager;

namespace Veltrani::DisplayReport {

/// How a picture of everything around a viewer is laid out.
enum class Panorama {
    FISHEYE,          ///< a circle of 180 degrees about +y, equal steps of angle from its middle
    EQUIRECTANGULAR,  ///< azimuth -180 to 180 degrees from left to right, elevation -90 to 90 from bottom to top
};

/// "fisheye", "equirectangular"; none for anything else.
[[nodiscard]] std::optional<Panorama> panoramaOf(const std::string& name);
[[nodiscard]] std::vector<std::string> panoramaNames();

/// Where a layout point lies in the picture that feeds a display as a whole, the input of a warp: (0, 0) is its bottom
/// left corner, (1, 1) its top right one.
///
/// | Display         | Input                                                                              |
/// |-----------------|------------------------------------------------------------------------------------|
/// | planar          | the layout plane, from edge to edge of all rectangles of all channels together     |
/// | custom planar   | the screen: (s, t)                                                                 |
/// | any other       | a panorama about the eye point of the screen                                       |
///
/// The eye point of a collimated display is where its mirror has it, in the frame of the layout points; these lie on
/// the screen that the mirror shows, not where a viewer sees them.
class InputProjection {
public:
    /// @param panorama of no meaning unless `hasPanorama`
    InputProjection(const XMLConfigManager& config, Panorama panorama);

    /// None beyond the edges of the input or the circle of the fisheye, at the eye point, for NaN, and on a layout
    /// plane without rectangles.
    [[nodiscard]] std::optional<Point<double, 2>> place(const Point<double, 3>& layout) const;

    /// Whether the left edge of the input goes on at its right one.
    [[nodiscard]] bool wrapsAround() const { return m_kind == Kind::EQUIRECTANGULAR; }
    /// Whether the input has no place for what lies behind the viewer.
    [[nodiscard]] bool leavesOutBehind() const { return m_kind == Kind::FISHEYE; }

    [[nodiscard]] static bool hasPanorama(const XMLConfigManager& config);

private:
    enum class Kind { LAYOUT_PLANE, SCREEN, FISHEYE, EQUIRECTANGULAR };

    [[nodiscard]] static Kind kindOf(const XMLConfigManager& config, Panorama panorama);

    Kind m_kind;
    Point<double, 2> m_lower;  ///< of the layout plane, native units
    Point<double, 2> m_upper;
    Point<double, 3> m_eyePoint;  ///< in the frame of the layout, native units
};

}  // namespace Veltrani::DisplayReport
