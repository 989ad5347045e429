#include "DeviceFramework2/DeviceManager.h"

#include "DeviceFramework2/Commands.h"
#include "DeviceFramework2/DeviceTypeManager.h"
#include "DeviceFramework2/VirtualProjector.h"
#include "DeviceTesting.h"
#include "support/LogTrap.h"
#include "support/pjlink_simulator/PjlinkSimulator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace device_testing;
using namespace Veltrani::DeviceFramework2;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

const std::wstring VIRTUAL = DeviceTypeManager::virtualProjectorTypeName();

std::wstring wrapped(const std::wstring& inside) {
    return L"<Wrapper><Projector Width='1920' Height='1200'>" + inside + L"</Projector></Wrapper>";
}

class DeviceManagerTest : public testing::Test {
protected:
    static DeviceManager::Settings settings() {
        DeviceManager::Settings result;
        result.pjlink = patientSettings();
        result.search.ownAddress = "127.0.0.1";
        result.search.ownPort = 0;
        result.search.targets = {"127.0.0.1"};
        result.search.targetPort = 9;  // replaced where a search is expected
        result.search.duration = std::chrono::milliseconds(300);
        return result;
    }

    Device* createVirtual(const std::wstring& inside) { return manager.createDevice(wrapped(inside), false, VIRTUAL); }

    DeviceManager manager{settings()};
};

TEST_F(DeviceManagerTest, MakesARealProjectorAndFindsItUnderItsUid) {
    const PjlinkSimulator simulator;
    Device* device = manager.createDevice(snippetText(simulator.port()), true, L"");
    ASSERT_NE(device, nullptr);
    EXPECT_EQ(device->getUID(), L"020000000001");
    EXPECT_EQ(device->getDeviceSnippet(), snippetText(simulator.port()));
    EXPECT_EQ(manager.getDevice(createMACAddressDeviceUIDFromDeviceSnippet(L"left", device->getUidSourceText())),
              device);
    EXPECT_EQ(deprecatedDeviceFromAbstractDevice(manager.getDevice(L"020000000001")), device);
    EXPECT_EQ(manager.getDevice(L"left"), nullptr);
    EXPECT_EQ(manager.getDevice(L""), nullptr);
}

TEST_F(DeviceManagerTest, CountsADeviceThatIsMadeAgain) {
    const PjlinkSimulator simulator;
    Device* device = manager.createDevice(snippetText(simulator.port()), true, L"PJLink");
    EXPECT_EQ(manager.createDevice(snippetText(simulator.port()), true, L""), device);
    EXPECT_EQ(manager.useCount(device), 2);
    EXPECT_EQ(manager.deviceCount(), 1U);
    EXPECT_EQ(simulator.lines().size(), 1U) << "a known device is not contacted again";
    manager.releaseDevice(device);
    EXPECT_EQ(manager.getDevice(L"020000000001"), device);
    manager.releaseDevice(device);
    EXPECT_EQ(manager.getDevice(L"020000000001"), nullptr);
    EXPECT_EQ(manager.deviceCount(), 0U);
    EXPECT_EQ(manager.useCount(device), 0);
}

TEST_F(DeviceManagerTest, ToleratesNullAndStrangersInRelease) {
    LogTrap trap;
    manager.releaseDevice(nullptr);
    EXPECT_THAT(trap.messages(), IsEmpty());
    VirtualProjector stranger({}, L"stranger");
    manager.releaseDevice(&stranger);
    EXPECT_THAT(trap.messages(),
                ElementsAre("WARN releaseDevice: the device is none of this manager's, or was released before"));
}

TEST_F(DeviceManagerTest, AProjectorThatDoesNotAnswerIsNullAndTheCauseIsLogged) {
    PjlinkSimulator simulator;
    simulator.kill();
    LogTrap trap;
    EXPECT_EQ(manager.createDevice(snippetText(simulator.port()), true, L""), nullptr);
    EXPECT_THAT(trap.messages(),
                ElementsAre("WARN createDevice: PJLink projector 020000000001 at 127.0.0.1:" +
                            std::to_string(simulator.port()) + ", first contact: no connection: Connection refused"));
    EXPECT_EQ(manager.deviceCount(), 0U);
}

