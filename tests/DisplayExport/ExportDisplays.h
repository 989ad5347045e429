#pragma once

#include "Configuration/IScreenConfig.h"
#include "Configuration/XMLConfigFile.h"
#include "DisplayReport/channels/ChannelChoice.h"
#include "DisplayReport/channels/ChannelLocator.h"
#include "DisplayReport/channels/ScreenLoader.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/TargetLocatorManager.h"
#include "support/Displays.h"
#include "support/LogTrap.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gtest/gtest.h>

#include <memory>
#include <numbers>
#include <string>
#include <vector>

/// Displays for the tests of exports, each with its screen.
class ExportDisplayTest : public testing::Test {
protected:
    using P2 = Point<double, 2>;
    using P3 = Point<double, 3>;

    ~ExportDisplayTest() override {
        TargetLocatorManager::deleteInstance();
        ScreenManager::deleteInstance();
    }

    void load(const std::string& screen, const std::string& projectors, const std::string& targets) {
        build(XMLConfigFile::load(m_folder.write("display.xml", displays::text(screen, projectors, targets))));
    }

    void loadExample(const std::string& name) {
        build(XMLConfigFile::load(sourceFolder() + "/examples/" + name + "/display.xml"));
    }

    /// A file beside that of the display, which may name it.
    void write(const std::string& name, const std::string& text) const {
        static_cast<void>(m_folder.write(name, text));
    }

    /// One of those below, by its name, or an example.
    void loadAny(const std::string& name);

    [[nodiscard]] XMLConfigFile& config() const { return *m_config; }

    [[nodiscard]] std::vector<Veltrani::DisplayReport::ChannelChoice> channels() const {
        std::vector<Veltrani::DisplayReport::ChannelChoice> all;
        for (const std::wstring& id : m_config->getProjectorConfigIds()) {
            all.push_back({all.size(), m_config->getProjectorConfig(id)});
        }
        return all;
    }

    /// Of a channel, by its number.
    [[nodiscard]] std::shared_ptr<const TargetLocator> locator(std::size_t channel) const {
        return Veltrani::DisplayReport::ChannelLocator::of(*m_config, *channels().at(channel).projector).locator;
    }

    [[nodiscard]] P3 eyePoint() const { return m_config->getScreenConfig()->getEyePoint(); }

private:
    void build(std::unique_ptr<XMLConfigFile> config) {
        TargetLocatorManager::deleteInstance();
        m_config = std::move(config);
        ASSERT_TRUE(Veltrani::DisplayReport::ScreenLoader::load(*m_config).empty());
    }

    LogTrap m_log{log4cxx::Level::getWarn()};
    TemporaryFolder m_folder;
    std::unique_ptr<XMLConfigFile> m_config;
};

