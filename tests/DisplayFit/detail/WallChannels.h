#pragma once

#include "Configuration/ProjectorConfig.h"
#include "DisplayFit/MeasuredPoint.h"
#include "DisplayFit/detail/ChannelSetup.h"
#include "DisplayFit/detail/ConfiguredLight.h"
#include "DisplayFit/detail/FitPoints.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/ScreenManager.h"
#include "support/Displays.h"
#include "support/LogTrap.h"

#include <cstddef>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

/// A wall four wide and two high, around (0, 5, 1), with channels of areas; the screen of the process while it lives.
class WallChannels {
public:
    /// @param areas left, right, bottom and top of each
    explicit WallChannels(const std::vector<std::string>& areas = {"left='0' right='1' bottom='0' top='1'"}) {
        std::string projectors;
        for (std::size_t i = 0; i < areas.size(); ++i) {
            projectors +=
                displays::projector(std::string(1, static_cast<char>('A' + i)), "<ScreenArea " + areas[i] + "/>");
        }
        m_config = displays::parsed(displays::FLAT, projectors);
        ScreenManager::getInstance()->setScreenGeometry(m_config.get(), true);
        for (const std::wstring& id : m_config->getProjectorConfigIds()) {
            m_setups.emplace(m_setups.size(),
                             Veltrani::DisplayFitDetail::ChannelSetup(*m_config, *DisplayKind::of(*m_config),
                                                                      *m_config->getProjectorConfig(id)));
        }
    }
    WallChannels(const WallChannels&) = delete;
    WallChannels& operator=(const WallChannels&) = delete;
    ~WallChannels() { ScreenManager::deleteInstance(); }

    [[nodiscard]] const Veltrani::DisplayFitDetail::ChannelSetup& setup(std::size_t channel = 0) const {
        return m_setups.at(channel);
    }

    /// Where the wall has the parameters (s, t).
    [[nodiscard]] static Point<double, 3> at(double s, double t) { return {-2 + 4 * s, 5, 2 * t}; }

    /// Points of a channel on a grid over its picture, where its light lands; lines from 2 on.
    [[nodiscard]] std::vector<Veltrani::DisplayFit::MeasuredPoint> measured(int columns, int rows,
                                                                            std::size_t channel = 0) const {
        const auto& area = setup(channel).values().area;
        std::vector<Veltrani::DisplayFit::MeasuredPoint> points;
        for (int i = 0; i < columns * rows; ++i) {
            Veltrani::DisplayFit::MeasuredPoint point;
            point.channel = channel;
            point.picture = {(i % columns) / (columns - 1.0), (i / columns) / (rows - 1.0)};
            point.world = at(area.left + (area.right - area.left) * point.picture[0],
                             area.bottom + (area.top - area.bottom) * point.picture[1]);
            point.row = points.size() + 2;
            points.push_back(point);
        }
        return points;
    }

    /// Those of a channel, as a fit has them.
    [[nodiscard]] static Veltrani::DisplayFitDetail::FitPoints of(
        const std::vector<Veltrani::DisplayFit::MeasuredPoint>& measured, std::size_t channel = 0) {
        Veltrani::DisplayFitDetail::FitPoints points;
        for (std::size_t i = 0; i < measured.size(); ++i) {
            if (measured[i].channel == channel) {
                points.picture.push_back(measured[i].picture);
                points.world.push_back(measured[i].world);
                points.given.push_back(i);
                points.rows.push_back(measured[i].row);
            }
        }
        return points;
    }
    [[nodiscard]] Veltrani::DisplayFitDetail::ConfiguredLight lightOf(
        const std::vector<Veltrani::DisplayFit::MeasuredPoint>& measured, std::size_t channel = 0) const {
        return {setup(channel), of(measured, channel)};
    }

private:
    LogTrap m_log;
    std::unique_ptr<XMLConfigFile> m_config;
    std::map<std::size_t, Veltrani::DisplayFitDetail::ChannelSetup> m_setups;
};
