#pragma once

#include "Common/Point.h"
#include "DisplayExport/ChannelSight.h"
#include "DisplayExport/RenderFrustum.h"

#include <cstdint>
#include <memory>
#include <numbers>
#include <optional>
#include <string>
#include <vector>

class XMLConfigManager;

namespace Veltrani::DisplayExport {

/// How the picture that feeds a display, or one of its channels, is laid out.
enum class InputKind {
    FRUSTUM,          ///< for each channel what its own off-axis frustum shows
    FISHEYE,          ///< a circle about an axis, equal steps of angle from its middle
    EQUIRECTANGULAR,  ///< everything around the eye: azimuth from left to right, elevation from bottom to top
    CUBE,             ///< everything around the eye on the six faces of a cube
    LAYOUT,           ///< the layout plane, from edge to edge of all rectangles of all channels together
    SCREEN,           ///< the screen: (s, t)
};

/// "frustum", "fisheye", "equirectangular", "cube", "layout", "screen"; none for anything else.
[[nodiscard]] std::optional<InputKind> inputKindOf(const std::string& name);
[[nodiscard]] std::string nameOf(InputKind kind);
[[nodiscard]] std::vector<std::string> inputKindNames();

/// The faces of a cube, in the order of their numbers 0 to 5, as a viewer in the middle of the cube sees them: up is at
/// the top of the first four. The front joins the bottom edge of the top face and the top edge of the bottom face.
enum class CubeFace : std::uint8_t { RIGHT, LEFT, FRONT, BACK, TOP, BOTTOM };
[[nodiscard]] std::string nameOf(CubeFace face);

/// What an input is to be.
struct InputChoice {
    InputKind kind = InputKind::FRUSTUM;
    /// The middle of the frustum, the axis of the fisheye, the centre of the panorama, the front of the cube; world
    /// axes, of any length. None: the mean of the lit directions for a frustum, +y for the others.
    std::optional<Point<double, 3>> direction{};
    double roll = 0;  ///< radians, see `ViewFrame::looking`
    double aperture =
        std::numbers::pi;    ///< of the fisheye: the angle across its circle, radians; above 0, at most 2 pi
    double margin = 0.02;    ///< of the frustum: added on each side, part of its width or height
    Point<int, 2> pixels{};  ///< of the input, of one face of a cube; zero: `ContentInput::usualPixels`
};

/// A place in an input: (0, 0) is the bottom left corner of the input or of the face, (1, 1) the top right one.
struct InputPlace {
    Point<double, 2> at;
    std::uint8_t face = 0;  ///< of a cube; else 0
};

/// Where in the picture that feeds a channel the content of a place lies.
///
/// | Input           | What it needs                      | Beyond its edges |
/// |-----------------|------------------------------------|-------------------------------------------------------------|
/// | frustum         | less than 80 degrees to each side  | none for what does not lie forward; else beyond 0 and 1 |
/// | fisheye         |                                    | none beyond the aperture | | equirectangular | | the left
/// edge goes on at the right one                      | | cube            |                                    | each
/// edge goes on at that of another face                   | | layout          | a display with a layout plane      |
/// beyond 0 and 1                                              | | screen          | pictures addressed by (s, t) |
/// beyond 0 and 1                                              |
class ContentInput {
public:
    /// Radians: no frustum reaches as far from its direction to any side.
    static constexpr double WIDEST_FRUSTUM = 80 * std::numbers::pi / 180;

    /// Throws `VeltraniException`, naming the channel, for a frustum that would reach `WIDEST_FRUSTUM` or further, with
    /// the angle and the inputs to choose instead; for a channel of which nothing is lit, for an input that the display
    /// does not have, and for numbers out of range.
    ContentInput(const XMLConfigManager& config, const ChannelSight& sight, const InputChoice& choice);
    /// One that an export has stated, whatever the display would give today; faults as above, without those of frusta.
    /// @param stated how its eye stands, of meaning where the input has directions; for a frustum its tangents as well
    ContentInput(const XMLConfigManager& config, const ChannelSight& sight, const InputChoice& choice,
                 const RenderFrustum& stated);