TEST_F(DeviceManagerTest, ARefusedPasswordIsNullAndIsNotLogged) {
    const Environment password("SM_TEST_PJLINK_PASSWORD", "hunter2");
    const PjlinkSimulator simulator({"--seed", "498e4a67", "--digest", "5d8409bc1c3fa39749434aa3a5c38682"});
    LogTrap trap;
    EXPECT_EQ(manager.createDevice(snippetText(simulator.port()), true, L""), nullptr);
    ASSERT_EQ(trap.messages().size(), 1U);
    EXPECT_THAT(trap.messages().front(), HasSubstr("it refused the password"));
    EXPECT_THAT(trap.messages().front(), testing::Not(HasSubstr("hunter2")));
}

TEST_F(DeviceManagerTest, TheCauseOfABrokenSnippetIsLogged) {
    LogTrap trap;
    const std::string real = faultOf([&] { manager.createDevice(L"<Device type='PJLink'/>", true, L""); });
    const std::string simulated = faultOf([&] { createVirtual(L"<Device"); });
    EXPECT_THAT(trap.messages(),
                testing::ElementsAre("ERROR createDevice: " + real, "ERROR createDevice: " + simulated));
}

TEST_F(DeviceManagerTest, BrokenSnippetsThrowAndLeaveNothing) {
    const LogTrap trap;
    EXPECT_THAT(faultOf([&] { manager.createDevice(L"", true, L""); }), HasSubstr("the entry names no device"));
    EXPECT_THAT(faultOf([&] { manager.createDevice(L"<Device", true, L""); }), StartsWith("Device snippet "));
    EXPECT_THAT(faultOf([&] { createVirtual(L"<Device"); }), StartsWith("Device snippet "));
    EXPECT_THAT(faultOf([&] { manager.createDevice(wrapped(L""), true, L""); }),
                HasSubstr("found element \"Wrapper\", expected Device"));
    EXPECT_EQ(manager.deviceCount(), 0U);
}

TEST_F(DeviceManagerTest, TypesThatContradictThrow) {
    const LogTrap trap;
    EXPECT_EQ(faultOf([&] { manager.createDevice(snippetText(1), true, VIRTUAL); }),
              "Device type \"VirtualProjector\": the type of a real device is PJLink");
    EXPECT_EQ(faultOf([&] { manager.createDevice(wrapped(L""), false, L"PJLink"); }),
              "Device type \"PJLink\": the type of a simulated device is VirtualProjector");
    EXPECT_EQ(faultOf([&] { manager.createDevice(snippetText(1), true, L"Other"); }),
              "Device type \"Other\": the type of a real device is PJLink");
}

TEST_F(DeviceManagerTest, AVirtualProjectorKeepsTheRealOnesSnippetAndUid) {
    const std::wstring real = snippetText(4352);
    Device* device = createVirtual(real);
    ASSERT_NE(device, nullptr);
    EXPECT_EQ(device->getDeviceSnippet(), real);
    EXPECT_EQ(device->getUID(), L"020000000001");
    EXPECT_EQ(device->getLocation()->getDescription(), L"Virtual projector 020000000001");
    EXPECT_EQ(manager.getDevice(createMACAddressDeviceUIDFromDeviceSnippet(L"left", device->getUidSourceText())),
              device);
    EXPECT_EQ(manager.createDevice(wrapped(real), false, L""), device) << "an empty type name is the virtual one";
    EXPECT_EQ(manager.useCount(device), 2);
}

TEST_F(DeviceManagerTest, GoingOfflineAndBackNeverLosesTheSnippet) {
    const PjlinkSimulator simulator;
    std::wstring stored = snippetText(simulator.port());
    for (int round = 0; round < 3; ++round) {
        Device* offline = createVirtual(stored);
        stored = offline->getDeviceSnippet();
        manager.releaseDevice(offline);
        Device* online = manager.createDevice(stored, true, L"");
        ASSERT_NE(online, nullptr);
        stored = online->getDeviceSnippet();
        manager.releaseDevice(online);
    }
    EXPECT_EQ(stored, snippetText(simulator.port()));
}

