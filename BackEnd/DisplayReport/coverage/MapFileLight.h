#pragma once

#include "DisplayReport/coverage/ParameterLight.h"
#include "KelvoControl/CustomPlanarScreenToChannelMap.h"
#include "ScreenManager/CustomPlanarTargetLocator.h"

namespace Veltrani::DisplayReport {

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