    [[nodiscard]] const InputChoice& choice() const { return m_choice; }
    [[nodiscard]] InputKind kind() const { return m_choice.kind; }
    /// Of the input, of one face of a cube.
    [[nodiscard]] const Point<int, 2>& pixels() const { return m_choice.pixels; }
    /// 1, of a cube 6.
    [[nodiscard]] std::size_t faces() const { return kind() == InputKind::CUBE ? 6 : 1; }
    /// The eye and the axes; of no meaning for the layout and the screen.
    [[nodiscard]] const ViewFrame& view() const { return m_frustum.view; }
    /// What an engine renders; none unless the input is a frustum.
    [[nodiscard]] std::optional<RenderFrustum> frustum() const;
    /// What an engine renders for one face of a cube; none unless the input is a cube.
    [[nodiscard]] std::optional<RenderFrustum> frustumOf(CubeFace face) const;
    /// Whether the left edge goes on at the right one.
    [[nodiscard]] bool wrapsAround() const { return kind() == InputKind::EQUIRECTANGULAR; }

    /// None where the input has no place for it, and for a place that is not seen.
    /// @param picture the place of the channel's picture that is seen so
    [[nodiscard]] std::optional<InputPlace> place(const Point<double, 2>& picture, const SeenPlace& seen) const;
    /// As `place`, with what lies beyond the circle of a fisheye: for corners of cells that its edge passes.
    [[nodiscard]] std::optional<InputPlace> placeBeyond(const Point<double, 2>& picture, const SeenPlace& seen) const;
    /// The place of a direction on one face of a cube, which may lie beyond its edges; none for a direction that does
    /// not point towards the face, and on an input that is no cube.
    [[nodiscard]] std::optional<Point<double, 2>> placeOnFace(const Point<double, 3>& direction,
                                                              std::uint8_t face) const;
    /// The place of a direction from the eye, in world axes; none for the layout and the screen, which have no
    /// directions.
    [[nodiscard]] std::optional<InputPlace> placeOf(const Point<double, 3>& direction) const;
    /// The directions around which the input turns, in world axes: those of the two poles of a panorama, the one
    /// opposite to the axis of a fisheye. Content is not continuous there.
    [[nodiscard]] std::vector<Point<double, 3>> poles() const;

    /// How far two places of one face are apart, in pixels of the input; those of a panorama shrink with the cosine of
    /// the elevation of the first place, and lie on whichever side of its seam is nearer. Those of a fisheye, where the
    /// first place lies more than 90 degrees off the axis, shrink around its middle with the sine of that angle: what
    /// lies opposite to the axis is the whole rim of its circle.
    [[nodiscard]] double distance(const Point<double, 2>& from, const Point<double, 2>& to) const;

    /// What to change where nothing of a channel's picture is lit, for messages.
    static constexpr const char* REMEDY_UNLIT =
        "check its position, orientation and frustum, or its map, against the screen";
    /// What to change where no place of a channel's picture has one in this input, for messages.
    [[nodiscard]] std::string remedyForNothing(const ChannelSight& sight) const;

    /// The pixels of the channel's picture for a frustum, 4096 x 4096 for a fisheye, 8192 x 4096 for a panorama, 2048 x
    /// 2048 for the face of a cube, and 4096 pixels across the longer side for a layout. For the screen, 4096 x 4096.
    [[nodiscard]] static Point<int, 2> usualPixels(const XMLConfigManager& config, const ChannelSight& sight,
                                                   InputKind kind);

private:
    void setPlane(const XMLConfigManager& config, const ChannelSight& sight);

    enum class Edge { ENDS, GOES_ON };
    [[nodiscard]] std::optional<InputPlace> placeOf(const Point<double, 3>& direction, Edge edge) const;
    /// A way in a fisheye, by what it means to a viewer beyond 90 degrees off the axis.
    [[nodiscard]] Point<double, 2> shrunkAroundBack(const Point<double, 2>& fromMiddle,
                                                    const Point<double, 2>& way) const;

    InputChoice m_choice;
    RenderFrustum m_frustum;             ///< of an input of that kind; of others its view alone
    std::vector<RenderFrustum> m_faces;  ///< of a cube
    Point<double, 2> m_start;            ///< of a layout: the place of (u, v) = (0, 0) of the channel's picture
    Point<double, 2> m_size;             ///< and from there to that of (1, 1)
};

}  // namespace Veltrani::DisplayExport