TEST_F(DeviceManagerTest, EntriesWithoutADeviceGetVirtualProjectorsOfTheirOwn) {
    Device* first = createVirtual(L"");
    Device* second = createVirtual(L"");
    ASSERT_NE(first, second);
    EXPECT_NE(first->getUID(), second->getUID());
    EXPECT_NE(first->getLocation()->getDescription(), second->getLocation()->getDescription());
    EXPECT_EQ(first->getDeviceSnippet(), L"");
    EXPECT_EQ(manager.getDevice(first->getUID()), first);
    EXPECT_EQ(createMACAddressDeviceUIDFromDeviceSnippet(L"left", first->getUidSourceText()), L"left");
}

TEST_F(DeviceManagerTest, ADeviceIsFoundUnderTheEntryThatItIsBoundTo) {
    Device* first = createVirtual(L"");
    Device* second = createVirtual(L"");
    EXPECT_TRUE(manager.bindDevice(first, L"left"));
    EXPECT_TRUE(manager.bindDevice(first, L"left")) << "again";
    EXPECT_EQ(manager.getDevice(L"left"), first);
    EXPECT_FALSE(manager.bindDevice(second, L"left")) << "taken";
    EXPECT_FALSE(manager.bindDevice(second, L""));
    EXPECT_FALSE(manager.bindDevice(nullptr, L"right"));
    EXPECT_TRUE(manager.bindDevice(first, L"centre")) << "another entry";
    EXPECT_EQ(manager.getDevice(L"left"), nullptr);
    EXPECT_EQ(manager.getDevice(L"centre"), first);
    manager.releaseDevice(first);
    EXPECT_EQ(manager.getDevice(L"centre"), nullptr);
}

TEST_F(DeviceManagerTest, AMadeUpUidStandsInNobodysWayOnceItsDeviceIsBound) {
    Device* first = createVirtual(L"");
    const std::wstring madeUp = first->getUID();
    ASSERT_TRUE(manager.bindDevice(first, L"left"));
    Device* second = createVirtual(L"");
    EXPECT_TRUE(manager.bindDevice(second, madeUp)) << "an entry may have any id";
    EXPECT_EQ(manager.getDevice(madeUp), second);
    EXPECT_EQ(manager.getDevice(L"left"), first);
    Device* real = createVirtual(snippetText(4352));
    ASSERT_TRUE(manager.bindDevice(real, L"right"));
    EXPECT_FALSE(manager.bindDevice(second, real->getUID())) << "a MAC address stays taken";
}

TEST_F(DeviceManagerTest, TheOtherKindOfAKnownDeviceIsAnsweredWithAWarning) {
    Device* device = createVirtual(snippetText(4352));
    LogTrap trap;
    EXPECT_EQ(manager.createDevice(snippetText(4352), true, L""), device);
    EXPECT_THAT(
        trap.messages(),
        ElementsAre(
            "WARN createDevice: 020000000001 is in use as a virtual projector and stays one until it is released"));
}

TEST_F(DeviceManagerTest, AProjectorWithoutAnAddressIsSearchedFor) {
    // Answers the search as projector 1 on loopback; the port of the snippet leads to its other socket.
    const PjlinkSimulator simulator({"--search-answers", "3"});
    DeviceManager::Settings searching = settings();
    searching.search.targetPort = simulator.searchPort();
    DeviceManager finder(searching);
    Device* device = finder.createDevice(
        L"<Device type='PJLink' mac='02:00:00:00:00:02' port='" + std::to_wstring(simulator.port()) + L"'/>", true,
        L"");
    ASSERT_NE(device, nullptr);
    EXPECT_EQ(device->getUID(), L"020000000002");
    EXPECT_EQ(device->getDeviceSnippet(), snippetText(simulator.port(), 2)) << "the host that was found is stored";
}

