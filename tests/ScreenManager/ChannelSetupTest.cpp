#include "ChannelFixture.h"
#include "DeviceFramework2/VirtualProjector.h"

/// `ChannelManager::initialize`. What happens between an entry and its device is tested with `ProjectorBinding`.

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ChannelSetupTest : public ChannelFixture {
protected:
    ~ChannelSetupTest() override { manager.reset(); }

    /// Used by the tests that say so.
    Veltrani::DeviceFramework2::DeviceManager real;

    /// The channels, as "name at projector id".
    [[nodiscard]] std::vector<std::wstring> channels() const {
        std::vector<std::wstring> texts;
        for (const Channel& channel : manager->getChannels()) {
            texts.push_back(channel.getName() + L" at " + channel.getProjectorConfigId());
        }
        return texts;
    }

    /// What is asked of entry and device before the duplicates are looked for.
    static std::vector<std::string> bindingOf(const std::string& id) {
        return {"config.getProjectorConfig(\"" + id + "\")",
                "projector.getDeviceSnippet()",
                "devices.createDevice(\"<" + id + "/>\", true, \"\")",
                "projector.getIdentity()",
                "device " + id + ".getUidSourceText()",
                "config.renameProjectorConfig(\"" + id + "\", \"" + id + "\")",
                "device " + id + ".getDeviceSnippet()",
                "projector.setDeviceSnippet(\"<" + id + " now/>\")"};
    }

    static std::vector<std::string> joined(std::initializer_list<std::vector<std::string>> parts) {
        std::vector<std::string> all;
        for (const std::vector<std::string>& part : parts) {
            all.insert(all.end(), part.begin(), part.end());
        }
        return all;
    }
};

TEST_F(ChannelSetupTest, AConfigurationWithoutProjectorsHasNoChannels) {
    manager->initialize(true);
    EXPECT_EQ(manager->getNumberOfChannels(), 0);
    EXPECT_THAT(trace.lines(), ElementsAre(INFO + "initialize: replaceMissingWithOffline 1",
                                           "config.getProjectorConfigIds()", INFO + "initialize end"));
    EXPECT_THAT(log.records().at(0).function, testing::HasSubstr("initialize"));
}

TEST_F(ChannelSetupTest, EveryEntryBecomesAChannelInOrderStepByStep) {
    addProjector(L"P0", L"Left");
    addProjector(L"P1", L"Right");
    manager->initialize(false);
    EXPECT_EQ(trace.lines(),
              joined({{INFO + "initialize: replaceMissingWithOffline 0", "config.getProjectorConfigIds()"},
                      bindingOf("P0"),
                      {"device P0.getLocation()", "devices.bindDevice(\"P0\", \"P0\")", "projector.getName()",
                       "projector.setName(\"Left\")"},
                      bindingOf("P1"),
                      {"device P1.getLocation()", "devices.getDevice(\"P0\")", "device P0.getLocation()",
                       "devices.bindDevice(\"P1\", \"P1\")", "projector.getName()", "projector.setName(\"Right\")"},
                      {INFO + "initialize end"}}));
    EXPECT_TRUE(manager->getChannelInfo(0) == Channel(L"Left", &entry(0), L"P0", -1, -1));
    EXPECT_TRUE(manager->getChannelInfo(1) == Channel(L"Right", &entry(1), L"P1", -1, -1));
}

