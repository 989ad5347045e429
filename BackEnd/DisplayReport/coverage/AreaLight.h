#pragma once

#include "DisplayReport/coverage/ParameterLight.h"
#include "ScreenManager/PlanarTargetLocator.h"

namespace Veltrani::DisplayReport {

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

}  // namespace Veltrani::DisplayReport
