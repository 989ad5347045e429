#include "DisplayFit/DisplayFitter.h"

#include "Common/Finite.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/IUnitsConfig.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayFit/detail/ChannelFitter.h"
#include "DisplayFit/detail/ChannelSetup.h"
#include "DisplayFit/detail/FitPoints.h"
#include "DisplayFit/detail/PointFaults.h"
#include "DisplayFit/detail/PointMistakes.h"
#include "ScreenManager/DisplayKinds.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace Veltrani::DisplayFit {

namespace {

using DisplayFitDetail::ChannelSetup;
using DisplayFitDetail::FitPoints;

const ProjectorConfig& channelOf(const XMLConfigManager& config, const std::vector<std::wstring>& ids,
                                 std::size_t channel) {
    const ProjectorConfig* const projector = config.getProjectorConfig(ids[channel]);
    if (projector == nullptr) {
        throw VeltraniException(__FILE__, __LINE__, L"Fit: no entry for the projector \"" + ids[channel] + L"\"");
    }
    return *projector;
}

std::map<std::size_t, FitPoints> byChannel(std::span<const MeasuredPoint> points, const FitOptions& options) {
    const std::vector<std::size_t>& channels = options.channels;
    std::map<std::size_t, FitPoints> sorted;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const MeasuredPoint& point = points[i];
        if (!channels.empty() && std::find(channels.begin(), channels.end(), point.channel) == channels.end()) {
            continue;
        }
        FitPoints& own = sorted[point.channel];
        if (own.size() == 0) {
            own.pulse = options.pulse;
        }
        own.pulseAt(i);
        own.picture.push_back(point.picture);
        own.world.push_back(point.world);
        if (point.covariance) {
            own.covariance.push_back(*point.covariance);
        }
        if (point.pictureDeviation) {
            own.pictureDeviation.push_back(*point.pictureDeviation);
        }
        own.given.push_back(i);
        own.rows.push_back(point.row);
    }
    return sorted;
}

}  // namespace

DisplayFitter::DisplayFitter(FitOptions options, Progress progress)
    : m_options(std::move(options)), m_progress(std::move(progress)) {
    if (!(m_options.rejection > 0)) {
        throw VeltraniException(__FILE__, __LINE__,
                                L"Fit: points are rejected above " + std::to_wstring(m_options.rejection) +
                                    L" standard deviations, expected more than 0");
    }
}

DisplayFitResult DisplayFitter::fit(const XMLConfigManager& config, std::span<const MeasuredPoint> points) const {
    const DisplayKind* const kind = DisplayKind::of(config);
    if (kind == nullptr) {
        throw VeltraniException(__FILE__, __LINE__, L"Fit: the display has no target data of a known type");
    }
    const std::vector<std::wstring> ids = config.getProjectorConfigIds();
    DisplayFitDetail::requireSound(points, ids.size(), m_options.pulse);
    const auto sorted = byChannel(points, m_options);
    DisplayFitResult result;
    if (const IUnitsConfig* const units = config.getNativeUnitsConfig()) {
        result.unit = Veltrani::toUtf8(units->getUnitName());
    }
    std::map<std::size_t, ChannelSetup> setups;
    for (const auto& [channel, own] : sorted) {
        setups.try_emplace(channel, config, *kind, channelOf(config, ids, channel));
    }
    result.channels.reserve(sorted.size());
    for (const auto& [channel, own] : sorted) {
        if (m_progress) {
            m_progress(result.channels.size(), sorted.size());
        }
        ChannelFit fit;
        fit.channel = channel;
        fit.name = Veltrani::toUtf8(channelOf(config, ids, channel).getName());
        fit.projectorId = Veltrani::toUtf8(ids[channel]);
        DisplayFitDetail::ChannelFitter(setups.at(channel), own, m_options, result.unit).fit(fit);
        result.channels.push_back(std::move(fit));
    }
    DisplayFitDetail::nameMistakes(setups, sorted, points, result);
    if (m_progress) {
        m_progress(sorted.size(), sorted.size());
    }
    return result;
}

SolvedGroups DisplayFitter::defaultGroups(const XMLConfigManager& config, const ProjectorConfig& projector) {
    const DisplayKind* const kind = DisplayKind::of(config);
    return kind != nullptr ? ChannelSetup(config, *kind, projector).groups() : SolvedGroups{};
}

}  // namespace Veltrani::DisplayFit