TEST_F(DeviceManagerTest, AProjectorThatTheSearchDoesNotFindIsNull) {
    const PjlinkSimulator simulator({"--search-answers", "3"});
    DeviceManager::Settings searching = settings();
    searching.search.targetPort = simulator.searchPort();
    DeviceManager finder(searching);
    LogTrap trap;
    EXPECT_EQ(finder.createDevice(L"<Device type='PJLink' mac='02:00:00:00:00:99'/>", true, L""), nullptr);
    EXPECT_THAT(
        trap.messages(),
        ElementsAre("WARN createDevice: PJLink projector 020000000099 did not answer the search (3 others did)"));
}

TEST_F(DeviceManagerTest, TellsWhyAProjectorThatMustAnswerDoesNotAndLogsNothing) {
    LogTrap trap;
    const std::string port = [] { return std::to_string(PjlinkSimulator().port()); }();
    EXPECT_EQ(
        faultOf([&] { manager.connectDevice(snippetText(std::stoi(port))); }),
        "PJLink projector 020000000001 at 127.0.0.1:" + port + ", first contact: no connection: Connection refused");
    EXPECT_THAT(faultOf([&] { manager.connectDevice(L"<Device type='PJLink'/>"); }),
                HasSubstr("the attribute mac is missing"));
    EXPECT_EQ(manager.deviceCount(), 0U);
    EXPECT_THAT(trap.messages(), IsEmpty());
}

TEST_F(DeviceManagerTest, ADeviceThatWasConnectedIsCountedLikeACreatedOne) {
    const PjlinkSimulator simulator;
    Device* device = manager.connectDevice(snippetText(simulator.port()));
    EXPECT_EQ(manager.createDevice(snippetText(simulator.port()), true, L""), device);
    EXPECT_EQ(manager.useCount(device), 2);
    EXPECT_EQ(simulator.lines().size(), 1U) << "asked once";
}

/// What `connectDevices` reported for one snippet.
struct Reported {
    Device* device = nullptr;
    std::string fault;
    int calls = 0;
};

/// Connects devices at the same time; each that is there is asked for its power.
std::vector<Reported> connectAll(DeviceManager& manager, const std::vector<std::wstring>& snippets) {
    std::vector<Reported> all(snippets.size());
    std::vector<DeviceManager::Connecting> connecting;
    for (std::size_t i = 0; i < snippets.size(); ++i) {
        connecting.push_back({snippets[i], [&all, i](Device* device, const DeviceException* fault) {
                                  Reported& reported = all[i];
                                  reported.device = device;
                                  reported.fault += fault == nullptr ? "" : Veltrani::toUtf8(fault->message);
                                  return ++reported.calls == 1 ? std::make_shared<GetPowerState>() : nullptr;
                              }});
    }
    manager.connectDevices(connecting);
    return all;
}

TEST_F(DeviceManagerTest, ConnectsManyDevicesEachWithItsOwnResult) {
    const PjlinkSimulator good({"--projectors", "2"});
    const PjlinkSimulator known;
    const std::string dead = std::to_string(PjlinkSimulator().port());
    Device* before = manager.connectDevice(snippetText(known.port(), 4));
    LogTrap trap;
    const auto all =
        connectAll(manager, {snippetText(good.port(0), 1), snippetText(std::stoi(dead), 2), L"<Device type='PJLink'/>",
                             snippetText(good.port(1), 3), snippetText(known.port(), 4), snippetText(good.port(0), 1)});
    ASSERT_NE(all[0].device, nullptr);
    EXPECT_EQ(all[0].device->getUID(), L"020000000001");
    EXPECT_EQ(all[0].fault, "");
    EXPECT_EQ(all[0].calls, 2) << "for the first command, and after it";
    EXPECT_EQ(all[1].fault, "PJLink projector 020000000002 at 127.0.0.1:" + dead +
                                ", first contact: no connection: Connection refused");
    EXPECT_EQ(all[1].device, nullptr);
    EXPECT_EQ(all[1].calls, 1) << "what it returned is for nobody";
    EXPECT_THAT(all[2].fault, HasSubstr("the attribute mac is missing"));
    EXPECT_EQ(all[3].fault, "");
    EXPECT_EQ(all[4].device, before);
    EXPECT_EQ(manager.useCount(before), 2);
    EXPECT_THAT(known.lines(), ElementsAre("%1CLSS ?", "%1POWR ?")) << "a known device is not contacted again";
    EXPECT_EQ(all[5].fault, "PJLink projector 020000000001 is stated twice");
    EXPECT_THAT(good.lines(0), ElementsAre("%1CLSS ?", "%1POWR ?"));
    EXPECT_EQ(manager.deviceCount(), 3U);
    EXPECT_EQ(manager.useCount(all[0].device), 1);
    EXPECT_EQ(manager.getDevice(L"020000000003"), all[3].device);
    EXPECT_THAT(trap.messages(), IsEmpty());
}

