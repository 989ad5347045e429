#include "DisplayReport/targets/TargetPlacer.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/IUnitsConfig.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/basics/Fault.h"
#include "DisplayReport/basics/GeometryText.h"
#include "DisplayReport/channels/ChannelChoice.h"
#include "DisplayReport/channels/ChannelLocator.h"
#include "DisplayReport/channels/ScreenArea.h"
#include "DisplayReport/maps/LayoutMapper.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/TargetLocator.h"

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

/// Sample i of n over [0, 1]; a single sample stands at 0, as the grid of the screen has it.
double normalised(int i, int n) {
    return n == 1 ? 0.0 : static_cast<double>(i) / (n - 1);
}

/// The place of a row upwards, as every report counts it, wherever the locator has its first row.
double upwards(int row, int rows, bool firstRowIsAtTheTop) {
    if (!firstRowIsAtTheTop) {
        return normalised(row, rows);
    }
    return rows == 1 ? 1.0 : normalised(rows - 1 - row, rows);
}

std::size_t product(int a, int b) {
    return static_cast<std::size_t>(a) * static_cast<std::size_t>(b);
}

/// Why nothing lies on the screen.
std::string whyEverythingMisses(const XMLConfigManager& config, const ProjectorConfig& projector,
                                const LocatorKind& kind, const TargetPlan& plan, const ScreenGeometry& surface) {
    const std::string what = kind.offersGrid ? "none of its grid targets" : "nothing of its outline";
    if (kind.looksThroughFrustum()) {
        return plan.columns == 1 || plan.rows == 1
                   ? "a grid of one column or one row has no extent in a frustum: ask for two at least"
                   : what + " lies on the screen: check its position, orientation and frustum";
    }
    const std::string planar = isPlanarDisplay(config) ? screenAreaOf(projector).fault() : std::string();
    for (const std::string& reason : {kind.offersGrid ? missingParameters(surface) : std::string(), planar}) {
        if (!reason.empty()) {
            return reason;
        }
    }
    return what + " lies on the screen";
}

}  // namespace

TargetPlacer::TargetPlacer(const TargetPlan& plan, Progress progress) : m_plan(plan), m_progress(std::move(progress)) {}

TargetSurvey TargetPlacer::place(XMLConfigManager& config) const {
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
            survey.channels.push_back(placeChannel(config, ChannelChoice{i, projector}));
        }
    }
    if (m_progress) {
        m_progress(ids.size(), ids.size());
    }
    return survey;
}

ChannelTargets TargetPlacer::placeChannel(XMLConfigManager& config, const ChannelChoice& choice) const {
    const ProjectorConfig& projector = *choice.projector;
    ChannelTargets channel;
    channel.name = toUtf8(projector.getName());
    channel.projectorId = toUtf8(projector.getIdentity());
    channel.gridMissed = product(m_plan.columns, m_plan.rows);
    constexpr int EDGES = 4;
    channel.boundaryMissed = product(EDGES, m_plan.boundarySamples);

    const auto [locator, missing] = ChannelLocator::of(config, projector);
    if (!locator) {
        channel.fault = missing;
        return channel;
    }
    const auto surface = ScreenManager::getInstance()->getScreenGeometry();
    if (!surface) {
        channel.fault = "there is no screen to place targets on";
        return channel;
    }
    const LocatorKind& kind = LocatorKind::of(*locator);
    if (kind.path == LocatorKind::Path::UNKNOWN) {
        channel.fault =
            "nothing is known about its kind of target locator: which targets it places where in the picture";
        return channel;
    }
    channel.boundaryMissed = kind.outlineSamples(*locator, m_plan.boundarySamples);
    try {
        if (kind.offersGrid) {
            placeGrid(*locator, kind, channel);
        } else {
            placeGridThroughMap(config, choice, kind, channel);
        }
        channel.boundary = locator->projectBoundaryOnTargetLocationSurface(m_plan.boundarySamples);
    } catch (...) {
        channel.fault = sentenceOf(faultOf({}, std::current_exception()));
        return channel;
    }
    channel.boundaryMissed -= std::min(channel.boundaryMissed, channel.boundary.size());
    const bool isOutlineWanted = m_plan.boundarySamples > 0;
    const bool nothingLands =
        channel.grid.empty() && (kind.offersGrid || (isOutlineWanted && channel.boundary.empty()));
    if (nothingLands) {
        channel.fault = whyEverythingMisses(config, projector, kind, m_plan, *surface);
    }
    return channel;
}

void TargetPlacer::placeGrid(const TargetLocator& locator, const LocatorKind& kind, ChannelTargets& channel) const {
    std::map<Point<int, 2>, Point<double, 3>> grid;
    locator.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, m_plan.columns, m_plan.rows, grid);
    channel.grid.reserve(grid.size());
    for (const auto& [index, point] : grid) {
        GridTarget target = targetAt(index[0], index[1], kind);
        target.point = point;
        channel.grid.push_back(target);
    }
    channel.gridMissed -= channel.grid.size();
}

void TargetPlacer::placeGridThroughMap(XMLConfigManager& config, const ChannelChoice& choice, const LocatorKind& kind,
                                       ChannelTargets& channel) const {
    std::vector<GridTarget> targets;
    std::vector<Point<double, 2>> picture;
    for (int column = 0; column < m_plan.columns; ++column) {
        for (int row = 0; row < m_plan.rows; ++row) {
            targets.push_back(targetAt(column, row, kind));
            picture.push_back(targets.back().picture);
        }
    }
    std::vector<LayoutPoint> layout(picture.size());
    try {
        LayoutMapper(config, choice, false).toLayout(picture, layout);
    } catch (const VeltraniExceptionBase&) {
        // Its outline does not need the map, which may fail for the sake of another channel.
        channel.gridMissed = 0;
        channel.remark = "its projection model offers no grid, and there is none through its layout map: " +
                         sentenceOf(faultOf({}, std::current_exception()));
        return;
    }
    for (std::size_t i = 0; i < targets.size(); ++i) {
        if (layout[i].isMapped) {
            targets[i].point = layout[i].point;
            channel.grid.push_back(targets[i]);
        }
    }
    channel.gridMissed -= channel.grid.size();
    channel.remark = "its projection model offers no grid: its targets were placed through its layout map";
}

GridTarget TargetPlacer::targetAt(int column, int row, const LocatorKind& kind) const {
    return {column, row, {normalised(column, m_plan.columns), upwards(row, m_plan.rows, kind.firstRowIsAtTheTop)}, {}};
}

}  // namespace Veltrani::DisplayReport
