#include "ScreenManager/LayoutMapFactory.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/XMLConfigFile.h"
#include "LayoutMapFixture.h"
#include "PlanarMapText.h"
#include "RayScreen.h"
#include "ScreenManager/CollimatedLayoutToChannelMap.h"
#include "ScreenManager/CustomPlanarLayoutToChannelMap.h"
#include "ScreenManager/PlanarLayoutToChannelMap.h"
#include "ScreenManager/ProjectorCentricLayoutToChannelMap.h"
#include "ScreenManager/SphericalLayoutToChannelMap.h"
#include "support/TemporaryFolder.h"

#include <typeinfo>

namespace {

using Vector = Point<double, 3>;
using testing::HasSubstr;

const std::wstring ACCEPTED =
    L", expected target data of one of the types: PlanarBasic, PlanarAdvanced, Spherical, SphericalCollimated, "
    L"CustomPlanar, ProjectorCentric, 3D";

class LayoutMapFactoryTest : public LayoutMapFixture {
protected:
    LayoutMapFactoryTest() {
        config.folder = Veltrani::fromUtf8(folder.path());
        for (ProjectorConfigDouble* const projector : config.projectors) {
            projector->frustumLeft = projector->frustumBottom = -0.3;
            projector->frustumRight = projector->frustumTop = 0.4;
            projector->customPlanarFile = L"channel.map";
        }
        folder.write("channel.map", planar_map::wholePicture(1920, 1080));
    }

    LayoutMap create(const std::wstring& type, bool useCache = false) {
        targetData.targetDataType = type;
        return LayoutMapFactory::create(&config, useCache);
    }
    std::wstring fault(XMLConfigManager* from) {
        try {
            const LayoutMap made = LayoutMapFactory::create(from, false);
        } catch (const VeltraniException& thrown) {
            return thrown.message;
        }
        return {};
    }
    /// Loads a display of one projector, builds its screen and makes its map.
    LayoutMap load(const std::string& screen, const std::string& type, const std::string& projector) {
        file = XMLConfigFile::load(folder.write(
            "display.xml", "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/>" + screen +
                               "<TargetData type='" + type +
                               "'/><Projectors><Projector id='P1'><Resolution width='1920' height='1080'/>" +
                               projector + "</Projector></Projectors></Display>"));
        ScreenManager::getInstance()->setScreenGeometry(file.get(), false);
        return LayoutMapFactory::create(file.get(), false);
    }
    /// How far over a picture the way there and back ends from where it began.
    double worstClosure(LayoutToChannelMap& map) {
        double worst = 0;
        constexpr int STEPS = 30;  // pixels of 1920 x 1080, so that no map has to round
        for (int row = 1; row < STEPS; ++row) {
            for (int column = 1; column < STEPS; ++column) {
                const Point<double, 2> point{static_cast<double>(column) / STEPS, static_cast<double>(row) / STEPS};
                const bool isBack =
                    map.mapChannelToLayout(point, layout, 0) && map.mapLayoutToChannel(layout, channel, 0);
                EXPECT_TRUE(isBack) << column << ' ' << row;
                worst = std::max(worst, norm(channel - point));
            }
        }
        return worst;
    }