TEST_F(DeviceManagerTest, SeveralProjectorsWithoutAnAddressAreSearchedForAtOnce) {
    const PjlinkSimulator simulator({"--search-answers", "3"});
    DeviceManager::Settings searching = settings();
    searching.search.targetPort = simulator.searchPort();
    searching.search.requests = 1;
    DeviceManager finder(searching);
    const auto snippet = [&](const std::wstring& number) {
        return L"<Device type='PJLink' mac='02:00:00:00:00:" + number + L"' port='" +
               std::to_wstring(simulator.port()) + L"'/>";
    };
    const auto all = connectAll(finder, {snippet(L"01"), snippet(L"03"), snippet(L"98"), snippet(L"99")});
    ASSERT_NE(all[0].device, nullptr) << all[0].fault;
    ASSERT_NE(all[1].device, nullptr) << all[1].fault;
    EXPECT_EQ(all[0].device->getDeviceSnippet(), snippetText(simulator.port(), 1));
    EXPECT_EQ(all[2].fault, "PJLink projector 020000000098 did not answer the search (3 others did)");
    EXPECT_EQ(all[3].fault, "PJLink projector 020000000099 did not answer the search (3 others did)");
    const auto events = simulator.journal();
    EXPECT_EQ(std::count(events.begin(), events.end(), "SEARCH %2SRCH"), 1);
}

TEST_F(DeviceManagerTest, ASearchThatCannotBeMadeIsTheFaultOfAllThatNeedIt) {
    const PjlinkSimulator simulator;
    DeviceManager::Settings searching = settings();
    searching.search.ownPort = simulator.searchPort();
    DeviceManager finder(searching);
    const auto all =
        connectAll(finder, {L"<Device type='PJLink' mac='02:00:00:00:00:01'/>", snippetText(simulator.port(), 2),
                            L"<Device type='PJLink' mac='02:00:00:00:00:03'/>"});
    EXPECT_THAT(all[0].fault, HasSubstr("Address already in use. Give the address of each projector instead"));
    EXPECT_EQ(all[1].fault, "");
    EXPECT_EQ(all[2].fault, all[0].fault);
}

TEST(DeviceManagerInstance, OpensNoSocketAndIsOnePerProcess) {
    const auto before = openDescriptors();
    IDeviceManager* instance = DeviceManager::getInstance();
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ(DeviceManager::getInstance(), instance);
    EXPECT_EQ(instance->getDevice(L"020000000001"), nullptr);
    EXPECT_EQ(openDescriptors(), before);
}

TEST(DeviceManagerInstance, CanBeADoubleOrNull) {
    IDeviceManager* const standard = DeviceManager::getInstance();
    DeviceManager other;
    DeviceManager::setInstance(&other);
    EXPECT_EQ(DeviceManager::getInstance(), &other);
    DeviceManager::setInstance(nullptr);
    EXPECT_EQ(DeviceManager::getInstance(), nullptr);
    DeviceManager::setInstance(standard);
    EXPECT_EQ(DeviceManager::getInstance(), standard);
}

TEST(IDeviceManager, AManagerThatKnowsNothingOfEntriesBindsNone) {
    class Plain : public IDeviceManager {
    public:
        AbstractDevice* getDevice(const std::wstring&) override { return nullptr; }
        Device* createDevice(const std::wstring&, bool, const std::wstring&) override { return nullptr; }
        void releaseDevice(AbstractDevice*) override {}
    };
    Plain plain;
    EXPECT_FALSE(plain.bindDevice(nullptr, L"left"));
}

}  // namespace
