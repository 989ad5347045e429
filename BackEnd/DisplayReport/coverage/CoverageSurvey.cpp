#include "DisplayReport/coverage/CoverageSurvey.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/IUnitsConfig.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/basics/Fault.h"
#include "DisplayReport/channels/ChannelLocator.h"
#include "DisplayReport/coverage/ChannelLight.h"
#include "DisplayReport/coverage/DisplayLights.h"
#include "DisplayReport/coverage/PixelPitch.h"
#include "DisplayReport/coverage/ScreenCoverage.h"
#include "DisplayReport/coverage/ScreenSampling.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/ScreenManager.h"

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
        : m_display(DisplayLights::of(config, surface)), m_report(report) {
        for (const std::wstring& id : config.getProjectorConfigIds()) {
            if (const ProjectorConfig* projector = config.getProjectorConfig(id)) {
                addChannel(*projector);
            }
        }
    }

    void measure(const ScreenSampling& screen, const ScreenCoverage::Take& take, const Progress& progress) {
        std::vector<LandingExtent> extents;
        const ChannelLights& lights = m_display.lights;
        for (const auto& light : lights) {
            extents.push_back(LandingExtent::of(*light));
        }
        const ScreenCoverage coverage = ScreenCoverage::of(screen, lights, extents, take, progress);
        m_report.screenArea = coverage.area;
        m_report.areaByCount = coverage.byCount;
        for (std::size_t i = 0; i < lights.size(); ++i) {
            ChannelCoverage& channel = channelOf(i);
            channel.area = coverage.sharedBy[i][i];
            channel.landed = coverage.partShared[i][i];
            channel.isLighting = channel.area > 0.0;
            channel.pitch =
                measuredPitch(*lights[i], channel.width, channel.height, coverage.landed[i], coverage.hints[i]);
            for (std::size_t j = i + 1; j < lights.size(); ++j) {
                addOverlap(i, j, coverage);
            }
        }
    }

    /// To be called after everything was measured. What is wrong in the configuration of a channel is reported even
    /// where its light could be measured.
    void nameFaults(const XMLConfigManager& config) {
        for (std::size_t i = 0; i < m_display.lights.size(); ++i) {
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
    void addChannel(const ProjectorConfig& projector) {
        ChannelCoverage channel;
        channel.name = toUtf8(projector.getName());
        channel.projectorId = toUtf8(projector.getIdentity());
        channel.width = std::max(projector.getWidth(), 0);
        channel.height = std::max(projector.getHeight(), 0);
        channel.fault = m_display.faults[m_report.channels.size()];
        m_report.channels.push_back(std::move(channel));
    }

    [[nodiscard]] ChannelCoverage& channelOf(std::size_t light) { return m_report.channels[m_display.places[light]]; }

    void addOverlap(std::size_t i, std::size_t j, const ScreenCoverage& coverage) {
        // What two pictures share along an edge alone, by rounding, is no overlap.
        constexpr double LEAST_PART = 1e-6;
        const double area = coverage.sharedBy[i][j];
        if (area > LEAST_PART * std::min(coverage.sharedBy[i][i], coverage.sharedBy[j][j])) {
            m_report.overlaps.push_back(
                {m_display.places[i], m_display.places[j], area, coverage.partShared[i][j], coverage.partShared[j][i]});
        }
    }

    static std::string configurationFault(const XMLConfigManager& config, const ChannelCoverage& channel) {
        const ProjectorConfig* projector = config.getProjectorConfig(fromUtf8(channel.projectorId));
        const LocatorSource source = projector != nullptr ? locatorSourceOf(config, *projector) : LocatorSource();
        return source.faults.empty() ? std::string() : sentenceOf(source.faults.front());
    }

    DisplayLights m_display;
    CoverageReport& m_report;
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
        take = [this](const LitTriangle& piece, double, const LitBy& by) {
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