    const TemporaryFolder folder;
    std::unique_ptr<XMLConfigFile> file;
};

/// Coordinates are a few metres; both ways together round some dozen times.
constexpr double CLOSURE = 1e-9;

constexpr const char* DOME = "<Screen shape='Sphere'><EyePoint x='0.5' y='-1' z='1.5'/><Radius value='5'/></Screen>";
constexpr const char* WALL = "<Screen shape='Flat'><Centre x='0' y='4' z='0'/><Size width='9' height='6'/></Screen>";

TEST_F(LayoutMapFactoryTest, EachTypeHasItsKind) {
    const auto kindOf = [&](const std::wstring& type) -> std::string {
        const LayoutMap made = create(type);
        const LayoutToChannelMap& map = *made.map;
        return typeid(map).name();
    };
    EXPECT_EQ(kindOf(BaseConfig::TARGET_DATA_PLANAR_BASIC), typeid(PlanarLayoutToChannelMap).name());
    EXPECT_EQ(kindOf(BaseConfig::TARGET_DATA_PLANAR_ADVANCED), typeid(PlanarLayoutToChannelMap).name());
    EXPECT_EQ(kindOf(BaseConfig::TARGET_DATA_SPHERICAL), typeid(SphericalLayoutToChannelMap).name());
    EXPECT_EQ(kindOf(BaseConfig::TARGET_DATA_SPHERICAL_COLLIMATED), typeid(CollimatedLayoutToChannelMap).name());
    EXPECT_EQ(kindOf(BaseConfig::TARGET_DATA_CUSTOM_PLANAR), typeid(CustomPlanarLayoutToChannelMap).name());
    EXPECT_EQ(kindOf(BaseConfig::TARGET_DATA_PROJECTOR_CENTRIC), typeid(ProjectorCentricLayoutToChannelMap).name());
    EXPECT_EQ(kindOf(BaseConfig::TARGET_DATA_3D), typeid(ProjectorCentricLayoutToChannelMap).name());
}

TEST_F(LayoutMapFactoryTest, TheTableComesWithTheKindsThatReferToIt) {
    for (const std::wstring& type : {BaseConfig::TARGET_DATA_SPHERICAL, BaseConfig::TARGET_DATA_SPHERICAL_COLLIMATED,
                                     BaseConfig::TARGET_DATA_PROJECTOR_CENTRIC, BaseConfig::TARGET_DATA_3D}) {
        const LayoutMap made = create(type);
        ASSERT_NE(made.channelMapConfig, nullptr);
        EXPECT_EQ(made.channelMapConfig->getProjectors().size(), 2U);
        EXPECT_EQ(made.channelMapConfig.use_count(), 1) << "nobody else keeps it";
    }
    for (const std::wstring& type : {BaseConfig::TARGET_DATA_PLANAR_BASIC, BaseConfig::TARGET_DATA_PLANAR_ADVANCED,
                                     BaseConfig::TARGET_DATA_CUSTOM_PLANAR}) {
        EXPECT_EQ(create(type).channelMapConfig, nullptr);
    }
}

TEST_F(LayoutMapFactoryTest, AMapThatIsMovedGoesOnMapping) {
    ScreenManager::getInstance()->setScreenGeometry(std::make_shared<RayScreen>());
    LayoutMap kept;
    {
        LayoutMap made = create(BaseConfig::TARGET_DATA_PROJECTOR_CENTRIC);
        kept = std::move(made);
    }
    EXPECT_TRUE(kept.map->mapChannelToLayout({0.5, 0.5}, layout, 1));
    EXPECT_EQ(layout[1], 1.0);
}

/// Looks at the table that it came with when it goes.
class LastLook : public LayoutToChannelMap {
public:
    LastLook(std::weak_ptr<KelvoControl::Configuration> table, bool& sawIt)
        : LayoutToChannelMap(nullptr), m_table(std::move(table)), m_sawIt(sawIt) {}
    LastLook(const LastLook&) = delete;
    LastLook& operator=(const LastLook&) = delete;
    ~LastLook() override { m_sawIt = !m_table.expired(); }
    bool mapLayoutToChannel(const Vector&, Point<double, 2>&, std::size_t) override { return false; }
    bool mapChannelToLayout(const Point<double, 2>&, Vector&, std::size_t) override { return false; }

private:
    std::weak_ptr<KelvoControl::Configuration> m_table;
    bool& m_sawIt;
};

TEST_F(LayoutMapFactoryTest, ATableGoesAfterItsMapHoweverTheMapGoes) {
    bool sawIt = false;
    const auto made = [&] {
        auto table = std::make_shared<KelvoControl::Configuration>();
        auto map = std::make_unique<LastLook>(table, sawIt);
        return LayoutMap(std::move(table), std::move(map));
    };
    { const LayoutMap gone = made(); }
    EXPECT_TRUE(sawIt);
    LayoutMap replaced = made();
    sawIt = false;
    replaced = create(BaseConfig::TARGET_DATA_PLANAR_BASIC);
    EXPECT_TRUE(sawIt);
}

TEST_F(LayoutMapFactoryTest, WherePixelsCountAChannelWithoutThemIsNamed) {
    config.projectors[1]->height = 0;
    for (const std::wstring& type :
         {BaseConfig::TARGET_DATA_CUSTOM_PLANAR, BaseConfig::TARGET_DATA_SPHERICAL_COLLIMATED}) {
        targetData.targetDataType = type;
        EXPECT_EQ(fault(&config), L"No layout map: channel \"" + config.projectors[1]->name +
                                      L"\" has a picture of 1920 x 0 pixels, expected 1 to 100000 on each side: state "
                                      L"its resolution");
    }
    config.projectors[1]->height = 100'001;
    EXPECT_NE(fault(&config), L"");
    for (const std::wstring& type : {BaseConfig::TARGET_DATA_PLANAR_BASIC, BaseConfig::TARGET_DATA_SPHERICAL}) {
        EXPECT_NE(create(type).map, nullptr) << "the others do without";
    }
}

TEST_F(LayoutMapFactoryTest, TheCacheIsTheCollimatedMapsChoice) {
    const auto screen = std::make_shared<RayScreen>();
    ScreenManager::getInstance()->setScreenGeometry(screen);
    targetData.mirrorRadius = 100.0;  // around everything: each ray is reflected
    for (ProjectorConfigDouble* const projector : config.projectors) {
        projector->width = projector->height = 12;
    }
    const auto raysOfSecondSearch = [&](bool useCache) {
        const LayoutMap made = create(BaseConfig::TARGET_DATA_SPHERICAL_COLLIMATED, useCache);
        const Vector nowhere{1000.0, 1000.0, 1000.0};
        EXPECT_FALSE(made.map->mapLayoutToChannel(nowhere, channel, 0));
        const std::size_t before = screen->rays.size();
        EXPECT_FALSE(made.map->mapLayoutToChannel(nowhere, channel, 0));
        return screen->rays.size() - before;
    };
    EXPECT_GT(raysOfSecondSearch(false), 25U);
    EXPECT_EQ(raysOfSecondSearch(true), 0U);
    for (const std::wstring& type : {BaseConfig::TARGET_DATA_PLANAR_BASIC, BaseConfig::TARGET_DATA_SPHERICAL,
                                     BaseConfig::TARGET_DATA_CUSTOM_PLANAR, BaseConfig::TARGET_DATA_3D}) {
        EXPECT_NE(create(type, true).map, nullptr) << "the others take no notice";
    }
}

TEST_F(LayoutMapFactoryTest, AnUnknownTypeIsToldWithThoseThereAre) {
    for (const wchar_t* const type : {L"", L"Cylindrical", L"planarbasic", L"3D "}) {
        targetData.targetDataType = type;
        EXPECT_EQ(fault(&config),
                  L"No layout map: the target-data type is \"" + targetData.targetDataType + L"\"" + ACCEPTED);
    }
    targetData.targetDataType = std::wstring(L"3D\0x", 4);
    EXPECT_THAT(fault(&config), HasSubstr(ACCEPTED)) << "compared whole, not up to a zero";
}

TEST_F(LayoutMapFactoryTest, WithoutTargetDataOrConfigurationTheTypesAreTold) {
    config.targetLocators = nullptr;
    EXPECT_EQ(fault(&config), L"No layout map: the configuration has no target data" + ACCEPTED);
    EXPECT_EQ(fault(nullptr), L"No layout map: there is no configuration" + ACCEPTED);
}

TEST_F(LayoutMapFactoryTest, AFaultyLensStopsOnlyTheDisplaysThatUseIt) {
    second.projectionModelName = L"Fisheye:" + Veltrani::fromUtf8(folder.file("nowhere.yml"));
    for (const std::wstring& type : {BaseConfig::TARGET_DATA_PROJECTOR_CENTRIC, BaseConfig::TARGET_DATA_3D}) {
        targetData.targetDataType = type;
        EXPECT_THROW(static_cast<void>(LayoutMapFactory::create(&config, false)), VeltraniMissingFileException);
        EXPECT_THAT(fault(&config), HasSubstr(L"Projector \"P2\""));
    }
    for (const std::wstring& type : {BaseConfig::TARGET_DATA_PLANAR_BASIC, BaseConfig::TARGET_DATA_PLANAR_ADVANCED,
                                     BaseConfig::TARGET_DATA_SPHERICAL, BaseConfig::TARGET_DATA_SPHERICAL_COLLIMATED,
                                     BaseConfig::TARGET_DATA_CUSTOM_PLANAR}) {
        targetData.targetDataType = type;
        EXPECT_EQ(fault(&config), L"");
    }
}

TEST_F(LayoutMapFactoryTest, WhatAMapThrowsPassesThrough) {
    second.customPlanarFile.clear();
    targetData.targetDataType = BaseConfig::TARGET_DATA_CUSTOM_PLANAR;
    EXPECT_THROW(static_cast<void>(LayoutMapFactory::create(&config, false)), VeltraniMissingFileException);
}

TEST_F(LayoutMapFactoryTest, APlanarDisplayFromAFileMapsThereAndBack) {
    const LayoutMap made = load(WALL, "PlanarBasic", "<Layout xMin='-2' xMax='0.25' yMin='0' yMax='1.5'/>");
    EXPECT_LT(worstClosure(*made.map), CLOSURE);
    EXPECT_TRUE(made.map->mapChannelToLayout({0.0, 1.0}, layout, 0));
    EXPECT_EQ(layout, (Vector{-2.0, 1.5, 0.0}));
}

TEST_F(LayoutMapFactoryTest, ACustomPlanarDisplayFromAFileMapsThereAndBack) {
    const LayoutMap made = load(WALL, "CustomPlanar", "<CustomPlanarMap file='channel.map'/>");
    EXPECT_LT(worstClosure(*made.map), CLOSURE);
}

TEST_F(LayoutMapFactoryTest, AProjectorCentricDisplayFromAFileMapsThereAndBack) {
    const LayoutMap made = load(WALL, "ProjectorCentric",
                                "<Orientation z='10' x='-5' y='3'/><Frustum left='-20' right='25' bottom='-15' "
                                "top='10'/><Position x='0.5' y='-0.25' z='0.125'/>");
    EXPECT_LT(worstClosure(*made.map), CLOSURE) << "whole pixels, so that nothing is lost to rounding";
    EXPECT_EQ(layout[1], 4.0) << "on the wall";
}

TEST_F(LayoutMapFactoryTest, ASphericalDisplayFromAFileMapsThereAndBackWhenItsFrustumStandsAtTheEye) {
    const LayoutMap made = load(DOME, "Spherical",
                                "<Orientation z='40' x='15' y='-3'/><Frustum left='-20' right='25' bottom='-15' "
                                "top='10'/><Position x='0.5' y='-1' z='1.5'/>");
    EXPECT_LT(worstClosure(*made.map), CLOSURE);
    EXPECT_NEAR(norm(layout), 5.0, CLOSURE) << "on the dome";
}

}  // namespace