TEST_F(ChannelSetupTest, EveryRecordIsLocatedInTheOperation) {
    const std::string here = "ChannelManager::initialize in ChannelManager.cpp: ";
    // Replaced after either kind of fault, with and without success; the duplicate; the swap.
    addEntry(L"P0", L"A").height = 1200;
    devices.creatable[{L"<Wrapper><Projector Width='1920' Height='1200'><P0/></Projector></Wrapper>", false}] =
        &makeDevice(L"P0");
    manager->initialize(true);
    EXPECT_THAT(located(),
                ElementsAre(here + "initialize: replaceMissingWithOffline 1",
                            here + "AddDevice threw ChannelInitializationException for P0",
                            here + "Replacing projector P0with (offline) virtual projector", here + "initialize end"));
    for (const LogTrap::Record& record : log.records()) {
        EXPECT_EQ(record.file, "BackEnd/ScreenManager/ChannelManager.cpp");
        EXPECT_GT(record.line, 0);
    }

    const auto lastAfterFault = [&] {
        log.clear();
        EXPECT_ANY_THROW(manager->initialize(true));
        const std::vector<std::string> texts = located();
        for (const std::string& text : texts) {
            EXPECT_THAT(text, testing::StartsWith(here));
        }
        return texts.back();
    };
    config.projectors.clear();
    addEntry(L"P1", L"B");
    EXPECT_EQ(lastAfterFault(), here + "Virtual replace failed for P1");
    devices.throwOnce("createDevice", std::runtime_error("broken"));
    EXPECT_EQ(lastAfterFault(), here + "Virtual replace (2) failed for P1");

    config.projectors.clear();
    addProjector(L"P2", L"C").locationDescription = L"at P0";
    EXPECT_THAT(lastAfterFault(), testing::StartsWith(here + "P2 is being associated with a duplicate device."));
    addProjector(L"020000000001", L"D");
    config.projectors.erase(config.projectors.begin());
    addProjector(L"P3", L"E").uidSourceText = L"<Device mac='02:00:00:00:00:01'/>";
    EXPECT_THAT(lastAfterFault(), testing::StartsWith(here + "P3 is replaced by 020000000001 which is already"));
}

TEST_F(ChannelSetupTest, EqualNamesAreMadeUniqueInChannelAndEntry) {
    addProjector(L"P0", L"Name");
    addProjector(L"P1", L"Name");
    addProjector(L"P2", L"Name");
    manager->initialize(false);
    EXPECT_THAT(channels(), ElementsAre(L"Name at P0", L"Name_01 at P1", L"Name_02 at P2"));
    EXPECT_EQ(entry(1).name, L"Name_01");
    EXPECT_EQ(entry(2).name, L"Name_02");
}

TEST_F(ChannelSetupTest, TheListIsNotClearedFirst) {
    makeChannels({L"A"});
    config.projectors.clear();
    addProjector(L"Q", L"A");
    manager->initialize(false);
    EXPECT_THAT(channels(), ElementsAre(L"A at P0", L"A_01 at Q"));
}

TEST_F(ChannelSetupTest, AnUnreachableProjectorEndsItAndEarlierChannelsRemain) {
    addProjector(L"P0", L"A");
    addEntry(L"P1", L"B");
    addProjector(L"P2", L"C");
    const auto fault = faultOf<ChannelInitializationException>([&] { manager->initialize(false); });
    EXPECT_EQ(fault.message, L"section P1");
    EXPECT_THAT(channels(), ElementsAre(L"A at P0"));
    EXPECT_EQ(trace.lines().back(), ERROR + "AddDevice threw ChannelInitializationException for P1");
    EXPECT_EQ(config.calls("getProjectorConfig"), 2U) << "the third is not looked at";
}

TEST_F(ChannelSetupTest, AnUnreachableProjectorBecomesAVirtualOneWhenAskedFor) {
    addEntry(L"P0", L"A").height = 1200;
    DeviceDouble& virtualOne = makeDevice(L"P0");
    devices.creatable[{L"<Wrapper><Projector Width='1920' Height='1200'><P0/></Projector></Wrapper>", false}] =
        &virtualOne;
    manager->initialize(true);
    EXPECT_THAT(channels(), ElementsAre(L"A at P0"));
    EXPECT_EQ(manager->getDeviceRefactor(0), &virtualOne);
    EXPECT_THAT(log.messages(), testing::Contains("WARN Replacing projector P0with (offline) virtual projector"));
}

TEST_F(ChannelSetupTest, AnEntryThatTheServiceDoesNotHaveIsNamedByItsId) {
    struct Forgetful : ConfigManagerDouble {
        std::vector<std::wstring> getProjectorConfigIds() const override { return {L"gone"}; }
    } forgetful;
    ChannelManager channels(&forgetful);
    const auto fault = faultOf<ChannelInitializationException>([&] { channels.initialize(true); });
    EXPECT_EQ(fault.message, L"gone");
    EXPECT_EQ(channels.getNumberOfChannels(), 0);
}

