#include "DisplayReport/check/ChannelCheck.h"

#include "DisplayReport/check/DisplayDescription.h"
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
    ChannelCheck::run(*config, description);
    return description;
}

TEST(ChannelCheck, APlanarChannelUsesItsScreenArea) {
    const auto description = checked("<TargetData type='PlanarBasic'/>", displays::WHOLE_AREA);
    ASSERT_THAT(description.channels, SizeIs(1));
    EXPECT_EQ(description.channels[0].name, "A");
    EXPECT_EQ(description.channels[0].fact("picture"), "1920 x 1200");
    EXPECT_EQ(description.channels[0].fact("targets by"), "screen area left 0 right 1 bottom 0 top 1");
    EXPECT_EQ(description.channels[0].fact("device"), "none");
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
    ChannelCheck::run(*config, description);
    ASSERT_THAT(description.faults, SizeIs(2));
    EXPECT_EQ(description.faults[0].where, "target data");
    EXPECT_EQ(description.faults[1].where, "channels");
}

TEST(ChannelCheck, ALongDeviceIsShortened) {
    const std::string device = "<Device><Device type='PJLink' mac='02:00:00:00:00:01' host='" + std::string(100, 'h') +
                               "' port='4352'/></Device>";
    const auto description = checked("<TargetData type='PlanarBasic'/>", displays::WHOLE_AREA + device);
    const std::string shown = description.channels.at(0).fact("device");
    EXPECT_EQ(shown.substr(0, 8), "<Device ");
    EXPECT_EQ(shown.size(), 63U);
}

}  // namespace
