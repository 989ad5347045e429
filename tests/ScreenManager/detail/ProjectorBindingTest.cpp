#include "ScreenManager/detail/ChannelDevices.h"

#include "ChannelFixture.h"
#include "DeviceFramework2/DeviceException.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Veltrani::DeviceFramework2::DeviceException;
using Veltrani::ScreenManagerDetail::ProjectorBinding;

const std::wstring MAC_TEXT = L"<Device mac='02:00:00:00:00:01'/>";
const std::wstring MAC_UID = L"020000000001";

const log4cxx::spi::LocationInfo OPERATION("a/File.cpp", "File.cpp", "void SomeClass::someOperation(int)", 12);

class ProjectorBindingTest : public ChannelFixture {
protected:
    /// A projector of 1920 x 1200 pixels that answers.
    ProjectorBindingTest() {
        addProjector(L"P0", L"Left");
        entry(0).height = 1200;
    }

    ProjectorBinding::Result bind(bool replaceMissing) {
        return ProjectorBinding(&config, &devices, replaceMissing, OPERATION).bind(L"P0", entry(0));
    }

    /// From now on the projector does not answer.
    void disconnect() { devices.creatable.clear(); }
    /// A virtual projector can be made in its place.
    DeviceDouble& makeReplacement() {
        DeviceDouble& replacement = makeDevice(L"V0");
        replacement.deviceSnippet = entry(0).deviceSnippet;
        devices.creatable[{L"<Wrapper><Projector Width='1920' Height='1200'><P0/></Projector></Wrapper>", false}] =
            &replacement;
        return replacement;
    }

    template <class Fault = ChannelInitializationException>
    std::wstring faultMessage(bool replaceMissing) {
        return faultOf<Fault>([&] { bind(replaceMissing); }).message;
    }

    const std::string CREATE_REAL = "devices.createDevice(\"<P0/>\", true, \"\")";
    const std::string CREATE_VIRTUAL =
        "devices.createDevice(\"<Wrapper><Projector Width='1920' Height='1200'><P0/></Projector></Wrapper>\", false, "
        "\"VirtualProjector\")";
    const std::string REPLACING = WARN + "Replacing projector P0with (offline) virtual projector";
};

TEST_F(ProjectorBindingTest, AnEntryTakesTheSnippetAndTheUidOfItsDevice) {
    device(0).uidSourceText = MAC_TEXT;
    const auto result = bind(false);
    EXPECT_EQ(result.device, &device(0));
    EXPECT_EQ(result.uid, MAC_UID);
    EXPECT_EQ(entry(0).identity, MAC_UID);
    EXPECT_EQ(entry(0).oldUid, L"P0");
    EXPECT_EQ(entry(0).deviceSnippet, L"<P0 now/>");
    EXPECT_THAT(trace.lines(),
                ElementsAre("projector.getDeviceSnippet()", CREATE_REAL, "projector.getIdentity()",
                            "device P0.getUidSourceText()", "config.renameProjectorConfig(\"P0\", \"020000000001\")",
                            "device P0.getDeviceSnippet()", "projector.setDeviceSnippet(\"<P0 now/>\")"));
}

TEST_F(ProjectorBindingTest, ADeviceWithoutAnAddressKeepsTheIdentityOfTheEntry) {
    device(0).uidSourceText = L"<Device host='192.0.2.10'/>";
    EXPECT_EQ(bind(false).uid, L"P0") << "never the address in the network";
    EXPECT_EQ(entry(0).oldUid, L"");
}

TEST_F(ProjectorBindingTest, AProjectorThatDoesNotAnswerIsAFaultOfItsSection) {
    disconnect();
    const auto fault = faultOf<ChannelInitializationException>([&] { bind(false); });
    EXPECT_EQ(fault.message, L"section P0");
    EXPECT_EQ(fault.reason, L"section P0");
    EXPECT_EQ(fault.line, -1);
    EXPECT_THAT(trace.lines(), ElementsAre("projector.getDeviceSnippet()", CREATE_REAL, "projector.getSectionID()",
                                           ERROR + "AddDevice threw ChannelInitializationException for P0"));
}