TEST_F(ChannelSetupTest, AProjectorThatIsAnotherOneThanConfiguredIsRefused) {
    addProjector(L"020000000001", L"A");
    addProjector(L"P1", L"B").uidSourceText = L"<Device mac='02:00:00:00:00:01'/>";
    const auto fault = faultOf<ChannelSwapException>([&] { manager->initialize(true); });
    EXPECT_EQ(fault.message, L"P1 is being swapped by 020000000001");
    EXPECT_THAT(channels(), ElementsAre(L"A at 020000000001"));
}

TEST_F(ChannelSetupTest, ADeviceAtThePlaceOfAChannelIsReleasedAndRefused) {
    addProjector(L"P0", L"A");
    addProjector(L"P1", L"B");
    addProjector(L"P2", L"C").locationDescription = L"at P0";
    const auto fault = faultOf<ChannelSwapException>([&] { manager->initialize(true); });
    EXPECT_EQ(fault.projectorName, L"section P2");
    EXPECT_EQ(fault.replacementName, L"P2");
    EXPECT_THAT(channels(), ElementsAre(L"A at P0", L"B at P1"));
    const std::vector<std::string> lines = trace.lines();
    EXPECT_EQ(std::vector<std::string>(lines.end() - 6, lines.end()),
              (std::vector<std::string>{
                  "device P2.getLocation()", "devices.getDevice(\"P0\")", "device P0.getLocation()",
                  "devices.releaseDevice(\"P2\")",
                  ERROR + "P2 is being associated with a duplicate device. Possibly IP addresses were remapped between "
                          "projectors already in the configuration.",
                  "projector.getSectionID()"}));
}

TEST_F(ChannelSetupTest, EmptyDescriptionsOfPlacesAreEqualTexts) {
    addProjector(L"P0", L"A").locationDescription = L"";
    addProjector(L"P1", L"B").locationDescription = L"";
    EXPECT_EQ(faultOf<ChannelSwapException>([&] { manager->initialize(false); }).projectorName, L"section P1");
}

TEST_F(ChannelSetupTest, ADeviceWithoutAPlaceIsNobodysDuplicate) {
    addProjector(L"P0", L"A").locationDescription.reset();
    addProjector(L"P1", L"B").locationDescription.reset();
    addProjector(L"P2", L"C").locationDescription = L"";
    addProjector(L"P3", L"D").locationDescription.reset();
    manager->initialize(false);
    EXPECT_THAT(channels(), ElementsAre(L"A at P0", L"B at P1", L"C at P2", L"D at P3"));
}

TEST_F(ChannelSetupTest, AChannelWithoutADeviceMakesTheConfigurationInvalid) {
    makeChannels({L"A"});
    devices.devices.clear();
    config.projectors.clear();
    addProjector(L"Q", L"B").locationDescription.reset();
    const auto fault = faultOf<VeltraniException>([&] { manager->initialize(false); });
    EXPECT_EQ(fault.message, L"The file does not contain a valid configuration.");
    EXPECT_EQ(fault.line, -1);
    EXPECT_EQ(fault.file, "");
    EXPECT_EQ(trace.lines().back(), "devices.releaseDevice(\"Q\")") << "nothing is logged";
    EXPECT_THAT(channels(), ElementsAre(L"A at P0"));
}

TEST_F(ChannelSetupTest, WithoutADeviceManagerNoProjectorCanBeReached) {
    useDeviceManager(nullptr);
    addEntry(L"P0", L"A");
    EXPECT_EQ(faultOf<ChannelInitializationException>([&] { manager->initialize(false); }).message, L"section P0");
    EXPECT_EQ(faultOf<ChannelInitializationException>([&] { manager->initialize(true); }).message, L"section P0");
    EXPECT_EQ(manager->getNumberOfChannels(), 0);
}

TEST_F(ChannelSetupTest, WithoutAConfigurationThereAreNoChannels) {
    ChannelManager channels(nullptr);
    channels.initialize(true);
    EXPECT_EQ(channels.getNumberOfChannels(), 0);
    EXPECT_EQ(channels.getProjectorConfig(L"P0"), nullptr);
}

