#pragma once

#include "DisplayReport/coverage/ChannelLight.h"
#include "KelvoControl/CustomPlanarScreenToChannelMap.h"
#include "ScreenManager/CustomPlanarTargetLocator.h"
#include "ScreenManager/PlanarTargetLocator.h"

namespace Veltrani::DisplayReport {

/// The light of a channel whose picture is laid out in the screen's 2D coordinates. Nothing stands in its way: the
/// picture is where its coordinates are.
///
/// On a mesh whose texture overlaps itself only the triangle that the coordinates are mapped onto is lit.
class ParameterLight : public ChannelLight {
public:
    void land(std::span<const Point<double, 2>> picture, std::span<Landing> landings) const override;
    [[nodiscard]] bool lights(const SurfacePoint& point) const override;
    bool findPicture(const SurfacePoint& point, Point<double, 2>& picture) const override;

protected:
    /// False for a point of a mesh whose coordinates belong to another one.
    [[nodiscard]] bool isReached(const SurfacePoint& point) const override;

    explicit ParameterLight(std::shared_ptr<const ScreenGeometry> surface);

    /// The screen coordinates of a picture point, which may lie outside of the screen; false when it has none.
    virtual bool mapToScreen(const Point<double, 2>& picture, Point<double, 2>& screen) const = 0;
    /// Whether the picture covers these screen coordinates.
    [[nodiscard]] virtual bool covers(const Point<double, 2>& screen) const = 0;
    /// The way back; false when there is none.
    virtual bool mapToPicture(const Point<double, 2>& screen, Point<double, 2>& picture) const = 0;

private:
    [[nodiscard]] bool standsAt(const SurfacePoint& point) const;

    std::shared_ptr<const ScreenGeometry> m_surface;
    bool m_mayOverlap;   ///< several points may have the same coordinates
    double m_samePlace;  ///< native units: nearer points are the same
};

/// The light of a channel whose picture fills a rectangle of the screen's 2D coordinates. A picture whose left bound is
/// right of its right one is mirrored, and covers as much.
class AreaLight : public ParameterLight {
public:
    AreaLight(const PlanarTargetLocatorParams& area, std::shared_ptr<const ScreenGeometry> surface);

protected:
    bool mapToScreen(const Point<double, 2>& picture, Point<double, 2>& screen) const override;
    [[nodiscard]] bool covers(const Point<double, 2>& screen) const override;
    bool mapToPicture(const Point<double, 2>& screen, Point<double, 2>& picture) const override;

private:
    PlanarTargetLocatorParams m_area;
};

/// The light of a channel whose picture is carried to the screen's 2D coordinates by a map file.
class MapFileLight : public ParameterLight {
public:
    /// Reads the map file; throws what `CustomPlanarScreenToChannelMap` throws.
    MapFileLight(const CustomPlanarTargetLocatorParams& channel, std::shared_ptr<const ScreenGeometry> surface);

protected:
    bool mapToScreen(const Point<double, 2>& picture, Point<double, 2>& screen) const override;
    [[nodiscard]] bool covers(const Point<double, 2>& screen) const override;
    bool mapToPicture(const Point<double, 2>& screen, Point<double, 2>& picture) const override;

private:
    CustomPlanarScreenToChannelMap m_map;
    Point<double, 2> m_size;  ///< of the picture, pixels
};

}  // namespace Veltrani::DisplayReport
