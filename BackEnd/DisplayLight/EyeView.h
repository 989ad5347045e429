#pragma once

#include "Common/Point.h"
#include "DisplayExport/ViewFrame.h"

#include <cstddef>
#include <optional>
#include <span>

namespace Veltrani::DisplayLight {

/// A picture of what an eye sees around a direction: which direction each of its places shows.
///
/// Places are pixels to the right and upwards from its bottom left corner; the middle of the first pixel is (0.5, 0.5).
class EyeView {
public:
    enum class Kind {
        FLAT,      ///< as a camera: tangents grow evenly
        FISHEYE,   ///< equal steps of angle from the middle
        PANORAMA,  ///< azimuth to the right, elevation upwards, in equal steps
    };

    /// Radians from the middle of what is shown to what lies farthest from it: up to that the picture is flat, or a
    /// fisheye.
    static constexpr double WIDEST_FLAT = 1.0471975511965976;
    static constexpr double WIDEST_FISHEYE = 2.1816615649929116;

    /// A picture in which all directions lie, with a margin. Without a direction it looks forward.
    /// @param directions from the eye, world axes, of any length
    /// @param width, height pixels, above zero
    [[nodiscard]] static EyeView around(const Point<double, 3>& eye, std::span<const Point<double, 3>> directions,
                                        std::size_t width, std::size_t height);

    [[nodiscard]] Kind kind() const { return m_kind; }
    [[nodiscard]] const DisplayExport::ViewFrame& frame() const { return m_frame; }
    [[nodiscard]] std::size_t width() const { return m_width; }
    [[nodiscard]] std::size_t height() const { return m_height; }
    /// Pixels of a unit of what grows evenly: a tangent, or a radian.
    [[nodiscard]] double scale() const { return m_scale; }
    /// Where the direction of the frame lies in the picture.
    [[nodiscard]] const Point<double, 2>& middle() const { return m_middle; }

    /// World axes, of any length; none for places that show no direction: further from the middle of a fisheye than
    /// half a turn, beyond the poles or the whole turn of a panorama.
    [[nodiscard]] std::optional<Point<double, 3>> directionOf(const Point<double, 2>& place) const;
    /// The way back; none for what lies behind a flat picture, and for no direction.
    [[nodiscard]] std::optional<Point<double, 2>> placeOf(const Point<double, 3>& direction) const;
    /// Pixels after which a panorama begins again; 0 for every other kind.
    [[nodiscard]] double turn() const;

private:
    /// What grows evenly, of a direction in the frame.
    [[nodiscard]] std::optional<Point<double, 2>> evenOf(const Point<double, 3>& seen) const;

    Kind m_kind = Kind::FLAT;
    DisplayExport::ViewFrame m_frame;
    std::size_t m_width = 0;
    std::size_t m_height = 0;
    double m_scale = 1;
    Point<double, 2> m_middle;
};

}  // namespace Veltrani::DisplayLight
