#pragma once

#include "DisplayExport/PictureWay.h"
#include "ScreenManager/CustomPlanarTargetLocator.h"
#include "ScreenManager/PlanarTargetLocator.h"

namespace Veltrani::DisplayExport {

/// A picture that is laid out in the 2D coordinates of the screen.
class ScreenCoordinateWay : public PictureWay {
public:
    void follow(std::span<const Point<double, 2>> picture, std::span<Arrival> arrivals) const override;
    [[nodiscard]] Arrival continued(const Point<double, 2>& picture) const override;
    [[nodiscard]] bool goesThroughScreenCoordinates() const override { return true; }

protected:
    explicit ScreenCoordinateWay(std::shared_ptr<const ScreenGeometry> surface);

    /// The screen coordinates of a picture point, which may lie outside of the screen; false when it has none.
    virtual bool mapToScreen(const Point<double, 2>& picture, Point<double, 2>& screen) const = 0;

private:
    enum class Beyond { NOTHING, CONTINUATION };
    [[nodiscard]] Arrival arrivalOf(const Point<double, 2>& picture, Beyond beyond) const;

    std::shared_ptr<const ScreenGeometry> m_surface;
};

/// A picture that fills a rectangle of the screen's 2D coordinates.
class AreaWay : public ScreenCoordinateWay {
public:
    AreaWay(const PlanarTargetLocatorParams& area, std::shared_ptr<const ScreenGeometry> surface);

protected:
    bool mapToScreen(const Point<double, 2>& picture, Point<double, 2>& screen) const override;

private:
    PlanarTargetLocatorParams m_area;
};

/// A picture that a map file carries to the screen's 2D coordinates.
class MapFileWay : public ScreenCoordinateWay {
public:
    /// @param locator not null
    MapFileWay(std::shared_ptr<const CustomPlanarTargetLocator> locator, std::shared_ptr<const ScreenGeometry> surface);

protected:
    bool mapToScreen(const Point<double, 2>& picture, Point<double, 2>& screen) const override;

private:
    std::shared_ptr<const CustomPlanarTargetLocator> m_locator;
};

}  // namespace Veltrani::DisplayExport
