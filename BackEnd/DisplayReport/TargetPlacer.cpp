#include "DisplayReport/TargetPlacer.h"

#include "Common/Utf8.h"
#include "Configuration/BaseConfig.h"
#include "Configuration/IUnitsConfig.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/TargetLocatorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/GeometryText.h"
#include "DisplayReport/ScreenArea.h"
#include "KelvoScreen/ScreenGeometry.h"
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

std::string whyNothingWasPlaced(const ScreenGeometry& surface, const ScreenArea& area) {
    for (const std::string& reason : {missingParameters(surface), area.fault()}) {
        if (!reason.empty()) {
            return reason;
        }
    }
    return "none of its grid targets lies on the screen";
}

/// Kinds of target data that the screen areas alone decide.
bool isPlanar(const std::wstring& targetData) {
    return targetData == BaseConfig::TARGET_DATA_PLANAR_BASIC || targetData == BaseConfig::TARGET_DATA_PLANAR_ADVANCED;
}

std::string remarkOn(const TargetLocatorConfig* targets) {
    const std::wstring type = targets == nullptr ? std::wstring() : targets->getTargetDataType();
    if (type.empty() || isPlanar(type)) {
        return {};
    }
    return "the target data is " + toUtf8(type) + "; the targets were placed by the screen areas";
}

}  // namespace

TargetPlacer::TargetPlacer(const TargetPlan& plan, Progress progress) : m_plan(plan), m_progress(std::move(progress)) {}

TargetSurvey TargetPlacer::place(const XMLConfigManager& config) const {
    TargetSurvey survey;
    survey.plan = m_plan;
    if (const IUnitsConfig* units = config.getNativeUnitsConfig()) {
        survey.unit = toUtf8(units->getUnitName());
    }
    survey.remark = remarkOn(config.getTargetLocatorConfig());
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
        channel.fault = area.fault();
        return channel;
    }
    const auto surface = ScreenManager::getInstance()->getScreenGeometry();
    if (!surface) {
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
    if (channel.grid.empty()) {
        channel.fault = whyNothingWasPlaced(*surface, area);
    }
    return channel;
}

}  // namespace Veltrani::DisplayReport