TEST_F(ChannelSetupTest, FaultsOfTheConfigurationPassThrough) {
    addProjector(L"P0", L"A");
    config.throwFrom("renameProjectorConfig", VeltraniException(L"cannot be stored"));
    EXPECT_EQ(faultOf<VeltraniException>([&] { manager->initialize(true); }).message, L"cannot be stored");
    EXPECT_EQ(manager->getNumberOfChannels(), 0);
    EXPECT_EQ(trace.lines().back(), "devices.releaseDevice(\"P0\")") << "the device is not left behind";
}

TEST_F(ChannelSetupTest, AnEntryThatCannotBeRenamedLeavesNoDeviceBehind) {
    addProjector(L"P0", L"A");
    entry(0).throwFrom("setName", VeltraniException(L"cannot be named"));
    EXPECT_EQ(faultOf<VeltraniException>([&] { manager->initialize(true); }).message, L"cannot be named");
    EXPECT_EQ(manager->getNumberOfChannels(), 0);
    EXPECT_EQ(trace.lines().back(), "devices.releaseDevice(\"P0\")");
    EXPECT_EQ(devices.calls("releaseDevice"), 1U);
}

// On the real device manager: two projectors that were never found have no address, so each is known only under the id
// of its entry.
TEST_F(ChannelSetupTest, EntriesThatNeverHadADeviceBecomeVirtualProjectorsOfTheirOwn) {
    useDeviceManager(&real);
    addEntry(L"P0", L"A").deviceSnippet = L"";
    addEntry(L"P1", L"B").deviceSnippet = L"";
    DravixDiagnostics::setVirtualLoad(true);
    manager->initialize(false);
    EXPECT_THAT(channels(), ElementsAre(L"A at P0", L"B at P1"));
    for (int i = 0; i < 2; ++i) {
        EXPECT_NE(dynamic_cast<Veltrani::DeviceFramework2::VirtualProjector*>(manager->getDeviceRefactor(i)), nullptr);
    }
    EXPECT_NE(manager->getDeviceRefactor(0), manager->getDeviceRefactor(1));
    manager.reset();
    EXPECT_EQ(real.deviceCount(), 0U) << "all are given back";
}

TEST_F(ChannelSetupTest, AnEntryMayBeCalledAsAVirtualProjectorWouldBe) {
    useDeviceManager(&real);
    for (const wchar_t* id : {L"A", L"virtual-1", L"virtual-2"}) {
        addEntry(id, id).deviceSnippet = L"";
    }
    DravixDiagnostics::setVirtualLoad(true);
    manager->initialize(false);
    EXPECT_EQ(manager->getNumberOfChannels(), 3);
    EXPECT_NE(manager->getDeviceRefactor(0), manager->getDeviceRefactor(1));
    EXPECT_NE(manager->getDeviceRefactor(1), manager->getDeviceRefactor(2));
    manager.reset();
    EXPECT_EQ(real.deviceCount(), 0U);
}

// The id of an entry without an address leads to the device that was bound to it first.
TEST_F(ChannelSetupTest, ASecondManagerOnTheSameDevicesHasChannelsOfItsOwn) {
    useDeviceManager(&real);
    addEntry(L"A", L"A").deviceSnippet = L"";
    DravixDiagnostics::setVirtualLoad(true);
    manager->initialize(false);
    auto* const first = manager->getDeviceRefactor(0);
    ChannelManager second(&config);
    second.initialize(false);
    EXPECT_EQ(second.getNumberOfChannels(), 1);
    EXPECT_EQ(second.getDeviceRefactor(0), first);
    EXPECT_EQ(manager->getDeviceRefactor(0), first);
}

/// A manager that keeps no entries, as the default of the interface has it.
struct UnbindingManager : DeviceManagerDouble {
    using DeviceManagerDouble::DeviceManagerDouble;
    bool bindDevice(Veltrani::DeviceFramework2::AbstractDevice* device, const std::wstring& id) override {
        record("bindDevice", id);
        return IDeviceManager::bindDevice(device, id);
    }
};

