#include "ScreenManager/ProjectorCentricLayoutToChannelMap.h"

#include "Configuration/ProjectorConfig.h"
#include "KelvoControl/KelvoProjector.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/detail/ChannelEntries.h"

namespace {

/// Uses the model of a channel once. The model is fetched anew each time and released afterwards: a blend may change
/// its model, and the map must not keep an old one alive.
template <class Use>
bool withModel(const KelvoProjector& owner, Use&& use) {
    const std::shared_ptr<ProjectionModel> model = owner.getBlend().getProjectionModel();
    return model && use(*model);
}

bool pictureWidth(const KelvoProjector& owner, double& width) {
    return withModel(owner, [&](const ProjectionModel& model) {
        width = model.viewport().width;
        return true;
    });
}

bool pictureHeight(const KelvoProjector& owner, double& height) {
    return withModel(owner, [&](const ProjectionModel& model) {
        height = model.viewport().height;
        return true;
    });
}

}  // namespace

// The table is taken as every kind takes it, by value, and let go again.
ProjectorCentricLayoutToChannelMap::ProjectorCentricLayoutToChannelMap(
    XMLConfigManager* config,
    std::shared_ptr<KelvoControl::Configuration> channelMapConfig)  // NOLINT(performance-unnecessary-value-param)
    : LayoutToChannelMap(config),
      m_blendOwners(Veltrani::ScreenManagerDetail::blendOwners(config, channelMapConfig.get())) {
    for (std::size_t i = 0; i < projectors().size(); ++i) {
        m_positions.push_back(Veltrani::ScreenManagerDetail::requireRecord(projectors()[i], i).getPosition());
    }
}

bool ProjectorCentricLayoutToChannelMap::mapLayoutToChannel(const Point<double, 3>& layout, Point<double, 2>& channel,
                                                            std::size_t channelIndex) {
    const KelvoProjector& owner = *m_blendOwners[channelIndex];
    Point<int, 2> pixel;
    double width = 0;
    double height = 0;
    // The model itself subtracts the projector's position from the layout point.
    const bool isProjected =
        withModel(owner, [&](const ProjectionModel& model) { return model.project(layout, pixel); });
    if (!isProjected || !pictureWidth(owner, width) || !pictureHeight(owner, height)) {
        return false;
    }
    channel = {pixel[0] / width, pixel[1] / height};
    return true;
}

bool ProjectorCentricLayoutToChannelMap::mapChannelToLayout(const Point<double, 2>& channel, Point<double, 3>& layout,
                                                            std::size_t channelIndex) {
    const KelvoProjector& owner = *m_blendOwners[channelIndex];
    double width = 0;
    double height = 0;
    if (!pictureHeight(owner, height) || !pictureWidth(owner, width)) {
        return false;
    }
    const Point<double, 2> pixel{width * channel[0], height * channel[1]};
    Point<double, 3> direction;
    if (!withModel(owner, [&](const ProjectionModel& model) { return model.unprojectPixel(pixel, direction); })) {
        return false;
    }
    const std::shared_ptr<ScreenGeometry> screen = ScreenManager::getInstance()->getScreenGeometry();
    if (!screen) {
        return false;
    }
    const Point<double, 3>& position = m_positions[channelIndex];
    const IntersectionSet intersections = screen->intersect(position, position + direction);
    if (intersections.empty()) {
        return false;
    }
    layout = intersections.first().point;
    return true;
}
