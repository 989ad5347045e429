#include "DisplayReport/ChannelCheck.h"

#include "Configuration/BaseConfig.h"
#include "DisplayReport/DisplayDescription.h"
#include "Displays.h"
#include "support/ConfigManagerDouble.h"
#include "support/TargetLocatorConfigDouble.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DisplayReport;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

DisplayDescription checked(const std::string& targetData, const std::string& elements) {
    const auto config = displays::parsed(displays::FLAT, displays::projector("A", elements), targetData);
    DisplayDescription description;
    ChannelCheck::run(*config, description);
    return description;
}

const std::string FRUSTUM = "<Frustum left='-30' right='30' bottom='-20' top='20'/>";

TEST(ChannelCheck, APlanarChannelUsesItsScreenArea) {
    const auto description = checked("<TargetData type='PlanarBasic'/>", displays::WHOLE_AREA);
    ASSERT_THAT(description.channels, SizeIs(1));
    EXPECT_EQ(description.channels[0].name, "A");
    EXPECT_EQ(description.channels[0].resolution, "1920 x 1200");
    EXPECT_EQ(description.channels[0].locator, "screen area left 0 right 1 bottom 0 top 1");
    EXPECT_EQ(description.channels[0].device, "none");
    EXPECT_THAT(description.faults, IsEmpty());
}

TEST(ChannelCheck, AnIncompleteScreenAreaIsAFault) {
    const auto description = checked("<TargetData type='PlanarAdvanced'/>", "<ScreenArea left='0'/>");
    ASSERT_THAT(description.faults, SizeIs(1));
    EXPECT_EQ(description.faults[0].where, "channel A, screen area");
    EXPECT_THAT(description.faults[0].what, HasSubstr("without right, bottom, top"));
}

TEST(ChannelCheck, AScreenAreaBesideTheScreenIsAFault) {
    const auto description =
        checked("<TargetData type='PlanarBasic'/>", "<ScreenArea left='5' right='6' bottom='0' top='1'/>");
    ASSERT_THAT(description.faults, SizeIs(1));
    EXPECT_EQ(description.faults[0].where, "channel A, screen area");
    EXPECT_THAT(description.faults[0].what, HasSubstr("lies outside the screen"));
}

TEST(ChannelCheck, ADomeChannelUsesItsFrustum) {
    const auto description = checked("<TargetData type='Spherical'/>", FRUSTUM);
    EXPECT_EQ(description.channels.at(0).locator, "frustum left -30 right 30 bottom -20 top 20 deg");
    EXPECT_THAT(description.faults, IsEmpty());
    EXPECT_THAT(checked("<TargetData type='Spherical'/>", "").faults, SizeIs(1));
}

TEST(ChannelCheck, ACollimatedChannelUsesItsFrustumAndTheMirror) {
    const std::string mirror = "<TargetData type='SphericalCollimated'><Mirror radius='3'/></TargetData>";
    const auto description = checked(mirror, FRUSTUM);
    EXPECT_EQ(description.channels.at(0).locator, "frustum left -30 right 30 bottom -20 top 20 deg via the mirror");
    EXPECT_THAT(description.faults, IsEmpty());
}

// The file format demands the mirror; a configuration from elsewhere may come without one.
TEST(ChannelCheck, ACollimatedChannelWithoutAMirrorRadiusIsAFault) {
    ProjectorConfigDouble projector(L"A");
    projector.name = L"A";
    projector.frustumLeft = -0.5;
    projector.frustumRight = 0.5;
    projector.frustumBottom = -0.4;
    projector.frustumTop = 0.4;
    TargetLocatorConfigDouble targets;
    targets.targetDataType = BaseConfig::TARGET_DATA_SPHERICAL_COLLIMATED;
    ConfigManagerDouble config;
    config.projectors = {&projector};
    config.targetLocators = &targets;

    DisplayDescription description;
    ChannelCheck::run(config, description);
    ASSERT_THAT(description.faults, SizeIs(1));
    EXPECT_EQ(description.faults[0].where, "channel A, mirror");
    EXPECT_EQ(description.faults[0].what, "it has no radius: give the target data a Mirror");

    targets.mirrorRadius = 3.0;
    DisplayDescription mended;
    ChannelCheck::run(config, mended);
    EXPECT_THAT(mended.faults, IsEmpty());
}

TEST(ChannelCheck, ACustomPlanarChannelNeedsItsMap) {
    const std::string type = "<TargetData type='CustomPlanar'/>";
    EXPECT_EQ(checked(type, "").channels.at(0).locator, "no map");
    EXPECT_THAT(checked(type, "").faults, SizeIs(1));

    const auto missing = checked(type, "<CustomPlanarMap file='nowhere.map'/>");
    ASSERT_THAT(missing.faults, SizeIs(1));
    EXPECT_EQ(missing.faults[0].what, "nowhere.map: No such file or directory");

    const TemporaryFolder folder;
    const std::string map = folder.write("channel.map", "2\n");
    EXPECT_THAT(checked(type, "<CustomPlanarMap file='" + map + "'/>").faults, IsEmpty());
}

TEST(ChannelCheck, AProjectorCentricChannelUsesItsModelOrItsFrustum) {
    const std::string type = "<TargetData type='ProjectorCentric'/>";
    EXPECT_THAT(checked(type, FRUSTUM).channels.at(0).locator, HasSubstr("frustum"));
    EXPECT_EQ(checked(type, "<ProjectionModel name='Equidistant'/>").channels.at(0).locator, "model Equidistant");
    EXPECT_THAT(checked(type, "<ProjectionModel name='Equidistant'/>").faults, IsEmpty());

    const auto missing = checked(type, "<ProjectionModel name='Fisheye' file='lens.yml'/>");
    ASSERT_THAT(missing.faults, SizeIs(1));
    EXPECT_EQ(missing.faults[0].what, "lens.yml: No such file or directory");
}

TEST(ChannelCheck, TargetDataAndProjectorsMustBeThere) {
    const auto config = XMLConfigFile::parse("<Display version='1'><Units native='m'/></Display>", "display.xml");
    DisplayDescription description;
    ChannelCheck::run(*config, description);
    ASSERT_THAT(description.faults, SizeIs(2));
    EXPECT_EQ(description.faults[0].where, "target data");
    EXPECT_EQ(description.faults[1].where, "channels");
}

TEST(ChannelCheck, ALongDeviceIsShortened) {
    const std::string device = "<Device><Device type='PJLink' mac='02:00:00:00:00:01' host='" + std::string(100, 'h') +
                               "' port='4352'/></Device>";
    const auto description = checked("<TargetData type='PlanarBasic'/>", displays::WHOLE_AREA + device);
    const std::string& shown = description.channels.at(0).device;
    EXPECT_EQ(shown.substr(0, 8), "<Device ");
    EXPECT_EQ(shown.size(), 63U);
}

}  // namespace
