#include "DisplayReport/check/ChannelCheck.h"

#include "DisplayReport/check/DisplayDescription.h"
#include "DisplayReport/check/DisplayFacts.h"
#include "support/Displays.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DisplayReport;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

DisplayDescription checked(const std::string& targetData, const std::string& elements) {
    const auto config = displays::parsed(displays::FLAT, displays::projector("A", elements), targetData);
    DisplayDescription description;
    ChannelCheck::run(*config, DisplayFacts::of(*config, true), description);
    return description;
}

TEST(ChannelCheck, APlanarChannelUsesItsScreenArea) {
    const auto description = checked("<TargetData type='PlanarBasic'/>", displays::WHOLE_AREA);
    ASSERT_THAT(description.channels, SizeIs(1));
    EXPECT_EQ(description.channels[0].name, "A");
    EXPECT_EQ(description.channels[0].fact("picture"), "1920 x 1200");
    EXPECT_EQ(description.channels[0].fact("targets by"), "screen area left 0 right 1 bottom 0 top 1");
    EXPECT_EQ(description.channels[0].fact("device"), "none");
    EXPECT_EQ(description.channels[0].fact("looks"), "");
    EXPECT_EQ(description.channels[0].fact("throw"), "not stated");
    EXPECT_THAT(description.faults, IsEmpty());
}

TEST(ChannelCheck, ANoteIsShown) {
    const auto description =
        checked("<TargetData type='PlanarBasic'/>", displays::WHOLE_AREA + std::string("<Note>shift locked</Note>"));
    EXPECT_EQ(description.channels.at(0).fact("note"), "shift locked");
}

TEST(ChannelCheck, NamesTheChannelOfAFault) {
    const auto description = checked("<TargetData type='PlanarAdvanced'/>", "<ScreenArea left='0'/>");
    ASSERT_THAT(description.faults, SizeIs(1));
    EXPECT_EQ(description.faults[0].where, "channel A, screen area");
    EXPECT_THAT(description.faults[0].what, HasSubstr("without right, bottom, top"));
}

TEST(ChannelCheck, TargetDataAndProjectorsMustBeThere) {
    const auto config = XMLConfigFile::parse("<Display version='1'><Units native='m'/></Display>", "display.xml");
    DisplayDescription description;
    ChannelCheck::run(*config, DisplayFacts::of(*config, true), description);
    ASSERT_THAT(description.faults, SizeIs(2));
    EXPECT_EQ(description.faults[0].where, "target data");
    EXPECT_EQ(description.faults[1].where, "channels");
}

std::string deviceOf(const std::string& snippet) {
    return checked("<TargetData type='PlanarBasic'/>", displays::WHOLE_AREA + "<Device>" + snippet + "</Device>")
        .channels.at(0)
        .fact("device");
}

TEST(ChannelCheck, TheDeviceIsShownByItsPlaceAndNeverAsXml) {
    EXPECT_EQ(deviceOf("<Device type='PJLink' mac='02:00:00:00:00:01' host='192.0.2.11' port='4353'/>"),
              "PJLink 192.0.2.11:4353");
    EXPECT_EQ(deviceOf("<Device type='PJLink' mac='02:00:00:00:00:01'/>"), "PJLink 02:00:00:00:00:01");
    EXPECT_EQ(deviceOf("<Lamp mac='02-00-00-00-00-0a' colour='" + std::string(100, 'h') + "'/>"),
              "another, 02:00:00:00:00:0A");
    EXPECT_EQ(deviceOf("<Lamp/>"), "another");
    EXPECT_EQ(deviceOf("  "), "none");
}

TEST(ChannelCheck, AProjectorIsShownWithItsPlaceAndItsView) {
    const auto description = checked("<TargetData type='ProjectorCentric'/>",
                                     "<Position x='1' y='-2' z='3'/><Orientation z='41' x='5' y='90'/>"
                                     "<Frustum left='-20' right='22' bottom='-10' top='14'/>");
    const ChannelDescription& channel = description.channels.at(0);
    EXPECT_EQ(channel.fact("position"), "1, -2, 3 m");
    EXPECT_EQ(channel.fact("looks"), "right: azimuth 41 elevation 5 roll 90 deg");
    EXPECT_EQ(channel.fact("field of view"), "42 x 24 deg");
    EXPECT_EQ(channel.fact("throw"), "not measured") << "its middle may well meet the screen";
    EXPECT_EQ(channel.fact("on screen"), "not measured");
}

std::string looksOf(const std::string& azimuth, const std::string& elevation = "0") {
    const std::string fact = checked("<TargetData type='ProjectorCentric'/>",
                                     "<Position x='0' y='0' z='3'/><Orientation z='" + azimuth + "' x='" + elevation +
                                         "' y='0'/><Frustum left='-20' right='20' bottom='-10' top='10'/>")
                                 .channels.at(0)
                                 .fact("looks");
    return fact.substr(0, fact.find(':'));
}

TEST(ChannelCheck, AViewIsLeftOrRightOnlyWhereItLiesThere) {
    EXPECT_EQ(looksOf("5"), "ahead");
    EXPECT_EQ(looksOf("-30"), "left");
    EXPECT_EQ(looksOf("-95"), "left");
    EXPECT_EQ(looksOf("95", "20"), "right and up");
    EXPECT_EQ(looksOf("-165"), "behind, to the left");
    EXPECT_EQ(looksOf("120", "-20"), "behind, to the right and down");
    EXPECT_EQ(looksOf("175"), "behind");
    EXPECT_EQ(looksOf("-175", "20"), "behind and up");
}

}  // namespace
