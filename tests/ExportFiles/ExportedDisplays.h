#pragma once

#include "Configuration/XMLConfigFile.h"
#include "DisplayExport/ChannelSight.h"
#include "DisplayExport/ChannelWarp.h"
#include "DisplayExport/ContentInput.h"
#include "DisplayReport/channels/ChannelChoice.h"
#include "DisplayReport/channels/ScreenLoader.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/TargetLocatorManager.h"
#include "support/LogTrap.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

/// Small displays with one channel, for tests of what is written of them.
namespace exported_displays {

/// A wall of 4 by 2 m at y = 5; its channel has the picture of 32 x 16 pixels on the left three quarters of it.
inline const std::string WALL =
    "<Display version='1' lengthUnit='m'><Units native='m'/><Screen shape='Flat'><Centre x='0' y='5' z='1'/>"
    "<Size width='4' height='2'/></Screen><TargetData type='PlanarBasic'/><Projectors><Projector id='P1'>"
    "<Name>Left</Name><Resolution width='32' height='16'/><ScreenArea left='0' right='0.75' bottom='0' top='1'/>"
    "<Layout xMin='0' xMax='3' yMin='0' yMax='2'/></Projector></Projectors></Display>";

/// A closed cylinder; its channel looks back, over the seam of a panorama, with a picture of 40 x 20 pixels.
inline const std::string BEHIND =
    "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><Screen shape='Sphere'>"
    "<Centre x='0' y='0' z='0'/><Radius value='4'/></Screen><TargetData type='Spherical'/><Projectors>"
    "<Projector id='P1'><Name>Back</Name><Resolution width='40' height='20'/><Orientation z='180' x='0' y='0'/>"
    "<Frustum left='-40' right='40' bottom='-20' top='20'/></Projector></Projectors></Display>";

/// The channel of a display, with its screen.
class ExportedChannel {
public:
    explicit ExportedChannel(const std::string& display) : m_config(XMLConfigFile::parse(display, "display.xml")) {
        EXPECT_TRUE(Veltrani::DisplayReport::ScreenLoader::load(*m_config).empty());
    }
    ~ExportedChannel() {
        TargetLocatorManager::deleteInstance();
        ScreenManager::deleteInstance();
    }
    ExportedChannel(const ExportedChannel&) = delete;
    ExportedChannel& operator=(const ExportedChannel&) = delete;

    [[nodiscard]] XMLConfigFile& config() const { return *m_config; }
    [[nodiscard]] Veltrani::DisplayReport::ChannelChoice choice() const {
        return Veltrani::DisplayReport::ChannelChoice::of(*m_config, "P1");
    }

    [[nodiscard]] Veltrani::DisplayExport::ChannelWarp warp(Veltrani::DisplayExport::InputKind kind,
                                                            const Veltrani::DisplayExport::WarpRequest& request) const {
        const Veltrani::DisplayExport::ChannelSight sight(*m_config, choice());
        Veltrani::DisplayExport::InputChoice input;
        input.kind = kind;
        return Veltrani::DisplayExport::ChannelWarp::of(
            sight, Veltrani::DisplayExport::ContentInput(*m_config, sight, input), request);
    }

private:
    const LogTrap m_log{log4cxx::Level::getWarn()};
    std::unique_ptr<XMLConfigFile> m_config;
};

[[nodiscard]] inline Veltrani::DisplayExport::WarpRequest nodes(int columns, int rows) {
    Veltrani::DisplayExport::WarpRequest request;
    request.places = Veltrani::DisplayExport::WarpRequest::Places::NODES;
    request.nodes = {columns, rows};
    return request;
}

[[nodiscard]] inline Veltrani::DisplayExport::WarpRequest pixels(bool withPoints) {
    Veltrani::DisplayExport::WarpRequest request;
    request.places = Veltrani::DisplayExport::WarpRequest::Places::PIXELS;
    request.withPoints = withPoints;
    return request;
}

}  // namespace exported_displays
