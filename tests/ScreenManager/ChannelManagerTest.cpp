#include "ScreenManager/ChannelManager.h"

#include "ChannelFixture.h"
#include "Common/Utf8.h"
#include "DeviceFramework2/CmdResultNotAvailableException.h"
#include "ScreenManagerTestAccess.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Veltrani::DeviceFramework2::CmdResultNotAvailableException;
using Veltrani::DeviceFramework2::DeviceException;

const std::string OUT_OF_BOUNDS = "Channel index out of bounds..";

class ChannelManagerTest : public ChannelFixture {};

TEST_F(ChannelManagerTest, StartsEmptyAndAsksNobody) {
    EXPECT_EQ(manager->getNumberOfChannels(), 0);
    EXPECT_FALSE(manager->isChannelIndexInBounds(0));
    EXPECT_THAT(manager->getChannels(), IsEmpty());
    EXPECT_THAT(manager->getChannelInfoMap(), IsEmpty());
    EXPECT_THAT(manager->getDisplayDeviceIds(), IsEmpty());
    EXPECT_THAT(manager->getChannelInputs(), IsEmpty());
    EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(ChannelManagerTest, IndicesAreInBoundsFromZeroToBelowTheCount) {
    makeChannels({L"A", L"B"});
    EXPECT_EQ(manager->getNumberOfChannels(), 2);
    EXPECT_FALSE(manager->isChannelIndexInBounds(-1));
    EXPECT_TRUE(manager->isChannelIndexInBounds(0));
    EXPECT_TRUE(manager->isChannelIndexInBounds(1));
    EXPECT_FALSE(manager->isChannelIndexInBounds(2));
}

TEST_F(ChannelManagerTest, AChannelIsFoundByIndex) {
    makeChannels({L"A", L"B"});
    EXPECT_TRUE(manager->getChannelInfo(1) == Channel(L"B", &entry(1), L"P1", -1, -1));
}

TEST_F(ChannelManagerTest, EveryReadByABadIndexIsTheLogicError) {
    makeChannels({L"A", L"B"});
    for (const int index : {-1, 2, 2147483647, -2147483647 - 1}) {
        EXPECT_EQ(faultOf<std::logic_error>([&] { manager->getChannelInfo(index); }).what(), OUT_OF_BOUNDS) << index;
        EXPECT_EQ(faultOf<std::logic_error>([&] { manager->getProjectorIdRefactor(index); }).what(), OUT_OF_BOUNDS);
    }
    EXPECT_EQ(faultOf<std::logic_error>([&] { manager->getDeviceRefactor(2); }).what(), OUT_OF_BOUNDS);
    EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(ChannelManagerTest, TheLogicErrorIsNoneOfItsRelatives) {
    try {
        manager->getChannelInfo(0);
        FAIL() << "found";
    } catch (const std::logic_error& fault) {
        EXPECT_EQ(typeid(fault), typeid(std::logic_error));
    }
}

TEST_F(ChannelManagerTest, AChannelIsFoundByItsId) {
    makeChannels({L"A", L"K\u00f6ln"});
    EXPECT_EQ(manager->getChannelInfo(Channel::Id("K\xc3\xb6ln")).getProjectorConfigId(), L"P1");
    EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(ChannelManagerTest, AnUnknownIdIsFatalAndNamesTheId) {
    makeChannels({L"A"});
    const auto fault = faultOf<VeltraniException>([&] { manager->getChannelInfo(Channel::Id("K\xc3\xb6ln")); });
    EXPECT_EQ(fault.message, L"getChannelInfo: ChannelID not found");
    EXPECT_THAT(fault.file, HasSubstr("ChannelManager.cpp"));
    EXPECT_GT(fault.line, 0);
    EXPECT_THAT(trace.lines(), ElementsAre(FATAL + "getChannelInfo(K\xc3\xb6ln): ChannelId not found"));
    EXPECT_THAT(log.records().at(0).function, HasSubstr("getChannelInfo"));
    EXPECT_THAT(log.records().at(0).file, HasSubstr("ChannelManager.cpp"));
}

TEST_F(ChannelManagerTest, AnIdThatIsNoTextIsNobodysAndStillNamed) {
    makeChannels({L""});
    EXPECT_THROW(manager->getChannelInfo(Channel::Id("\xff\xfe")), VeltraniException);
    EXPECT_THAT(trace.lines(), ElementsAre(FATAL + "getChannelInfo(\xc3\xbf\xc3\xbe): ChannelId not found"));
}

TEST_F(ChannelManagerTest, TheEmptyIdIsThatOfAnEmptyName) {
    makeChannels({L"A", L""});
    EXPECT_EQ(manager->getChannelInfo(Channel::Id()).getProjectorConfigId(), L"P1");
}

TEST_F(ChannelManagerTest, NamesAreComparedExactly) {
    makeChannels({L"Left", L"left", L"Left "});
    EXPECT_EQ(manager->getChannelIndexByName(L"Left"), 0);
    EXPECT_EQ(manager->getChannelIndexByName(L"left"), 1);
    EXPECT_EQ(manager->getChannelIndexByName(L"Left "), 2);
    EXPECT_EQ(manager->getChannelIndexByName(L"LEFT"), -1);
    EXPECT_EQ(manager->getChannelIndexByName(L""), -1);
    EXPECT_EQ(manager->getChannelIndexByName(L"Lef"), -1);
}

TEST_F(ChannelManagerTest, OfSeveralChannelsWithANameTheFirstIsFound) {
    makeChannels({L"A", L"B", L"C"});
    manager->setChannelNames({"A", "X", "X"});
    trace.clear();
    EXPECT_EQ(manager->getChannelIndexByName(L"X"), 1);
    EXPECT_EQ(manager->getChannelInfo(Channel::Id("X")).getProjectorConfigId(), L"P1");
    EXPECT_EQ(manager->getDeviceRefactor(Channel::Id("X")), &device(1));
}

TEST_F(ChannelManagerTest, TheIndexByIdTakesTheConfigurationId) {
    makeChannels({L"A", L"B"});
    EXPECT_EQ(manager->getChannelIndexByID(L"P1"), 1);
    EXPECT_EQ(manager->getChannelIndexByID(L"p1"), -1);
}

TEST_F(ChannelManagerTest, TheIndexByIdDoesNotTakeANameOfAChannel) {
    makeChannels({L"A", L"B"});
    EXPECT_EQ(manager->getChannelIndexByID(L"B"), -1);
}

TEST_F(ChannelManagerTest, AProjectorIsFoundByItsId) {
    makeChannels({L"A", L"B"});
    EXPECT_EQ(manager->getChannelIdRefactor(Channel::ProjectorId("P1")), Channel::Id("B"));
    EXPECT_EQ(manager->getChannelInfoRefactor(Channel::ProjectorId("P1")).getName(), L"B");
}

TEST_F(ChannelManagerTest, AProjectorIsFoundByTheIdThatItHadBefore) {
    makeChannels({L"A", L"B", L"C"});
    entry(1).oldUid = L"K\u00f6ln";
    EXPECT_EQ(manager->getChannelIdRefactor(Channel::ProjectorId("K\xc3\xb6ln")), Channel::Id("B"));
    EXPECT_THAT(trace.lines(), ElementsAre("config.getProjectorConfig(\"P0\")", "projector.getOldUID()",
                                           "config.getProjectorConfig(\"P1\")", "projector.getOldUID()"));
}

TEST_F(ChannelManagerTest, TheFirstChannelThatHasOrHadTheIdIsFound) {
    makeChannels({L"A", L"B"});
    entry(0).oldUid = L"P1";
    EXPECT_EQ(manager->getChannelIdRefactor(Channel::ProjectorId("P1")), Channel::Id("A"))
        << "the channel that had it stands before the one that has it";
    EXPECT_EQ(manager->getChannelInfoRefactor(Channel::ProjectorId("P1")).getName(), L"A");
}

TEST_F(ChannelManagerTest, WhereNothingWasRenamedNoEntryIsQueriedForAFormerId) {
    makeChannels({L"A", L"B"});
    config.oldUIDs = false;
    trace.clear();
    EXPECT_EQ(manager->getChannelIdRefactor(Channel::ProjectorId("P1")), Channel::Id("B"));
    EXPECT_EQ(manager->getChannelIdRefactor(Channel::ProjectorId("P2")), Channel::Id());
    EXPECT_THAT(trace.lines(), ElementsAre());
    EXPECT_EQ(manager->getChannelIdRefactor(Channel::ProjectorId("")), Channel::Id("A"))
        << "an empty id is the former one of all";
}

TEST_F(ChannelManagerTest, AnEntryThatIsGoneHasNoFormerId) {
    makeChannels({L"A", L"B"});
    config.projectors.clear();
    EXPECT_EQ(manager->getChannelIdRefactor(Channel::ProjectorId("old")), Channel::Id());
    EXPECT_EQ(manager->getChannelIdRefactor(Channel::ProjectorId("P1")), Channel::Id("B"));
}

TEST_F(ChannelManagerTest, AnUnknownProjectorHasAnEmptyChannelIdAndNoChannel) {
    makeChannels({L"A"});
    EXPECT_EQ(manager->getChannelIdRefactor(Channel::ProjectorId("A")), Channel::Id());
    EXPECT_EQ(faultOf<std::logic_error>([&] { manager->getChannelInfoRefactor(Channel::ProjectorId("A")); }).what(),
              OUT_OF_BOUNDS);
}

// The conversion of an id that is no text gives an empty one, and an entry that was never renamed has an empty former
// id. Intended: the rule has no exception for them.
TEST_F(ChannelManagerTest, AnIdThatIsNoTextIsTheFormerIdOfWhatWasNeverRenamed) {
    makeChannels({L"A", L"B"});
    entry(0).oldUid = L"old";
    EXPECT_EQ(manager->getChannelIdRefactor(Channel::ProjectorId("\xff")), Channel::Id("B"));
}

TEST_F(ChannelManagerTest, TheProjectorIdOfAnIndexIsTheConfigurationIdInUtf8) {
    addProjector(L"P\u00e4", L"A");
    manager->initialize(false);
    EXPECT_EQ(manager->getProjectorIdRefactor(0), Channel::ProjectorId("P\xc3\xa4"));
}

TEST_F(ChannelManagerTest, AllChannelsComeInOrder) {
    makeChannels({L"C", L"A", L"B"});
    EXPECT_THAT(channelNames(), ElementsAre(L"C", L"A", L"B"));
    EXPECT_THAT(manager->getDisplayDeviceIds(),
                ElementsAre(Channel::ProjectorId("P0"), Channel::ProjectorId("P1"), Channel::ProjectorId("P2")));
    EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(ChannelManagerTest, TheMapHoldsChannelsUnderTheirIds) {
    makeChannels({L"C", L"A"});
    const std::map<Channel::Id, const Channel> map = manager->getChannelInfoMap();
    ASSERT_EQ(map.size(), 2U);
    EXPECT_EQ(map.begin()->first, Channel::Id("A")) << "ordered by id";
    EXPECT_EQ(map.at(Channel::Id("A")).getProjectorConfigId(), L"P1");
    EXPECT_EQ(map.at(Channel::Id("C")).getProjectorConfigId(), L"P0");
}

TEST_F(ChannelManagerTest, TheMapKeepsTheFirstOfSeveralChannelsWithOneId) {
    makeChannels({L"A", L"B"});
    manager->setChannelNames({"X", "X"});
    const auto map = manager->getChannelInfoMap();
    ASSERT_EQ(map.size(), 1U);
    EXPECT_EQ(map.at(Channel::Id("X")).getProjectorConfigId(), L"P0");
}

TEST_F(ChannelManagerTest, WhatIsHandedOutIsACopy) {
    makeChannels({L"A"});
    manager->getChannels().at(0).setChannelLocation(7, 8);
    manager->getChannelInfo(0).setChannelLocation(7, 8);
    int x = 0;
    int y = 0;
    manager->getChannelInfo(0).getChannelLocation(x, y);
    EXPECT_EQ(std::make_pair(x, y), std::make_pair(-1, -1));
}

TEST_F(ChannelManagerTest, TheProjectorEntryIsTheServicesWithoutASearchOfChannels) {
    addEntry(L"spare", L"no channel");
    EXPECT_EQ(manager->getProjectorConfig(L"spare"), &entry(0));
    EXPECT_EQ(manager->getProjectorConfig(L"none"), nullptr);
    EXPECT_THAT(trace.lines(),
                ElementsAre("config.getProjectorConfig(\"spare\")", "config.getProjectorConfig(\"none\")"));
}

TEST_F(ChannelManagerTest, TheEntryOfAChannelIsLookedUpAfresh) {
    makeChannels({L"A"});
    ProjectorConfigDouble replacement(L"P0");
    config.projectors = {&replacement};
    EXPECT_EQ(manager->getConfig(Channel::Id("A")), &replacement);
    EXPECT_EQ(manager->getChannelInfo(0).getConfig(), &entry(0)) << "the one in the channel is another thing";
    EXPECT_THAT(trace.lines(), ElementsAre("config.getProjectorConfig(\"P0\")"));
}

TEST_F(ChannelManagerTest, AnUnknownChannelHasNoEntryAndTheServiceIsNotAsked) {
    makeChannels({L"A"});
    EXPECT_EQ(manager->getConfig(Channel::Id("P0")), nullptr);
    EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(ChannelManagerTest, TheDeviceOfAChannelIsTheDeviceManagersForItsConfigurationId) {
    makeChannels({L"A", L"B"});
    EXPECT_EQ(manager->getAbstractDeviceRefactor(L"P1"), &device(1));
    EXPECT_EQ(manager->getDeviceRefactor(Channel::Id("B")), &device(1));
    EXPECT_EQ(manager->getDeviceRefactor(1), &device(1));
    EXPECT_THAT(trace.lines(),
                ElementsAre("devices.getDevice(\"P1\")", "devices.getDevice(\"P1\")", "devices.getDevice(\"P1\")"));
}

TEST_F(ChannelManagerTest, WithoutAChannelThereIsNoDeviceAndNobodyIsAsked) {
    makeChannels({L"A"});
    devices.devices[L"spare"] = &device(0);
    EXPECT_EQ(manager->getAbstractDeviceRefactor(L"spare"), nullptr);
    EXPECT_EQ(manager->getDeviceRefactor(Channel::Id("P0")), nullptr);
    EXPECT_EQ(manager->getDeviceRefactor(-1), nullptr);
    EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(ChannelManagerTest, AChannelMayHaveNoDevice) {
    makeChannels({L"A"});
    devices.devices.clear();
    EXPECT_EQ(manager->getAbstractDeviceRefactor(L"P0"), nullptr);
    EXPECT_EQ(manager->getDeviceRefactor(Channel::Id("A")), nullptr);
    EXPECT_EQ(manager->getDeviceRefactor(0), nullptr);
}

TEST_F(ChannelManagerTest, WithoutADeviceManagerEveryDeviceIsNull) {
    useDeviceManager(nullptr);
    EXPECT_EQ(manager->getAbstractDeviceRefactor(L"P0"), nullptr);
    EXPECT_EQ(manager->getDeviceRefactor(Channel::Id("A")), nullptr);
    EXPECT_EQ(manager->getDeviceRefactor(0), nullptr) << "the index is not looked at";
}

TEST_F(ChannelManagerTest, InputsAreAskedOfEveryDeviceInOrder) {
    makeChannels({L"A", L"B", L"C"});
    device(0).activeInput = 4;
    device(1).refused = {"GetActiveInputSignalIndex"};
    device(2).activeInput = 2;
    EXPECT_THAT(manager->getChannelInputs(), ElementsAre(4, 0, 2));
    EXPECT_THAT(trace.lines(), ElementsAre("devices.getDevice(\"P0\")", "device P0.supports(GetActiveInputSignalIndex)",
                                           "device P0.execute(GetActiveInputSignalIndex)", "devices.getDevice(\"P1\")",
                                           "device P1.supports(GetActiveInputSignalIndex)", "devices.getDevice(\"P2\")",
                                           "device P2.supports(GetActiveInputSignalIndex)",
                                           "device P2.execute(GetActiveInputSignalIndex)"));
}

TEST_F(ChannelManagerTest, AnInputThatIsNotAnsweredIsAFaultThatNamesTheCommand) {
    makeChannels({L"A"});
    const auto fault = faultOf<CmdResultNotAvailableException>([&] { manager->getChannelInputs(); });
    EXPECT_THAT(Veltrani::toUtf8(fault.message), HasSubstr("GetActiveInputSignalIndex"));
}

TEST_F(ChannelManagerTest, AChannelWithoutADeviceHasInputZero) {
    makeChannels({L"A", L"B"});
    device(1).activeInput = 3;
    devices.devices.erase(L"P0");
    EXPECT_THAT(manager->getChannelInputs(), ElementsAre(0, 3));
}

TEST_F(ChannelManagerTest, InputsAreSetOnEveryDeviceThatCanSwitch) {
    makeChannels({L"A", L"B", L"C"});
    device(1).refused = {"SetActiveInputSignalIndex"};
    manager->setChannelInputs({5, 6, -7});
    EXPECT_THAT(trace.lines(),
                ElementsAre("devices.getDevice(\"P0\")", "device P0.supports(SetActiveInputSignalIndex 5)",
                            "device P0.execute(SetActiveInputSignalIndex 5)", "devices.getDevice(\"P1\")",
                            "device P1.supports(SetActiveInputSignalIndex 6)", "devices.getDevice(\"P2\")",
                            "device P2.supports(SetActiveInputSignalIndex -7)",
                            "device P2.execute(SetActiveInputSignalIndex -7)"));
}

TEST_F(ChannelManagerTest, OneInputTooManyOrTooFewSendsNothing) {
    makeChannels({L"A", L"B"});
    manager->setChannelInputs({1});
    manager->setChannelInputs({1, 2, 3});
    manager->setChannelInputs({});
    EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(ChannelManagerTest, SettingInputsSkipsAChannelWithoutADevice) {
    makeChannels({L"A", L"B"});
    devices.devices.erase(L"P0");
    manager->setChannelInputs({1, 2});
    EXPECT_EQ(device(0).calls("execute"), 0U);
    EXPECT_EQ(device(1).calls("execute"), 1U);
}

TEST_F(ChannelManagerTest, FaultsOfDevicesPassThrough) {
    makeChannels({L"A"});
    device(0).throwFrom("execute", DeviceException(L"broken"));
    EXPECT_EQ(faultOf<DeviceException>([&] { manager->getChannelInputs(); }).message, L"broken");
    EXPECT_EQ(faultOf<DeviceException>([&] { manager->setChannelInputs({1}); }).message, L"broken");
}

TEST_F(ChannelManagerTest, AFreeNameStaysWhatItIs) {
    makeChannels({L"A"});
    EXPECT_EQ(ScreenManagerTestAccess::generateUniqueChannelName(*manager, L"B"), L"B");
    EXPECT_EQ(ScreenManagerTestAccess::generateUniqueChannelName(*manager, L""), L"");
}

TEST_F(ChannelManagerTest, ATakenNameIsCountedOnFromTheBase) {
    makeChannels({L"A", L"A_01"});
    EXPECT_EQ(ScreenManagerTestAccess::generateUniqueChannelName(*manager, L"A"), L"A_02");
    EXPECT_EQ(ScreenManagerTestAccess::generateUniqueChannelName(*manager, L"A_01"), L"A_01_01");
}

TEST_F(ChannelManagerTest, TheCounterHasAtLeastTwoDigits) {
    makeChannels(std::vector<std::wstring>(101, L"A"));
    EXPECT_THAT(channelNames(), testing::IsSupersetOf({L"A", L"A_01", L"A_09", L"A_10", L"A_99", L"A_100"}));
    EXPECT_EQ(ScreenManagerTestAccess::generateUniqueChannelName(*manager, L"A"), L"A_101");
}

}  // namespace
