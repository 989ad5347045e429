#include "DisplayReport/channels/ChannelLocator.h"

#include "Configuration/BaseConfig.h"
#include "ScreenManager/TargetLocatorManager.h"
#include "support/ConfigManagerDouble.h"
#include "support/Displays.h"
#include "support/TargetLocatorConfigDouble.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DisplayReport;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class LocatorSourceTest : public testing::Test {
protected:
    ~LocatorSourceTest() override { TargetLocatorManager::deleteInstance(); }

    static LocatorSource source(const std::string& targetData, const std::string& elements) {
        const auto config = displays::parsed(displays::FLAT, displays::projector("A", elements), targetData);
        return locatorSourceOf(*config, *config->getProjectorConfig(L"A"));
    }
};

const std::string FRUSTUM = "<Frustum left='-30' right='30' bottom='-20' top='20'/>";

TEST_F(LocatorSourceTest, APlanarChannelUsesItsScreenArea) {
    const LocatorSource whole = source("<TargetData type='PlanarBasic'/>", displays::WHOLE_AREA);
    EXPECT_EQ(whole.text, "screen area left 0 right 1 bottom 0 top 1");
    EXPECT_THAT(whole.faults, IsEmpty());
    const LocatorSource beside =
        source("<TargetData type='PlanarBasic'/>", "<ScreenArea left='5' right='6' bottom='0' top='1'/>");
    ASSERT_THAT(beside.faults, SizeIs(1));
    EXPECT_EQ(beside.faults[0].where, "screen area");
    EXPECT_THAT(beside.faults[0].what, HasSubstr("lies outside the screen"));
}

TEST_F(LocatorSourceTest, ADomeChannelUsesItsFrustum) {
    const LocatorSource dome = source("<TargetData type='Spherical'/>", FRUSTUM);
    EXPECT_EQ(dome.text, "frustum left -30 right 30 bottom -20 top 20 deg");
    EXPECT_THAT(dome.faults, IsEmpty());
    EXPECT_THAT(source("<TargetData type='Spherical'/>", "").faults, SizeIs(1));
}

TEST_F(LocatorSourceTest, AnEdgeOfAFrustumThatIsNotAheadIsAFault) {
    const std::string behind = "<Frustum left='-30' right='100' bottom='-20' top='20'/>";
    const LocatorSource dome = source("<TargetData type='Spherical'/>", behind);
    ASSERT_THAT(dome.faults, SizeIs(1));
    EXPECT_EQ(dome.faults[0].what, "an edge is at 100 deg: give less than 90 to either side");
    const LocatorSource lens = source("<TargetData type='3D'/>", behind + "<ProjectionModel name='Equidistant'/>");
    ASSERT_THAT(lens.faults, SizeIs(1));
    EXPECT_THAT(lens.faults[0].what, HasSubstr("the right edge of the frustum is at 100 degrees"));
}

TEST_F(LocatorSourceTest, ACollimatedChannelUsesItsFrustumAndTheMirror) {
    const std::string mirror = "<TargetData type='SphericalCollimated'><Mirror radius='3'/></TargetData>";
    const LocatorSource collimated = source(mirror, FRUSTUM);
    EXPECT_EQ(collimated.text, "frustum left -30 right 30 bottom -20 top 20 deg via the mirror");
    EXPECT_THAT(collimated.faults, IsEmpty());
}

// The file format demands the mirror; a configuration from elsewhere may come without one.
TEST_F(LocatorSourceTest, ACollimatedChannelWithoutAMirrorRadiusIsAFault) {
    ProjectorConfigDouble projector(L"A");
    projector.frustumLeft = -0.5;
    projector.frustumRight = 0.5;
    projector.frustumBottom = -0.4;
    projector.frustumTop = 0.4;
    TargetLocatorConfigDouble targets;
    targets.targetDataType = BaseConfig::TARGET_DATA_SPHERICAL_COLLIMATED;
    ConfigManagerDouble config;
    config.projectors = {&projector};
    config.targetLocators = &targets;

    const LocatorSource without = locatorSourceOf(config, projector);
    ASSERT_THAT(without.faults, SizeIs(1));
    EXPECT_EQ(without.faults[0].where, "mirror");
    EXPECT_EQ(without.faults[0].what, "it has no radius: give the target data a Mirror");

    targets.mirrorRadius = 3.0;
    EXPECT_THAT(locatorSourceOf(config, projector).faults, IsEmpty());
}

TEST_F(LocatorSourceTest, ACustomPlanarChannelNeedsAMapThatCanBeRead) {
    const std::string type = "<TargetData type='CustomPlanar'/>";
    EXPECT_EQ(source(type, "").text, "no map");
    EXPECT_THAT(source(type, "").faults, SizeIs(1));

    const LocatorSource missing = source(type, "<CustomPlanarMap file='nowhere.map'/>");
    ASSERT_THAT(missing.faults, SizeIs(1));
    EXPECT_EQ(missing.faults[0].where, "map");
    EXPECT_THAT(missing.faults[0].what, HasSubstr("nowhere.map"));

    const TemporaryFolder folder;
    const std::string cut = folder.write("cut.map", "2\n");
    const LocatorSource broken = source(type, "<CustomPlanarMap file='" + cut + "'/>");
    ASSERT_THAT(broken.faults, SizeIs(1));
    EXPECT_THAT(broken.faults[0].what, HasSubstr("cut.map"));

    const std::string map = folder.write("channel.map", displays::WHOLE_MAP);
    EXPECT_THAT(source(type, "<CustomPlanarMap file='" + map + "'/>").faults, IsEmpty());
}

TEST_F(LocatorSourceTest, AProjectorCentricChannelUsesItsModelOrItsFrustum) {
    const std::string type = "<TargetData type='ProjectorCentric'/>";
    EXPECT_THAT(source(type, FRUSTUM).text, HasSubstr("frustum"));
    const LocatorSource model = source(type, FRUSTUM + "<ProjectionModel name='Equidistant'/>");
    EXPECT_EQ(model.text, "model Equidistant");
    EXPECT_THAT(model.faults, IsEmpty());

    const LocatorSource missing = source(type, "<ProjectionModel name='Fisheye' file='lens.yml'/>");
    ASSERT_THAT(missing.faults, SizeIs(1));
    EXPECT_EQ(missing.faults[0].where, "projection model");
    EXPECT_THAT(missing.faults[0].what, HasSubstr("lens.yml"));
    EXPECT_THAT(source(type, FRUSTUM + "<ProjectionModel name='Pincushion'/>").faults, SizeIs(1));
}

TEST_F(LocatorSourceTest, WithoutTargetDataThereIsNothing) {
    const auto config = displays::parsed(displays::FLAT, displays::projector("A", ""), "");
    EXPECT_EQ(targetDataTypeOf(*config), L"");
    EXPECT_EQ(locatorSourceOf(*config, *config->getProjectorConfig(L"A")).text, "nothing");
}

}  // namespace
