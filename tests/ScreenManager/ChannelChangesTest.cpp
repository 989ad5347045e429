#include "ChannelFixture.h"
#include "Common/Utf8.h"
#include "DeviceFramework2/DeviceException.h"

/// The changes to the table of channels, and its end.

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Veltrani::DeviceFramework2::DeviceException;

const std::string OUT_OF_BOUNDS = "Channel index out of bounds..";

class ChannelChangesTest : public ChannelFixture {};

TEST_F(ChannelChangesTest, ARecordNamedLikeTheChannelAtItsIndexReplacesIt) {
    makeChannels({L"A", L"B"});
    Channel record = manager->getChannelInfo(1);
    record.setChannelLocation(3, 4);
    EXPECT_TRUE(manager->setChannelInfo(1, record));
    EXPECT_TRUE(manager->getChannelInfo(1) == record);
    EXPECT_THAT(trace.lines(), IsEmpty()) << "the entry is not renamed";
}

TEST_F(ChannelChangesTest, ARecordNamedLikeAnotherChannelIsRefused) {
    makeChannels({L"A", L"B"});
    const Channel before = manager->getChannelInfo(1);
    EXPECT_FALSE(manager->setChannelInfo(1, Channel(L"A", nullptr, L"other", 3, 4)));
    EXPECT_TRUE(manager->getChannelInfo(1) == before);
}

TEST_F(ChannelChangesTest, ARecordWithANewNameReplacesTheWholeChannel) {
    makeChannels({L"A", L"B"});
    const Channel record(L"C", nullptr, L"other", 3, 4);
    EXPECT_TRUE(manager->setChannelInfo(0, record));
    EXPECT_TRUE(manager->getChannelInfo(0) == record);
    EXPECT_EQ(manager->getChannelIndexByName(L"A"), -1);
}

TEST_F(ChannelChangesTest, ReplacingAtABadIndexIsTheLogicError) {
    makeChannels({L"A"});
    for (const int index : {-1, 1}) {
        const auto replace = [&] { manager->setChannelInfo(index, Channel(L"C", nullptr, L"", 0, 0)); };
        EXPECT_EQ(faultOf<std::logic_error>(replace).what(), OUT_OF_BOUNDS);
    }
    EXPECT_THAT(channelNames(), ElementsAre(L"A"));
}

TEST_F(ChannelChangesTest, NamesAreSetInOrderAndRenameTheEntries) {
    makeChannels({L"A", L"B", L"C"});
    manager->setChannelNames({"K\xc3\xb6ln", "X"});
    EXPECT_THAT(channelNames(), ElementsAre(L"K\u00f6ln", L"X", L"C"));
    EXPECT_THAT(trace.lines(), ElementsAre("projector.setName(\"K\xc3\xb6ln\")", "projector.setName(\"X\")"));
}

TEST_F(ChannelChangesTest, ANameThatIsNotUtf8BecomesEmpty) {
    makeChannels({L"A"});
    manager->setChannelNames({"A\xff"});
    EXPECT_THAT(channelNames(), ElementsAre(L""));
    EXPECT_EQ(entry(0).name, L"");
}

TEST_F(ChannelChangesTest, SetNamesAreNotMadeUnique) {
    makeChannels({L"A", L"B"});
    manager->setChannelNames({"X", "X"});
    EXPECT_THAT(channelNames(), ElementsAre(L"X", L"X"));
}