namespace exportDisplays {

/// A projector that stands at a place, looks along a heading in degrees and reaches so far to its sides.
inline std::string standing(const std::string& id, const std::string& place, const std::string& heading, int sides,
                            int heights) {
    return displays::projector(id, "<Position " + place + "/><Orientation " + heading + " y='0'/><Frustum left='-" +
                                       std::to_string(sides) + "' right='" + std::to_string(sides) + "' bottom='-" +
                                       std::to_string(heights) + "' top='" + std::to_string(heights) + "'/>");
}

/// A dome of five metres above a horizon, six projectors on its rim and one that lights the zenith.
struct Planetarium {
    static inline const std::string SCREEN =
        "<Screen shape='Sphere'><EyePoint x='0' y='-0.5' z='0.2'/><Radius value='5'/><Azimuth min='-180' max='180'/>"
        "<Elevation min='0' max='90'/></Screen>";
    static inline const std::string TARGETS = "<TargetData type='ProjectorCentric'/>";
    static std::string projectors() {
        std::string all = standing("Zenith", "x='0' y='0' z='0'", "z='0' x='90'", 40, 28);
        for (int i = 0; i < 6; ++i) {
            const double angle = i * std::numbers::pi / 3;
            all += standing("Rim" + std::to_string(i),
                            "x='" + std::to_string(-4.5 * std::sin(angle)) + "' y='" +
                                std::to_string(-4.5 * std::cos(angle)) + "' z='0.3'",
                            "z='" + std::to_string(60 * i) + "' x='28'", 32, 20);
        }
        return all;
    }
};

/// A cylinder all around, by frusta from its eye; one of them looks at the seam of a panorama, one straight up and one
/// straight down where there is no screen but at the edges of the picture.
struct Round {
    static inline const std::string SCREEN =
        "<Screen shape='Cylinder'><EyePoint x='0.1' y='0.2' z='1.6'/><Centre x='0' y='0' z='2'/><Radius value='6'/>"
        "<Size height='4'/><Azimuth min='-180' max='180'/></Screen>";
    static inline const std::string TARGETS = "<TargetData type='Spherical'/>";
    static std::string projectors() {
        std::string all;
        for (int i = 0; i < 4; ++i) {
            all += standing("Side" + std::to_string(i), "x='0.1' y='0.2' z='1.6'",
                            "z='" + std::to_string(90 * i) + "' x='0'", 47, 25);
        }
        return all;
    }
};

/// Three walls at right angles, each lit by the coordinates of the screen.
struct Cave {
    static inline const std::string SCREEN =
        "<Screen shape='Ruled'><EyePoint x='0.2' y='0.1' z='1.5'/><LowerRail><Point x='-1.5' y='-1.5' z='0'/>"
        "<Point x='-1.5' y='1.5' z='0'/><Point x='1.5' y='1.5' z='0'/><Point x='1.5' y='-1.5' z='0'/></LowerRail>"
        "<UpperRail><Point x='-1.5' y='-1.5' z='2.4'/><Point x='-1.5' y='1.5' z='2.4'/><Point x='1.5' y='1.5' z='2.4'/>"
        "<Point x='1.5' y='-1.5' z='2.4'/></UpperRail></Screen>";
    static inline const std::string TARGETS = "<TargetData type='PlanarBasic'/>";
    static std::string projectors() {
        std::string all;
        for (int i = 0; i < 3; ++i) {
            all += displays::projector("Wall" + std::to_string(i),
                                       "<ScreenArea left='" + std::to_string(i / 3.0) + "' right='" +
                                           std::to_string((i + 1) / 3.0) + "' bottom='0' top='1'/><Layout xMin='" +
                                           std::to_string(3 * i) + "' xMax='" + std::to_string(3 * i + 3) +
                                           "' yMin='0' yMax='2.4'/>");
        }
        return all;
    }
};

/// A wall with two projectors above each other for two eyes.
struct StereoWall {
    static inline const std::string SCREEN =
        "<Screen shape='Flat'><EyePoint x='0' y='0' z='1.2'/><Centre x='0' y='3' z='1.3'/><Size width='4' "
        "height='2.5'/></Screen>";
    static inline const std::string TARGETS = "<TargetData type='ProjectorCentric'/>";
    static std::string projectors() {
        return standing("LeftEye", "x='-0.2' y='-1' z='1.3'", "z='0' x='0'", 26, 17) +
               standing("RightEye", "x='0.2' y='-1' z='1.3'", "z='0' x='0'", 26, 17);
    }
};

/// A curved screen of a wide projector, whose picture reaches beyond the screen, and in it a narrow one.
struct Inset {
    static inline const std::string SCREEN =
        "<Screen shape='Cylinder'><EyePoint x='0' y='0.5' z='1.2'/><Centre x='0' y='0' z='1.5'/><Radius value='4'/>"
        "<Size height='2'/><Azimuth min='-50' max='50'/></Screen>";
    static inline const std::string TARGETS = "<TargetData type='ProjectorCentric'/>";
    static std::string projectors() {
        return standing("Wide", "x='0' y='-1' z='2.2'", "z='0' x='-8'", 46, 24) +
               standing("Narrow", "x='0.3' y='-1' z='2.2'", "z='3' x='-9'", 9, 6);
    }
};

}  // namespace exportDisplays

inline void ExportDisplayTest::loadAny(const std::string& name) {
    using namespace exportDisplays;
    const auto loadOne = [this]<class Display>(const Display& /*display*/) {
        load(Display::SCREEN, Display::projectors(), Display::TARGETS);
    };
    if (name == "planetarium") {
        loadOne(Planetarium());
    } else if (name == "round") {
        loadOne(Round());
    } else if (name == "cave") {
        loadOne(Cave());
    } else if (name == "stereo-wall") {
        loadOne(StereoWall());
    } else if (name == "inset") {
        loadOne(Inset());
    } else {
        loadExample(name);
    }
}
