#include "DisplayReport/coverage/CoverageSurvey.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/IUnitsConfig.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/basics/Fault.h"
#include "DisplayReport/channels/ChannelLocator.h"
#include "DisplayReport/coverage/ChannelLight.h"
#include "DisplayReport/coverage/PixelPitch.h"
#include "DisplayReport/coverage/ScreenCoverage.h"
#include "DisplayReport/coverage/ScreenSampling.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/TargetLocator.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

std::string currentFault() {
    return sentenceOf(faultOf({}, std::current_exception()));
}

/// The channels whose light is known, while a report is made of them.
class Survey {
public:
    Survey(const XMLConfigManager& config, const std::shared_ptr<const ScreenGeometry>& surface, CoverageReport& report)
        : m_surface(surface), m_report(report) {
        for (const std::wstring& id : config.getProjectorConfigIds()) {
            if (const ProjectorConfig* projector = config.getProjectorConfig(id)) {
                addChannel(config, *projector);
            }
        }
    }

    void measure(const ScreenSampling& screen, const ScreenCoverage::Take& take, const Progress& progress) {
        std::vector<LandingExtent> extents;
        for (const auto& light : m_lights) {
            extents.push_back(LandingExtent::of(*light));
        }
        const ScreenCoverage coverage = ScreenCoverage::of(screen, m_lights, extents, take, progress);
        m_report.screenArea = coverage.area;
        m_report.areaByCount = coverage.byCount;
        for (std::size_t i = 0; i < m_lights.size(); ++i) {
            ChannelCoverage& channel = channelOf(i);
            channel.area = coverage.sharedBy[i][i];
            channel.landed = coverage.partShared[i][i];
            channel.isLighting = channel.area > 0.0;
            channel.pitch =
                measuredPitch(*m_lights[i], channel.width, channel.height, coverage.landed[i], coverage.hints[i]);
            for (std::size_t j = i + 1; j < m_lights.size(); ++j) {
                addOverlap(i, j, coverage);
            }
        }
    }

    /// To be called after everything was measured. What is wrong in the configuration of a channel is reported even
    /// where its light could be measured.
    void nameFaults(const XMLConfigManager& config) {
        for (std::size_t i = 0; i < m_lights.size(); ++i) {
            ChannelCoverage& channel = channelOf(i);
            channel.fault = configurationFault(config, channel);
            if (!channel.fault.empty()) {
                continue;
            }
            if (!channel.isLighting) {
                channel.fault =
                    "nothing of its picture lies on the screen: check its position, orientation and "
                    "frustum, its area or its map";
            } else if (channel.pixels() == 0.0) {
                channel.fault = "its resolution is not known, so its pixels were not measured: give it a Resolution";
            }
        }
    }

private:
    void addChannel(const XMLConfigManager& config, const ProjectorConfig& projector) {
        ChannelCoverage channel;
        channel.name = toUtf8(projector.getName());
        channel.projectorId = toUtf8(projector.getIdentity());
        channel.width = std::max(projector.getWidth(), 0);
        channel.height = std::max(projector.getHeight(), 0);
        if (m_lights.size() == MOST_CHANNELS) {
            channel.fault = "only " + std::to_string(MOST_CHANNELS) + " channels are measured";
        } else {
            addLight(config, projector, channel.fault);
        }
        m_report.channels.push_back(std::move(channel));
    }

    /// Adds the light of the channel that is added next, or states in `fault` why there is none.
    void addLight(const XMLConfigManager& config, const ProjectorConfig& projector, std::string& fault) {
        const auto [locator, missing] = ChannelLocator::of(config, projector);
        fault = missing;
        if (!locator) {
            return;
        }
        try {
            auto light = ChannelLight::of(locator, m_surface);
            // A surface without 2D coordinates reports that at the first point.
            static_cast<void>(light->landingOf({0.5, 0.5}));
            m_lights.push_back(std::move(light));
            m_places.push_back(m_report.channels.size());
        } catch (...) {
            fault = currentFault();
        }
    }

    [[nodiscard]] ChannelCoverage& channelOf(std::size_t light) { return m_report.channels[m_places[light]]; }

    void addOverlap(std::size_t i, std::size_t j, const ScreenCoverage& coverage) {
        // What two pictures share along an edge alone, by rounding, is no overlap.
        constexpr double LEAST_PART = 1e-6;
        const double area = coverage.sharedBy[i][j];
        if (area > LEAST_PART * std::min(coverage.sharedBy[i][i], coverage.sharedBy[j][j])) {
            m_report.overlaps.push_back(
                {m_places[i], m_places[j], area, coverage.partShared[i][j], coverage.partShared[j][i]});
        }
    }

    static std::string configurationFault(const XMLConfigManager& config, const ChannelCoverage& channel) {
        const ProjectorConfig* projector = config.getProjectorConfig(fromUtf8(channel.projectorId));
        const LocatorSource source = projector != nullptr ? locatorSourceOf(config, *projector) : LocatorSource();
        return source.faults.empty() ? std::string() : sentenceOf(source.faults.front());
    }

    std::shared_ptr<const ScreenGeometry> m_surface;
    CoverageReport& m_report;
    ChannelLights m_lights;
    std::vector<std::size_t> m_places;  ///< of the lights, in the list of channels
};

}  // namespace

CoverageSurvey::CoverageSurvey(Progress progress) : m_progress(std::move(progress)) {}

CoverageSurvey& CoverageSurvey::keepPieces(std::vector<CoveredPiece>& pieces) {
    m_pieces = &pieces;
    return *this;
}

CoverageReport CoverageSurvey::of(const XMLConfigManager& config) const {
    CoverageReport report;
    if (const IUnitsConfig* units = config.getNativeUnitsConfig()) {
        report.unit = toUtf8(units->getUnitName());
    }
    const std::shared_ptr<const ScreenGeometry> surface = ScreenManager::getInstance()->getScreenGeometry();
    if (!surface) {
        report.fault = "there is no screen to light";
        return report;
    }
    Survey survey(config, surface, report);
    ScreenCoverage::Take take;
    if (m_pieces != nullptr) {
        take = [this](const LitTriangle& piece, const LitBy& by) {
            m_pieces->push_back({{piece[0].on.place, piece[1].on.place, piece[2].on.place}, by.count()});
        };
    }
    try {
        const ScreenSampling screen(surface);
        survey.measure(screen, take, m_progress);
    } catch (const VeltraniExceptionBase&) {
        report.fault = currentFault();
        return report;
    }
    survey.nameFaults(config);
    if (!(report.screenArea > 0.0)) {
        report.fault = "the screen has no area that can be measured";
    }
    return report;
}

}  // namespace Veltrani::DisplayReport
