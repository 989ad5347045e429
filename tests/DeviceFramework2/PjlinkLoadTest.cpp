// Many projectors, many connections, and projectors that die: what a long day in a dome brings.
#include "DeviceFramework2/Commands.h"
#include "DeviceFramework2/DeviceManager.h"
#include "DeviceFramework2/PJLinkProjector.h"
#include "DeviceTesting.h"
#include "support/LogTrap.h"
#include "support/pjlink_simulator/PjlinkSimulator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace device_testing;
using namespace Veltrani::DeviceFramework2;
using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;

TEST(PjlinkLoad, ThirtyTwoProjectorsInARow) {
    constexpr int PROJECTORS = 32;
    const PjlinkSimulator simulator({"--projectors", std::to_string(PROJECTORS)});
    const auto descriptors = openDescriptors();
    const auto threadsBefore = threads();
    DeviceManager manager({patientSettings(), {}});
    std::vector<Device*> devices;
    for (int i = 0; i < PROJECTORS; ++i) {
        devices.push_back(
            manager.createDevice(snippetText(simulator.port(static_cast<std::size_t>(i)), i + 1), true, L""));
        ASSERT_NE(devices.back(), nullptr);
    }
    for (Device* device : devices) {
        device->execute(std::make_shared<Device::Drawing::RunFillBlackTo>(5));
    }
    for (std::size_t i = 0; i < PROJECTORS; ++i) {
        EXPECT_THAT(simulator.lines(i), ElementsAre("%1CLSS ?", "%1AVMT 11")) << i;
    }
    EXPECT_EQ(simulator.mostConnections(), 1);
    EXPECT_EQ(openDescriptors(), descriptors) << "no connection stays open";
    EXPECT_EQ(threads(), threadsBefore);
}

TEST(PjlinkLoad, AThousandConnectionsLeaveNothingBehind) {
    constexpr int CYCLES = 1000;
    const PjlinkSimulator simulator;
    PJLinkProjector projector(snippetFor(simulator.port()), patientSettings());
    const auto descriptors = openDescriptors();
    const auto threadsBefore = threads();
    for (int i = 0; i < CYCLES; ++i) {
        projector.contact();
    }
    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_EQ(threads(), threadsBefore);
    EXPECT_EQ(simulator.lines().size(), static_cast<std::size_t>(CYCLES));
    EXPECT_EQ(simulator.mostConnections(), 1);
}

TEST(PjlinkLoad, FailedConnectionsLeaveNothingBehind) {
    constexpr int CYCLES = 200;
    const PjlinkSimulator simulator({"--greeting", "not a projector"});
    PJLinkProjector projector(snippetFor(simulator.port()), patientSettings());
    const auto descriptors = openDescriptors();
    for (int i = 0; i < CYCLES; ++i) {
        EXPECT_NE(faultOf([&] { projector.contact(); }), "no fault");
    }
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST(PjlinkLoad, AProjectorThatDiesBetweenTwoCommandsIsAFaultAtOnce) {
    PjlinkSimulator simulator;
    PJLinkProjector projector(snippetFor(simulator.port()), patientSettings());
    projector.contact();
    projector.execute(std::make_shared<Device::Drawing::RunFillBlackTo>(5));
    simulator.kill();
    std::string fault;
    const auto time =
        timeOf([&] { fault = faultOf([&] { projector.execute(std::make_shared<Device::Drawing::RunClearTo>(2)); }); });
    EXPECT_THAT(fault, EndsWith(", command RunClearTo: no connection: Connection refused"));
    EXPECT_LT(time, PATIENT);
}

TEST(PjlinkLoad, OneSilentProjectorDelaysTheOthersByItsLimitsOnly) {
    const PjlinkSimulator silent({"--greeting", "-"});
    const PjlinkSimulator good;
    LogTrap trap;
    DeviceManager manager({impatientSettings(), {}});
    Device* first = nullptr;
    Device* second = nullptr;
    const auto time = timeOf([&] {
        first = manager.createDevice(snippetText(silent.port(), 1), true, L"");
        second = manager.createDevice(snippetText(good.port(), 2), true, L"");
    });
    EXPECT_EQ(first, nullptr);
    EXPECT_NE(second, nullptr);
    EXPECT_LT(time, IMPATIENT + GRACE);
    EXPECT_THAT(trap.messages(), ElementsAre(EndsWith("first contact: no answer within 150 ms")));
}

}  // namespace