TEST_F(ChannelSetupTest, AManagerThatBindsNothingIsNoConflict) {
    UnbindingManager unbinding(&trace);
    useDeviceManager(&unbinding);
    unbinding.creatable[{addEntry(L"P0", L"A").deviceSnippet, true}] = &makeDevice(L"P0");
    manager->initialize(false);
    EXPECT_THAT(channels(), ElementsAre(L"A at P0"));
    EXPECT_EQ(unbinding.calls("getDevice"), 0U) << "nobody looks for another device";
    EXPECT_EQ(unbinding.calls("releaseDevice"), 0U);
    manager.reset();
}

TEST_F(ChannelSetupTest, AManagerThatKnowsAnotherObjectUnderTheIdIsNoConflict) {
    UnbindingManager views(&trace);
    useDeviceManager(&views);
    views.creatable[{addEntry(L"P0", L"A").deviceSnippet, true}] = &makeDevice(L"P0");
    DeviceDouble& view = makeDevice(L"view of P0");
    views.devices[L"P0"] = &view;
    manager->initialize(false);
    EXPECT_THAT(channels(), ElementsAre(L"A at P0"));
    EXPECT_EQ(manager->getDeviceRefactor(0), &view);
    EXPECT_EQ(views.calls("releaseDevice"), 0U);
    manager.reset();
}

TEST_F(ChannelSetupTest, AManagerWithOneObjectForEveryIdIsNoConflict) {
    struct OneForAll : UnbindingManager {
        using UnbindingManager::UnbindingManager;
        DeviceDouble* only = nullptr;
        Veltrani::DeviceFramework2::AbstractDevice* getDevice(const std::wstring& /*id*/) override { return only; }
    } oneForAll(&trace);
    useDeviceManager(&oneForAll);
    oneForAll.only = &makeDevice(L"any");
    for (const wchar_t* id : {L"P0", L"P1"}) {
        oneForAll.creatable[{addEntry(id, id).deviceSnippet, true}] = &makeDevice(id);
    }
    manager->initialize(false);
    EXPECT_THAT(channels(), ElementsAre(L"P0 at P0", L"P1 at P1"));
    manager.reset();
}

TEST_F(ChannelSetupTest, ADeviceThatCannotBeBoundIsReleasedAndTheFaultGoesOn) {
    addProjector(L"P0", L"A");
    devices.throwFrom("bindDevice", VeltraniException(L"out of order"));
    EXPECT_EQ(faultOf<VeltraniException>([&] { manager->initialize(true); }).message, L"out of order");
    EXPECT_EQ(manager->getNumberOfChannels(), 0);
    EXPECT_EQ(trace.lines().back(), "devices.releaseDevice(\"P0\")");
    EXPECT_EQ(devices.calls("releaseDevice"), 1U);
    EXPECT_EQ(entry(0).calls("setName"), 0U) << "no channel was begun";
}

TEST_F(ChannelSetupTest, AFaultAnywhereBetweenDeviceAndChannelReleasesTheDeviceOnce) {
    const auto check = [&](auto& party, const std::string& operation) {
        party.throwOnce(operation, std::runtime_error(operation));
        const std::size_t before = devices.calls("releaseDevice");
        EXPECT_EQ(std::string(faultOf<std::runtime_error>([&] { manager->initialize(true); }).what()), operation);
        EXPECT_EQ(devices.calls("releaseDevice"), before + 1) << operation;
        EXPECT_EQ(manager->getNumberOfChannels(), 0) << operation;
        party.throwNoMore(operation);
    };
    DeviceDouble& projector = addProjector(L"P0", L"A");
    // What the entry keeps from the round that stored it.
    devices.creatable[{projector.deviceSnippet, true}] = &projector;
    check(entry(0), "getIdentity");
    check(projector, "getUidSourceText");
    check(config, "renameProjectorConfig");
    check(projector, "getDeviceSnippet");
    check(entry(0), "setDeviceSnippet");
    check(projector, "getLocation");
    check(devices, "bindDevice");
    check(entry(0), "getName");
    check(entry(0), "setName");
    manager->initialize(true);
    EXPECT_EQ(manager->getNumberOfChannels(), 1) << "nothing of the faults is left";
}

}  // namespace