TEST_F(ProjectorBindingTest, AProjectorThatDoesNotAnswerIsReplacedWhenAskedFor) {
    disconnect();
    DeviceDouble& replacement = makeReplacement();
    const auto result = bind(true);
    EXPECT_EQ(result.device, &replacement);
    EXPECT_EQ(result.uid, L"P0");
    EXPECT_EQ(entry(0).deviceSnippet, L"<P0/>") << "nothing of the real projector is lost";
    EXPECT_THAT(
        trace.lines(),
        ElementsAre("projector.getDeviceSnippet()", CREATE_REAL, "projector.getSectionID()",
                    ERROR + "AddDevice threw ChannelInitializationException for P0", REPLACING, "projector.getWidth()",
                    "projector.getHeight()", "projector.getDeviceSnippet()", CREATE_VIRTUAL, "projector.getIdentity()",
                    "device V0.getUidSourceText()", "config.renameProjectorConfig(\"P0\", \"P0\")",
                    "device V0.getDeviceSnippet()", "projector.setDeviceSnippet(\"<P0/>\")"));
}

TEST_F(ProjectorBindingTest, AReplacementThatFailsToo) {
    disconnect();
    EXPECT_EQ(faultMessage(true), L"section P0");
    EXPECT_THAT(trace.lines(),
                ElementsAre("projector.getDeviceSnippet()", CREATE_REAL, "projector.getSectionID()",
                            ERROR + "AddDevice threw ChannelInitializationException for P0", REPLACING,
                            "projector.getWidth()", "projector.getHeight()", "projector.getDeviceSnippet()",
                            CREATE_VIRTUAL, ERROR + "Virtual replace failed for P0", "projector.getSectionID()"));
}

TEST_F(ProjectorBindingTest, AnInitializationFaultOfTheDeviceManagerIsThrownOnAsItIs) {
    devices.throwFrom("createDevice", ChannelInitializationException(L"its own words"));
    EXPECT_EQ(faultMessage(false), L"its own words");
    EXPECT_THAT(trace.lines(), ElementsAre("projector.getDeviceSnippet()", CREATE_REAL,
                                           ERROR + "AddDevice threw ChannelInitializationException for P0"));
}

TEST_F(ProjectorBindingTest, AnyOtherFaultBecomesAFaultOfTheSection) {
    const auto check = [&] {
        trace.clear();
        EXPECT_EQ(faultMessage(false), L"section P0");
        EXPECT_THAT(trace.lines(), ElementsAre("projector.getDeviceSnippet()", CREATE_REAL,
                                               ERROR + "Exception occured when adding P0", "projector.getSectionID()"));
    };
    devices.throwFrom("createDevice", DeviceException(L"broken snippet"));
    check();
    devices.throwFrom("createDevice", std::runtime_error("no memory"));
    check();
    devices.throwFrom("createDevice", 5);
    check();
    devices.throwFrom("createDevice", ChannelSwapException(L"A", L"B"));
    check();
}

TEST_F(ProjectorBindingTest, AFaultWhileReadingTheEntryCountsToo) {
    entry(0).throwFrom("getDeviceSnippet", std::runtime_error("unreadable"));
    EXPECT_EQ(faultMessage(false), L"section P0");
    EXPECT_EQ(devices.calls("createDevice"), 0U);
}

TEST_F(ProjectorBindingTest, AfterAnyOtherFaultTheProjectorIsReplacedWhenAskedFor) {
    DeviceDouble& replacement = makeReplacement();
    devices.throwOnce("createDevice", DeviceException(L"broken snippet"));
    EXPECT_EQ(bind(true).device, &replacement);
    EXPECT_EQ(trace.lines().at(2), ERROR + "Exception occured when adding P0");
    EXPECT_EQ(trace.lines().at(3), REPLACING);
}

TEST_F(ProjectorBindingTest, AReplacementThatFailsAfterAnyOtherFaultHasItsOwnText) {
    devices.throwOnce("createDevice", DeviceException(L"broken snippet"));
    EXPECT_EQ(faultMessage(true), L"section P0");
    EXPECT_THAT(trace.lines(),
                ElementsAre("projector.getDeviceSnippet()", CREATE_REAL, ERROR + "Exception occured when adding P0",
                            REPLACING, "projector.getWidth()", "projector.getHeight()", "projector.getDeviceSnippet()",
                            CREATE_VIRTUAL, ERROR + "Virtual replace (2) failed for P0", "projector.getSectionID()"));
}

