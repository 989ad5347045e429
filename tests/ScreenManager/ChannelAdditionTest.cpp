#include "ChannelFixture.h"
#include "Common/Utf8.h"
#include "DeviceFramework2/DeviceException.h"

/// `ChannelManager::addChannel` and `setDeviceManager`. What is stored of a device is tested with `DeviceEntry`.

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Veltrani::DeviceFramework2::DeviceException;

const std::string MIX_UP =
    "DeviceManager mix-up: addChannel called with DeviceManager that isn't managing ChannelManager's devices.";
const std::string NOT_THE_OWNER = "setDeviceManager: deviceManager does not own ChannelManagers's cameras";

class ChannelAdditionTest : public ChannelFixture {
protected:
    /// A fault that was logged as fatal and thrown with its place.
    void expectFatal(const VeltraniException& fault, const std::string& text) const {
        EXPECT_EQ(Veltrani::toUtf8(fault.message), text);
        EXPECT_THAT(fault.file, HasSubstr("ChannelManager.cpp"));
        EXPECT_GT(fault.line, 0);
        ASSERT_FALSE(trace.lines().empty());
        EXPECT_EQ(trace.lines().back(), FATAL + text);
        EXPECT_THAT(log.records().back().file, HasSubstr("ChannelManager.cpp"));
    }
};

