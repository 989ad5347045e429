#pragma once

#include "DisplayReport/channels/ChannelLocator.h"
#include "DisplayReport/channels/ScreenLoader.h"
#include "DisplayReport/coverage/ChannelLight.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/SphereTargetLocator.h"
#include "ScreenManager/TargetLocatorManager.h"
#include "support/Displays.h"
#include "support/LogTrap.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

/// Displays with known light, for the tests of coverage.
class LitDisplayTest : public testing::Test {
protected:
    using P2 = Point<double, 2>;
    using P3 = Point<double, 3>;
    using Lights = Veltrani::DisplayReport::ChannelLights;

    ~LitDisplayTest() override {
        TargetLocatorManager::deleteInstance();
        ScreenManager::deleteInstance();
    }

    /// Loads a display and its screen, from a folder of its own.
    void load(const std::string& screen, const std::string& projectors,
              const std::string& targets = "<TargetData type='PlanarBasic'/>") {
        m_config = XMLConfigFile::load(m_folder.write("display.xml", displays::text(screen, projectors, targets)));
        ASSERT_TRUE(Veltrani::DisplayReport::ScreenLoader::load(*m_config).empty());
    }

    /// The light of every channel of the display that was loaded.
    [[nodiscard]] Lights lights() const {
        Lights lights;
        for (const std::wstring& id : m_config->getProjectorConfigIds()) {
            const auto channel =
                Veltrani::DisplayReport::ChannelLocator::of(*m_config, *m_config->getProjectorConfig(id));
            EXPECT_EQ(channel.fault, "");
            lights.push_back(Veltrani::DisplayReport::ChannelLight::of(channel.locator, surface()));
        }
        return lights;
    }

    [[nodiscard]] static std::shared_ptr<const ScreenGeometry> surface() {
        return ScreenManager::getInstance()->getScreenGeometry();
    }

    /// Every point of a lattice over the picture that lands must be lit; answers how many do.
    static int expectLitWhereItLands(const Veltrani::DisplayReport::ChannelLight& light) {
        int landed = 0;
        for (int row = 0; row <= 20; ++row) {
            for (int column = 0; column <= 30; ++column) {
                // Off the very edges, which rounding may put on either side.
                const P2 picture{0.001 + 0.998 * column / 30, 0.001 + 0.998 * row / 20};
                const auto landing = light.landingOf(picture);
                EXPECT_TRUE(!landing.hits || light.lights(landing.on)) << picture[0] << ' ' << picture[1];
                landed += landing.hits ? 1 : 0;
            }
        }
        return landed;
    }

    /// The light of a camera in the middle of the screen (half its width and height in degrees), whose headings a table
    /// bends: 90 degrees to the side become `corrected`. The configuration knows tables with a mirror alone; made by
    /// hand, a camera may have one without.
    [[nodiscard]] static std::unique_ptr<Veltrani::DisplayReport::ChannelLight> bentLight(double halfWidth,
                                                                                          double halfHeight,
                                                                                          double corrected) {
        const SphereTargetLocatorParams camera(
            {0, 0, 0}, radians(-halfWidth), radians(halfWidth), radians(-halfHeight), radians(halfHeight), 0, 0, 0, {},
            {{radians(-90), radians(-corrected)}, {radians(90), radians(corrected)}});
        return Veltrani::DisplayReport::ChannelLight::of(std::make_shared<SphereTargetLocator>(camera), surface());
    }

    /// A frustum in degrees and whatever else there is.
    static std::string camera(const std::string& id, const std::string& left, const std::string& right,
                              const std::string& bottom, const std::string& top, const std::string& further = "") {
        return displays::projector(id, further + "<Frustum left='" + left + "' right='" + right + "' bottom='" +
                                           bottom + "' top='" + top + "'/>");
    }

    static double radians(double degrees) { return degrees * std::numbers::pi / 180; }

    /// The solid angle of a frustum that is symmetric both ways, by its half angles in degrees.
    static double solidAngle(double halfWidth, double halfHeight) {
        return 4 * std::asin(std::sin(radians(halfWidth)) * std::sin(radians(halfHeight)));
    }

    TemporaryFolder m_folder;
    // At info the library tells of every ray that a table bends.
    LogTrap m_log{log4cxx::Level::getWarn()};
    std::unique_ptr<XMLConfigFile> m_config;
};

namespace displays {

inline const std::string SPHERICAL = "<TargetData type='Spherical'/>";
inline const std::string PROJECTORS = "<TargetData type='ProjectorCentric'/>";

/// A mesh file of the folder.
inline const std::string MESH =
    "<Screen shape='Mesh' fileUnit='m'><ContentMesh file='wall.obj'/>"
    "<ImportOrientation up='Z' forward='Y'/></Screen>";

/// A wall of 4 x 4 at y = 5 and, in front of it at y = 2.5, a panel of 1 x 1, both around the y axis.
inline const std::string PANEL_OBJ =
    "v -2 5 -2\nv 2 5 -2\nv 2 5 2\nv -2 5 2\n"
    "v -0.5 2.5 -0.5\nv 0.5 2.5 -0.5\nv 0.5 2.5 0.5\nv -0.5 2.5 0.5\n"
    "f 1 2 3\nf 1 3 4\nf 5 6 7\nf 5 7 8\n";

}  // namespace displays