TEST_F(ChannelChangesTest, MoreNamesThanChannelsRenameNone) {
    makeChannels({L"A"});
    EXPECT_EQ(faultOf<std::logic_error>([&] { manager->setChannelNames({"X", "Y"}); }).what(), OUT_OF_BOUNDS);
    EXPECT_THAT(channelNames(), ElementsAre(L"A"));
    EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(ChannelChangesTest, AMoveSwapsWithTheNeighbourInListAndConfiguration) {
    makeChannels({L"A", L"B", L"C"});
    EXPECT_TRUE(manager->moveChannel(0, 1));
    EXPECT_THAT(channelNames(), ElementsAre(L"B", L"A", L"C"));
    EXPECT_TRUE(manager->moveChannel(2, -1));
    EXPECT_THAT(channelNames(), ElementsAre(L"B", L"C", L"A"));
    EXPECT_THAT(trace.lines(),
                ElementsAre("config.moveProjectorConfig(\"P0\", 1)", "config.moveProjectorConfig(\"P2\", -1)"));
    EXPECT_THAT(config.projectors, ElementsAre(&entry(1), &entry(2), &entry(0)));
}

TEST_F(ChannelChangesTest, TheLastChannelDoesNotMoveLaterYetTheConfigurationIsAsked) {
    makeChannels({L"A", L"B"});
    EXPECT_FALSE(manager->moveChannel(1, 1));
    EXPECT_THAT(channelNames(), ElementsAre(L"A", L"B"));
    EXPECT_THAT(trace.lines(), ElementsAre("config.moveProjectorConfig(\"P1\", 1)"));
}

TEST_F(ChannelChangesTest, TheFirstChannelDoesNotMoveEarlierYetTheConfigurationIsAsked) {
    makeChannels({L"A", L"B"});
    EXPECT_FALSE(manager->moveChannel(0, -1));
    EXPECT_THAT(channelNames(), ElementsAre(L"A", L"B"));
    EXPECT_THAT(trace.lines(), ElementsAre("config.moveProjectorConfig(\"P0\", -1)"));
}

TEST_F(ChannelChangesTest, AnyOtherDirectionMovesNothingYetTheConfigurationIsAsked) {
    makeChannels({L"A", L"B", L"C"});
    for (const int direction : {2, -2, 0, 2147483647, -2147483647 - 1}) {
        trace.clear();
        EXPECT_FALSE(manager->moveChannel(0, direction));
        EXPECT_THAT(trace.lines(),
                    ElementsAre("config.moveProjectorConfig(\"P0\", " + std::to_string(direction) + ")"));
    }
    EXPECT_THAT(channelNames(), ElementsAre(L"A", L"B", L"C"));
}

TEST_F(ChannelChangesTest, MovingFromABadIndexAsksNobody) {
    makeChannels({L"A", L"B"});
    EXPECT_FALSE(manager->moveChannel(-1, 1));
    EXPECT_FALSE(manager->moveChannel(2, -1));
    EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(ChannelChangesTest, ARefusalOfTheConfigurationIsNotLookedAt) {
    makeChannels({L"A", L"B"});
    config.projectors.clear();
    EXPECT_TRUE(manager->moveChannel(0, 1));
    EXPECT_THAT(channelNames(), ElementsAre(L"B", L"A"));
}

TEST_F(ChannelChangesTest, AMoveThatTheConfigurationCannotDoMovesNothing) {
    makeChannels({L"A", L"B"});
    config.throwFrom("moveProjectorConfig", VeltraniException(L"broken"));
    EXPECT_EQ(faultOf<VeltraniException>([&] { manager->moveChannel(0, 1); }).message, L"broken");
    EXPECT_THAT(channelNames(), ElementsAre(L"A", L"B"));
}

TEST_F(ChannelChangesTest, RemovingTakesEntryAndChannelAndReleasesTheDevice) {
    makeChannels({L"A", L"B", L"C"});
    EXPECT_TRUE(manager->removeChannel(manager->getChannelInfo(1)));
    EXPECT_THAT(trace.lines(), ElementsAre("config.removeProjectorConfig(\"P1\")", "devices.getDevice(\"P1\")",
                                           "devices.releaseDevice(\"P1\")"));
    EXPECT_THAT(channelNames(), ElementsAre(L"A", L"C"));
    EXPECT_EQ(manager->getChannelIndexByID(L"P2"), 1) << "later channels move up";
}

TEST_F(ChannelChangesTest, ARecordWithAFormerNameReleasesNoDevice) {
    makeChannels({L"A", L"B"});
    const Channel before = manager->getChannelInfo(0);
    manager->setChannelNames({"new"});
    trace.clear();
    EXPECT_TRUE(manager->removeChannel(before));
    EXPECT_THAT(trace.lines(), ElementsAre("config.removeProjectorConfig(\"P0\")", "devices.releaseDevice(\"null\")"));
    EXPECT_THAT(channelNames(), ElementsAre(L"B"));
}

TEST_F(ChannelChangesTest, WhatIsNoChannelIsNotRemoved) {
    EXPECT_FALSE(manager->removeChannel(Channel(L"A", nullptr, L"P0", 0, 0))) << "no channels";
    makeChannels({L"A"});
    EXPECT_FALSE(manager->removeChannel(Channel(L"A", &entry(0), L"other", 0, 0)));
    EXPECT_THAT(trace.lines(), IsEmpty());
    EXPECT_THAT(channelNames(), ElementsAre(L"A"));
}

TEST_F(ChannelChangesTest, TheEndReleasesTheDeviceOfEveryChannelInOrder) {
    makeChannels({L"A", L"B"});
    manager.reset();
    EXPECT_THAT(trace.lines(), ElementsAre("devices.getDevice(\"P0\")", "devices.releaseDevice(\"P0\")",
                                           "devices.getDevice(\"P1\")", "devices.releaseDevice(\"P1\")"));
}

TEST_F(ChannelChangesTest, TheEndFindsDevicesByTheNamesOfTheChannels) {
    makeChannels({L"A", L"B"});
    manager->setChannelNames({"X", "X"});
    trace.clear();
    manager.reset();
    EXPECT_THAT(trace.lines(), ElementsAre("devices.getDevice(\"P0\")", "devices.releaseDevice(\"P0\")",
                                           "devices.getDevice(\"P0\")", "devices.releaseDevice(\"P0\")"));
}

TEST_F(ChannelChangesTest, TheEndLetsNoFaultOutAndReleasesTheOthers) {
    makeChannels({L"A", L"B"});
    devices.throwFrom("releaseDevice", DeviceException(L"broken"));
    manager.reset();
    EXPECT_THAT(trace.lines(),
                ElementsAre("devices.getDevice(\"P0\")", "devices.releaseDevice(\"P0\")",
                            WARN + "~ChannelManager: the device of channel \"A\" is not released: broken",
                            "devices.getDevice(\"P1\")", "devices.releaseDevice(\"P1\")",
                            WARN + "~ChannelManager: the device of channel \"B\" is not released: broken"));
}

TEST_F(ChannelChangesTest, CopiesShareTheChannelsButNotTheirOrder) {
    makeChannels({L"A", L"B"});
    ChannelManager copy = *manager;
    EXPECT_TRUE(copy.moveChannel(0, 1));
    EXPECT_THAT(channelNames(), ElementsAre(L"A", L"B"));
    copy.setChannelNames({"new B"});
    EXPECT_THAT(channelNames(), ElementsAre(L"A", L"new B")) << "a channel is one and the same in both";
}

TEST_F(ChannelChangesTest, AnAssignedCopyHasTheSameChannelsConfigurationAndDevices) {
    makeChannels({L"A"});
    ConfigManagerDouble otherConfig;
    ChannelManager copy(&otherConfig);
    copy = *manager;
    EXPECT_EQ(copy.getNumberOfChannels(), 1);
    EXPECT_EQ(copy.getConfig(Channel::Id("A")), &entry(0));
    EXPECT_EQ(copy.getDeviceRefactor(0), &device(0));
}

TEST_F(ChannelChangesTest, ACopyOutlivesItsOriginal) {
    makeChannels({L"A"});
    const ChannelManager copy = *manager;
    manager.reset();
    ASSERT_EQ(copy.getNumberOfChannels(), 1);
    EXPECT_EQ(copy.getChannels().at(0).getName(), L"A");
}

TEST_F(ChannelChangesTest, WithoutADeviceManagerNothingIsReleased) {
    useDeviceManager(nullptr);
    {
        ChannelManager other(&config);
        EXPECT_FALSE(other.removeChannel(Channel(L"A", nullptr, L"P0", 0, 0)));
    }
    EXPECT_EQ(devices.calls("releaseDevice"), 0U);
}

}  // namespace