TEST_F(ProjectorBindingTest, AFaultOfTheReplacementItselfPassesThrough) {
    devices.throwFrom("createDevice", DeviceException(L"broken snippet"));
    EXPECT_EQ(faultMessage<DeviceException>(true), L"broken snippet");
}

TEST_F(ProjectorBindingTest, WithVirtualLoadTheRealProjectorIsNotAskedFor) {
    DravixDiagnostics::setVirtualLoad(true);
    DeviceDouble& replacement = makeReplacement();
    EXPECT_EQ(bind(false).device, &replacement);
    EXPECT_EQ(trace.lines().at(0), REPLACING);
    EXPECT_EQ(devices.calls("createDevice"), 1U);
}

TEST_F(ProjectorBindingTest, WithVirtualLoadAFailedReplacementIsTriedOnceMoreWhenAskedFor) {
    DravixDiagnostics::setVirtualLoad(true);
    EXPECT_EQ(faultMessage(false), L"section P0");
    EXPECT_EQ(devices.calls("createDevice"), 1U);
    trace.clear();
    EXPECT_EQ(faultMessage(true), L"section P0");
    EXPECT_THAT(trace.lines(),
                ElementsAre(REPLACING, "projector.getWidth()", "projector.getHeight()", "projector.getDeviceSnippet()",
                            CREATE_VIRTUAL, "projector.getSectionID()",
                            ERROR + "AddDevice threw ChannelInitializationException for P0", REPLACING,
                            "projector.getWidth()", "projector.getHeight()", "projector.getDeviceSnippet()",
                            CREATE_VIRTUAL, ERROR + "Virtual replace failed for P0", "projector.getSectionID()"));
}

TEST_F(ProjectorBindingTest, AUidThatAnotherEntryHasIsASwap) {
    addEntry(MAC_UID, L"Right");
    device(0).uidSourceText = MAC_TEXT;
    const auto fault = faultOf<ChannelSwapException>([&] { bind(false); });
    EXPECT_EQ(fault.projectorName, L"P0");
    EXPECT_EQ(fault.replacementName, MAC_UID);
    EXPECT_EQ(fault.message, L"P0 is being swapped by 020000000001");
    EXPECT_THAT(trace.lines(),
                ElementsAre("projector.getDeviceSnippet()", CREATE_REAL, "projector.getIdentity()",
                            "device P0.getUidSourceText()", "config.renameProjectorConfig(\"P0\", \"020000000001\")",
                            "devices.releaseDevice(\"P0\")",
                            ERROR + "P0 is replaced by 020000000001 which is already in the config.  Quorvane does "
                                    "not support projector swapping"));
    EXPECT_EQ(entry(0).deviceSnippet, L"<P0/>") << "what was configured stays";
}

TEST_F(ProjectorBindingTest, AnEntryThatFailsAfterwardsLeavesNoDeviceBehind) {
    entry(0).throwOnce("setDeviceSnippet", VeltraniException(L"cannot be stored"));
    EXPECT_EQ(faultMessage<VeltraniException>(false), L"cannot be stored");
    EXPECT_EQ(trace.lines().back(), "devices.releaseDevice(\"P0\")");
    config.throwOnce("renameProjectorConfig", VeltraniException(L"cannot be renamed"));
    EXPECT_EQ(faultMessage<VeltraniException>(false), L"cannot be renamed");
    EXPECT_EQ(trace.lines().back(), "devices.releaseDevice(\"P0\")");
    EXPECT_EQ(devices.calls("releaseDevice"), 2U);
}

TEST_F(ProjectorBindingTest, WithoutADeviceManagerThereIsNoDeviceEither) {
    const auto bindAlone = [&] { ProjectorBinding(&config, nullptr, true, OPERATION).bind(L"P0", entry(0)); };
    EXPECT_EQ(faultOf<ChannelInitializationException>(bindAlone).message, L"section P0");
    EXPECT_EQ(log.messages().back(), "ERROR Virtual replace failed for P0");
}

}  // namespace