TEST_F(ChannelAdditionTest, NullAddsNothing) {
    EXPECT_FALSE(manager->addChannel(nullptr, &devices));
    EXPECT_FALSE(manager->addChannel(&makeDevice(L"P0"), nullptr));
    EXPECT_FALSE(manager->addChannel(nullptr, nullptr));
    EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(ChannelAdditionTest, AnotherDeviceManagerIsAFault) {
    DeviceManagerDouble other;
    DeviceDouble& device = makeDevice(L"P0");
    expectFatal(faultOf<VeltraniException>([&] { manager->addChannel(&device, &other); }), MIX_UP);
    EXPECT_EQ(trace.lines().size(), 1U) << "nothing else happens";
}

TEST_F(ChannelAdditionTest, AnyDeviceManagerIsAnotherOneThanNone) {
    useDeviceManager(nullptr);
    DeviceDouble& device = makeDevice(L"P0");
    expectFatal(faultOf<VeltraniException>([&] { manager->addChannel(&device, &devices); }), MIX_UP);
}

TEST_F(ChannelAdditionTest, ADeviceThatIsAChannelAlreadyIsReleasedAndThatIsFine) {
    makeChannels({L"A", L"B"});
    EXPECT_TRUE(manager->addChannel(&device(1), &devices));
    EXPECT_THAT(trace.lines(),
                ElementsAre("devices.getDevice(\"P0\")", "devices.getDevice(\"P1\")", "devices.releaseDevice(\"P1\")"));
    EXPECT_THAT(channelNames(), ElementsAre(L"A", L"B"));
}

TEST_F(ChannelAdditionTest, ANewDeviceBecomesTheLastChannelStepByStep) {
    makeChannels({L"A"});
    ProjectorConfigDouble& stored = addEntry(L"P1", L"configured name");
    DeviceDouble& projector = makeDevice(L"P1");
    projector.refused = {"GetFirmware", "GetNativeResolution"};
    EXPECT_TRUE(manager->addChannel(&projector, &devices));
    EXPECT_THAT(
        trace.lines(),
        ElementsAre(
            "devices.getDevice(\"P0\")", "device P1.getUID()", "config.getProjectorConfig(\"P1\")",
            "device P1.getDeviceSnippet()", "device P1.getLocation()", INFO + "addChannel() - Projector UID = [P1]",
            "device P1.supports(GetFirmware)", INFO + "addChannel() - Location desc = [at P1]",
            INFO + "addChannel() - Device snippet = ", INFO + "<P1 now/>", "projector.setDeviceSnippet(\"<P1 now/>\")",
            "device P1.supports(GetNativeResolution)", "device P1.getTypeCode()", "projector.setPondOfMirror(0, 14)",
            "projector.setPondOfMirror(1, 14)", "projector.setPondOfMirror(2, 14)", "projector.setPondOfMirror(3, 14)",
            "device P1.getLocation()", "projector.setName(\"at P1\")", "device P1.supports(GetNativeResolution)",
            "projector.getName()", "projector.setName(\"at P1\")"));
    EXPECT_TRUE(manager->getChannelInfo(1) == Channel(L"at P1", &stored, L"P1", -1, -1));
}

TEST_F(ChannelAdditionTest, TheRecordsAreLocatedInTheOperationAndThoseOfTheSnippetInTheirHelper) {
    addEntry(L"P0", L"");
    DeviceDouble& projector = makeDevice(L"P0");
    projector.firmware = "1.0";
    projector.refused = {"GetNativeResolution"};
    EXPECT_TRUE(manager->addChannel(&projector, &devices));
    const std::string here = "ChannelManager::addChannel in ChannelManager.cpp: addChannel() - ";
    const std::string helper = "VeltraniLogging::multiLineLog in VeltraniLogging.cpp: ";
    EXPECT_THAT(located(), ElementsAre(here + "Projector UID = [P0]", here + "Projector Firmware = [1.0]",
                                       here + "Location desc = [at P0]",
                                       helper + "addChannel() - Device snippet = ", helper + "<P0 now/>"));
    EXPECT_EQ(log.records().front().file, "BackEnd/ScreenManager/ChannelManager.cpp");
    EXPECT_GT(log.records().front().line, 0);
    EXPECT_EQ(log.records().back().file, "Common/VeltraniLogging.cpp");
}

TEST_F(ChannelAdditionTest, TheNameOfANewChannelIsUnique) {
    makeChannels({L"here"});
    ProjectorConfigDouble& stored = addEntry(L"P1", L"");
    DeviceDouble& projector = makeDevice(L"P1");
    projector.refused = {"GetFirmware", "GetNativeResolution"};
    projector.locationDescription = L"here";
    EXPECT_TRUE(manager->addChannel(&projector, &devices));
    EXPECT_THAT(channelNames(), ElementsAre(L"here", L"here_01"));
    EXPECT_EQ(stored.name, L"here_01");
}

TEST_F(ChannelAdditionTest, ADeviceWithoutAnEntryChangesNothing) {
    DeviceDouble& projector = makeDevice(L"P0");
    EXPECT_FALSE(manager->addChannel(&projector, &devices));
    EXPECT_THAT(trace.lines(), ElementsAre("device P0.getUID()", "config.getProjectorConfig(\"P0\")"));
    EXPECT_EQ(manager->getNumberOfChannels(), 0);
}

TEST_F(ChannelAdditionTest, AFaultOfTheDeviceAddsNoChannel) {
    addEntry(L"P0", L"A");
    DeviceDouble& projector = makeDevice(L"P0");
    projector.throwFrom("execute", DeviceException(L"broken"));
    EXPECT_EQ(faultOf<DeviceException>([&] { manager->addChannel(&projector, &devices); }).message, L"broken");
    EXPECT_EQ(manager->getNumberOfChannels(), 0);
}

TEST_F(ChannelAdditionTest, NoDeviceManagerIsAFault) {
    expectFatal(faultOf<VeltraniException>([&] { manager->setDeviceManager(nullptr); }),
                "setDeviceManager: deviceManager is null");
}

TEST_F(ChannelAdditionTest, ADeviceManagerWithoutTheDeviceOfAChannelIsRefused) {
    makeChannels({L"A", L"B", L"C"});
    DeviceManagerDouble other(&trace);
    other.devices[L"P0"] = &device(0);
    expectFatal(faultOf<VeltraniException>([&] { manager->setDeviceManager(&other); }), NOT_THE_OWNER);
    EXPECT_THAT(trace.lines(),
                ElementsAre("devices.getDevice(\"P0\")", "devices.getDevice(\"P1\")", FATAL + NOT_THE_OWNER))
        << "the first missing one ends it";
    devices.devices[L"P2"] = &device(0);
    EXPECT_EQ(manager->getDeviceRefactor(2), &device(0)) << "the old manager is still in use";
}

TEST_F(ChannelAdditionTest, ADeviceManagerWithAllDevicesTakesOver) {
    makeChannels({L"A", L"B"});
    DeviceManagerDouble other(&trace);
    other.devices = {{L"P0", &device(1)}, {L"P1", &device(0)}};
    manager->setDeviceManager(&other);
    EXPECT_EQ(manager->getDeviceRefactor(0), &device(1));
    EXPECT_EQ(devices.calls("getDevice"), 1U) << "asked during set-up only";
    manager->setDeviceManager(&devices);
}

TEST_F(ChannelAdditionTest, AnyDeviceManagerWillDoWithoutChannels) {
    DeviceManagerDouble other;
    manager->setDeviceManager(&other);
    addEntry(L"P0", L"A");
    DeviceDouble& projector = makeDevice(L"P0");
    projector.refused = {"GetFirmware", "GetNativeResolution"};
    EXPECT_TRUE(manager->addChannel(&projector, &other)) << "the new one is in use";
    manager.reset();
}

}  // namespace
