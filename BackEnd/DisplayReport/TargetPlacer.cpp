#include "DisplayReport/TargetPlacer.h"

#include "Common/Utf8.h"
#include "Configuration/IUnitsConfig.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/ScreenArea.h"
#include "ScreenManager/PlanarTargetLocator.h"
#include "ScreenManager/ScreenManager.h"

#include <map>
#include <string>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

/// Sample i of n over [0, 1]; a single sample stands at 0, as the grid of the screen has it.
double normalised(int i, int n) {
    return n == 1 ? 0.0 : static_cast<double>(i) / (n - 1);
}

std::size_t product(int a, int b) {
    return static_cast<std::size_t>(a) * static_cast<std::size_t>(b);
}

}  // namespace

TargetPlacer::TargetPlacer(const TargetPlan& plan, Progress progress) : m_plan(plan), m_progress(std::move(progress)) {}

TargetSurvey TargetPlacer::place(const XMLConfigManager& config) const {
    TargetSurvey survey;
    survey.plan = m_plan;
    if (const IUnitsConfig* units = config.getNativeUnitsConfig()) {
        survey.unit = toUtf8(units->getUnitName());
    }
    const auto ids = config.getProjectorConfigIds();
    for (std::size_t i = 0; i < ids.size(); ++i) {
        if (m_progress) {
            m_progress(i, ids.size());
        }
        if (const ProjectorConfig* projector = config.getProjectorConfig(ids[i])) {
            survey.channels.push_back(placeChannel(*projector));
        }
    }
    if (m_progress) {
        m_progress(ids.size(), ids.size());
    }
    return survey;
}

ChannelTargets TargetPlacer::placeChannel(const ProjectorConfig& projector) const {
    ChannelTargets channel;
    channel.name = toUtf8(projector.getName());
    channel.projectorId = toUtf8(projector.getIdentity());
    channel.gridMissed = product(m_plan.columns, m_plan.rows);
    constexpr int EDGES = 4;
    channel.boundaryMissed = product(EDGES, m_plan.boundarySamples);

    const ScreenArea area = screenAreaOf(projector);
    if (!area.complete()) {
        channel.fault = area.describe() + ": give the channel a ScreenArea with left, right, bottom and top";
        return channel;
    }
    if (!ScreenManager::getInstance()->getScreenGeometry()) {
        channel.fault = "there is no screen to place targets on";
        return channel;
    }
    const PlanarTargetLocator locator(PlanarTargetLocatorParams(area.left, area.right, area.bottom, area.top));

    std::map<Point<int, 2>, Point<double, 3>> grid;
    locator.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, m_plan.columns, m_plan.rows, grid);
    channel.boundary = locator.projectBoundaryOnTargetLocationSurface(m_plan.boundarySamples);

    channel.grid.reserve(grid.size());
    for (const auto& [index, point] : grid) {
        channel.grid.push_back(
            {index[0], index[1], {normalised(index[0], m_plan.columns), normalised(index[1], m_plan.rows)}, point});
    }
    channel.gridMissed -= channel.grid.size();
    channel.boundaryMissed -= channel.boundary.size();
    if (channel.grid.empty() && channel.boundary.empty()) {
        channel.fault = "none of its targets lies on the screen";
    }
    return channel;
}

}  // namespace Veltrani::DisplayReport
