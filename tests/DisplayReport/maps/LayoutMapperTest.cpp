#include "DisplayReport/maps/LayoutMapper.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/TargetLocatorManager.h"
#include "support/Displays.h"
#include "support/LogTrap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace Veltrani::DisplayReport;
using testing::HasSubstr;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

const std::string FRUSTUM = "<Frustum left='-30' right='30' bottom='-20' top='20'/>";

std::string data(const std::string& type) {
    return "<TargetData type='" + type + "'/>";
}

class LayoutMapperTest : public testing::Test {
protected:
    ~LayoutMapperTest() override {
        TargetLocatorManager::deleteInstance();
        ScreenManager::deleteInstance();
    }

    /// The mapper of the first channel of a display, its screen built.
    LayoutMapper mapperOf(const std::string& projectors, const std::string& targets,
                          const std::string& screen = displays::SPHERE) {
        m_config = displays::parsed(screen, projectors, targets);
        ScreenManager::getInstance()->setScreenGeometry(m_config.get(), false);
        return {*m_config, ChannelChoice::of(*m_config, "A"), false};
    }

    std::string faultOf(const std::string& projectors, const std::string& targets) {
        try {
            static_cast<void>(mapperOf(projectors, targets));
        } catch (const VeltraniException& thrown) {
            return Veltrani::toUtf8(thrown.message);
        }
        return {};
    }

    LogTrap m_log;
    std::unique_ptr<XMLConfigFile> m_config;
};

TEST_F(LayoutMapperTest, MapsOneChannelBothWays) {
    LayoutMapper map = mapperOf(displays::projector("B", "<Layout xMin='7' xMax='8' yMin='0' yMax='1'/>") +
                                    displays::projector("A", "<Layout xMin='1' xMax='3' yMin='0' yMax='4'/>"),
                                data("PlanarBasic"));
    const std::vector<P2> picture{{0.5, 0.25}, {1.5, 0.5}, {1.0, 1.0}};
    std::vector<LayoutPoint> layout(3, LayoutPoint{{9, 9, 9}, true});
    map.toLayout(picture, layout);
    EXPECT_EQ(layout[0].point, (P3{2, 1, 0}));
    EXPECT_TRUE(layout[0].isMapped);
    EXPECT_FALSE(layout[1].isMapped) << "what stood there before is gone";
    EXPECT_EQ(layout[2].point, (P3{3, 4, 0}));
    P2 back{7, 7};
    EXPECT_TRUE(map.toPicture({2, 1, 5}, back));
    EXPECT_EQ(back, (P2{0.5, 0.25}));
    EXPECT_FALSE(map.toPicture({0, 1, 0}, back));
    EXPECT_EQ(back, (P2{0.5, 0.25})) << "untouched";
}

TEST_F(LayoutMapperTest, WhatIsNotFiniteIsNotMapped) {
    LayoutMapper map =
        mapperOf(displays::projector("A", "<Layout xMin='1' xMax='3' yMin='0' yMax='4'/>"), data("PlanarBasic"));
    constexpr double NOTHING = std::numeric_limits<double>::quiet_NaN();
    P2 picture;
    EXPECT_FALSE(map.toPicture({NOTHING, 1, 0}, picture));
    const std::vector<P2> place{{NOTHING, 0.5}};
    std::vector<LayoutPoint> layout(1);
    map.toLayout(place, layout);
    EXPECT_FALSE(layout[0].isMapped);
}

TEST_F(LayoutMapperTest, AScreenIsNeededUnlessTheLayoutIsAPlane) {
    const auto needs = [](const std::string& type) {
        return LayoutMapper::needsScreen(*displays::parsed(displays::FLAT, "", data(type)));
    };
    EXPECT_FALSE(needs("PlanarBasic"));
    EXPECT_FALSE(needs("PlanarAdvanced"));
    for (const char* type : {"Spherical", "CustomPlanar", "ProjectorCentric", "3D"}) {
        EXPECT_TRUE(needs(type)) << type;
    }
}

TEST_F(LayoutMapperTest, AChannelSaysWhatItLacks) {
    EXPECT_THAT(faultOf(displays::projector("A", ""), data("PlanarBasic")),
                HasSubstr("channel A (A): its layout rectangle has no extent, x 0 to 0, y 0 to 0: give the channel a "
                          "Layout with xMin below xMax and yMin below yMax"));
    const std::string tiny = "<Projector id='A'>" + FRUSTUM + "</Projector>";
    for (const char* type : {"CustomPlanar", "ProjectorCentric", "3D"}) {
        EXPECT_THAT(faultOf(tiny, data(type)), HasSubstr("channel A (A): its picture has no size, 0 x 0 pixels"))
            << type;
    }
    EXPECT_EQ(faultOf(tiny, data("Spherical")), "") << "the rays of a dome need no pixels";
    EXPECT_THAT(faultOf(displays::projector("A", ""), data("Spherical")),
                HasSubstr("channel A (A): frustum: it has no width or no height: give the channel a Frustum"));
    EXPECT_THAT(faultOf(displays::projector("A", ""), data("CustomPlanar")), HasSubstr("no custom planar map file"));
    EXPECT_THAT(faultOf(displays::projector("A", FRUSTUM + "<ProjectionModel name='Pinhole'/>"), data("3D")),
                HasSubstr("channel A (A): projection model: "));
}

TEST_F(LayoutMapperTest, ADisplayWithoutTargetDataSaysWhatThereIs) {
    EXPECT_THAT(faultOf(displays::projector("A", FRUSTUM), ""),
                HasSubstr("the configuration has no target data, expected target data of one of the types: "));
}

}  // namespace
