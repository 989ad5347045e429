#include "ScreenManager/CustomPlanarLayoutToChannelMap.h"

#include "Common/VeltraniException.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "KelvoControl/CustomPlanarScreenToChannelMap.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/detail/ChannelEntries.h"

namespace {

std::wstring mapFileOf(const ProjectorConfig& projector) {
    std::wstring file = projector.getCustomPlanarFile();
    if (file.empty()) {
        throw VeltraniMissingFileException(L"Channel \"" + projector.getName() + L"\" (" + projector.getIdentity() +
                                           L") has no custom planar map file; the layout map needs one");
    }
    return file;
}

/// Returns false for NaN.
bool isWithin(const Point<double, 2>& point, double xMax, double yMax) {
    return point[0] >= 0.0 && point[1] >= 0.0 && point[0] <= xMax && point[1] <= yMax;
}

}  // namespace

CustomPlanarLayoutToChannelMap::CustomPlanarLayoutToChannelMap(XMLConfigManager* config) : LayoutToChannelMap(config) {
    for (const std::wstring& id : projectorIds()) {
        const ProjectorConfig& projector =
            Veltrani::ScreenManagerDetail::requireRecord(config->getProjectorConfig(id), m_transforms.size());
        const std::wstring file = config->processPath(mapFileOf(projector));
        m_transforms.push_back(
            std::make_shared<CustomPlanarScreenToChannelMap>(file, ScreenManager::getInstance()->getScreenGeometry()));
        const int width = projector.getWidth();
        const int height = projector.getHeight();
        m_resolutions.emplace_back(width, height);
    }
}

bool CustomPlanarLayoutToChannelMap::mapLayoutToChannel(const Point<double, 3>& layout, Point<double, 2>& channel,
                                                        std::size_t channelIndex) {
    const double width = m_resolutions[channelIndex][0];
    const double height = m_resolutions[channelIndex][1];
    Point<double, 2> pixel;
    if (!m_transforms[channelIndex]->mapScreen2DToChannel2D({layout[0], layout[2]}, pixel) ||
        !isWithin(pixel, width, height)) {
        return false;
    }
    channel = {pixel[0] / width, pixel[1] / height};
    return true;
}

bool CustomPlanarLayoutToChannelMap::mapChannelToLayout(const Point<double, 2>& channel, Point<double, 3>& layout,
                                                        std::size_t channelIndex) {
    const double width = m_resolutions[channelIndex][0];
    const double height = m_resolutions[channelIndex][1];
    Point<double, 2> screen;
    if (!m_transforms[channelIndex]->mapChannel2DToScreen2D({width * channel[0], height * channel[1]}, screen) ||
        !isWithin(screen, 1.0, 1.0)) {
        return false;
    }
    layout = {screen[0], 0.0, screen[1]};
    return true;
}
