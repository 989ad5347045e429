#include "DisplayReport/channels/ChannelChoice.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "support/Displays.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DisplayReport;
using testing::HasSubstr;

std::string named(const std::string& id, const std::string& name) {
    return "<Projector id='" + id + "'><Name>" + name + "</Name></Projector>";
}

std::string fault(const XMLConfigFile& config, const std::string& channel) {
    try {
        static_cast<void>(ChannelChoice::of(config, channel));
    } catch (const VeltraniException& thrown) {
        return Veltrani::toUtf8(thrown.message);
    }
    return {};
}

TEST(ChannelChoice, TakesIdsAndNames) {
    const auto config = displays::parsed(displays::FLAT, named("P1", "Links ä") + named("P2", "Rechts"));
    EXPECT_EQ(ChannelChoice::of(*config, "P2").index, 1U);
    EXPECT_EQ(ChannelChoice::of(*config, "Links ä").index, 0U);
    EXPECT_EQ(ChannelChoice::of(*config, "Rechts").describe(), "channel Rechts (P2)");
}

TEST(ChannelChoice, AnIdGoesBeforeANameThatReadsTheSame) {
    const auto config = displays::parsed(displays::FLAT, named("P1", "P2") + named("P2", "Right"));
    EXPECT_EQ(ChannelChoice::of(*config, "P2").index, 1U);
}

TEST(ChannelChoice, WhatIsNoChannelIsToldWithThoseThereAre) {
    const auto config = displays::parsed(displays::FLAT, named("P1", "Left") + named("P2", "Right"));
    EXPECT_EQ(fault(*config, "left"), "\"left\" is no channel; the channels are: Left (P1), Right (P2)");
    EXPECT_THAT(fault(*config, ""), HasSubstr("\"\" is no channel"));
    EXPECT_LT(fault(*config, std::string(5000, '\v')).size(), 400U) << "long names are cut";
    EXPECT_THAT(fault(*config, "\xff"), HasSubstr("is no channel; the channels are: "));
    EXPECT_EQ(fault(*displays::parsed(displays::FLAT, ""), "Left"),
              "\"Left\" is no channel: the configuration has no projectors");
}

TEST(ChannelChoice, ANameOfSeveralChannelsIsRefused) {
    const auto config = displays::parsed(displays::FLAT, named("P1", "Wall") + named("P2", "Wall") + named("P3", "C"));
    EXPECT_EQ(fault(*config, "Wall"),
              "\"Wall\" is the name of 2 channels, state the id; the channels are: Wall (P1), Wall (P2)");
}

TEST(ChannelChoice, APictureWithoutSizeIsTold) {
    const auto config = displays::parsed(displays::FLAT, named("P1", "Left") + displays::projector("P2", ""));
    EXPECT_EQ(ChannelChoice::of(*config, "P2").pictureSize(), (Point<int, 2>{1920, 1200}));
    try {
        static_cast<void>(ChannelChoice::of(*config, "P1").pictureSize());
        FAIL() << "refused";
    } catch (const VeltraniException& thrown) {
        EXPECT_EQ(thrown.message,
                  L"channel Left (P1): its picture has no size, 0 x 0 pixels: give the channel a Resolution");
    }
}

}  // namespace
