#include "ScreenManager/detail/ProjectorPreparation.h"

#include "ChannelFixture.h"
#include "Common/RunCatch.h"
#include "DeviceFramework2/DeviceException.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Veltrani::DeviceFramework2::DeviceException;
using Veltrani::ScreenManagerDetail::ProjectorPreparation;

using State = IChannelManager::ProjectorState;

const std::string REPORT = "ERROR Common.RunCatch: Caught exception: ";

/// Three projectors; what a state sends to them.
class ProjectorPreparationTest : public ChannelFixture {
protected:
    ProjectorPreparationTest() { makeChannels({L"A", L"B", L"C"}); }

    void prepare(State state) {
        std::vector<Veltrani::DeviceFramework2::AbstractDevice*> list;
        for (std::size_t i = 0; i < 3; ++i) {
            list.push_back(&device(i));
        }
        ProjectorPreparation(list).run(state);
    }

    /// The same step on all three projectors, in order.
    static std::vector<std::string> onAll(const std::string& step) {
        return {"device P0." + step, "device P1." + step, "device P2." + step};
    }

    static std::vector<std::string> joined(std::initializer_list<std::vector<std::string>> parts) {
        std::vector<std::string> all;
        for (const std::vector<std::string>& part : parts) {
            all.insert(all.end(), part.begin(), part.end());
        }
        return all;
    }

    const std::vector<std::string> blackLevelBlend =
        joined({onAll("supports(DisableBlackLevelBlend)"), onAll("execute(DisableBlackLevelBlend)")});
    const std::vector<std::string> supportedWarp{
        "device P0.supports(DisableWhiteLevelWarp)", "device P0.execute(DisableWhiteLevelWarp)",
        "device P1.supports(DisableWhiteLevelWarp)", "device P1.execute(DisableWhiteLevelWarp)",
        "device P2.supports(DisableWhiteLevelWarp)", "device P2.execute(DisableWhiteLevelWarp)"};
};

TEST_F(ProjectorPreparationTest, BlackStepByStep) {
    prepare(State::Black);
    EXPECT_EQ(trace.lines(), joined({onAll("execute(RunFillBlackTo 5)"), onAll("execute(DisableWhiteLevelBlend)"),
                                     blackLevelBlend, supportedWarp}));
}

TEST_F(ProjectorPreparationTest, Gray50StepByStep) {
    prepare(State::Gray50);
    EXPECT_EQ(trace.lines(), joined({onAll("execute(RunFill50GrayTo 5)"), onAll("execute(DisableWhiteLevelWarp)"),
                                     onAll("execute(DisableWhiteLevelBlend)"), blackLevelBlend}));
}

TEST_F(ProjectorPreparationTest, ClearSendsNothingElse) {
    prepare(State::Clear);
    EXPECT_EQ(trace.lines(), onAll("execute(RunClearTo 2)"));
}

TEST_F(ProjectorPreparationTest, WhatIsNoStateSendsNothing) {
    for (const int value : {3, 4, 1000, -1}) {
        const auto state = static_cast<State>(value);
        EXPECT_FALSE(ProjectorPreparation::isState(state)) << value;
        prepare(state);
        manager->setupProjectorState(state);
    }
    EXPECT_THAT(trace.lines(), IsEmpty());
    for (const State state : {State::Black, State::Gray50, State::Clear}) {
        EXPECT_TRUE(ProjectorPreparation::isState(state));
    }
}

TEST_F(ProjectorPreparationTest, OneProjectorThatRefusesTheBlackLevelStopsItForAll) {
    device(1).refused = {"DisableBlackLevelBlend"};
    for (const State state : {State::Black, State::Gray50}) {
        trace.clear();
        prepare(state);
        for (const std::string& line : trace.lines()) {
            EXPECT_THAT(line, testing::Not(HasSubstr("execute(DisableBlackLevelBlend)")));
        }
    }
    EXPECT_EQ(device(2).calls("supports"), 1U) << "only asked for the warp of black: the second had refused before";
}

TEST_F(ProjectorPreparationTest, BlackSkipsTheWarpOfAProjectorThatRefusesIt) {
    device(1).refused = {"DisableWhiteLevelWarp"};
    prepare(State::Black);
    EXPECT_EQ(std::vector<std::string>(trace.lines().end() - 5, trace.lines().end()),
              (std::vector<std::string>{
                  "device P0.supports(DisableWhiteLevelWarp)", "device P0.execute(DisableWhiteLevelWarp)",
                  "device P1.supports(DisableWhiteLevelWarp)", "device P2.supports(DisableWhiteLevelWarp)",
                  "device P2.execute(DisableWhiteLevelWarp)"}));
}

TEST_F(ProjectorPreparationTest, Gray50SendsTheWarpToAProjectorThatRefusesIt) {
    device(1).refused = {"DisableWhiteLevelWarp"};
    prepare(State::Gray50);
    EXPECT_THAT(trace.lines(), testing::Contains("device P1.execute(DisableWhiteLevelWarp)"));
    EXPECT_THAT(trace.lines(), testing::Not(testing::Contains("device P1.supports(DisableWhiteLevelWarp)")));
}

TEST_F(ProjectorPreparationTest, FillAndBlendAreSentWithoutATestOfSupport) {
    for (std::size_t i = 0; i < 3; ++i) {
        device(i).refused = {"RunFillBlackTo", "RunFill50GrayTo", "RunClearTo", "DisableWhiteLevelBlend",
                             "DisableBlackLevelBlend"};
    }
    prepare(State::Black);
    prepare(State::Gray50);
    prepare(State::Clear);
    EXPECT_EQ(device(2).calls("execute"), 2U + 1U + 3U + 1U)
        << "fill and blend; warp of black; fill, warp and blend; clear";
}

TEST_F(ProjectorPreparationTest, AFaultInTheBlackLevelStepOfBlackIsReportedAndTheWarpFollows) {
    device(1).throwFrom("supports", DeviceException(L"broken"));
    try {
        prepare(State::Black);
        FAIL() << "the warp step asks the broken device too";
    } catch (const DeviceException& fault) {
        EXPECT_EQ(fault.message, L"broken") << "the warp step is not guarded";
    }
    EXPECT_THAT(trace.lines(), testing::Contains(REPORT + "broken"));
}

TEST_F(ProjectorPreparationTest, AFaultThatIsOverEndsNothing) {
    device(1).throwOnce("supports", DeviceException(L"broken"));
    prepare(State::Black);
    EXPECT_EQ(trace.lines(), joined({onAll("execute(RunFillBlackTo 5)"),
                                     onAll("execute(DisableWhiteLevelBlend)"),
                                     {"device P0.supports(DisableBlackLevelBlend)",
                                      "device P1.supports(DisableBlackLevelBlend)", REPORT + "broken"},
                                     supportedWarp}));
}

TEST_F(ProjectorPreparationTest, AnyFaultInTheBlackLevelStepOfGray50IsReportedAndItEndsNormally) {
    constexpr std::size_t BLACK_LEVEL_COMMAND = 3;  // after fill, warp and blend
    device(0).throwFrom("execute", 5, BLACK_LEVEL_COMMAND);
    prepare(State::Gray50);
    EXPECT_EQ(trace.lines().back(), REPORT + "(...) No details");
    EXPECT_EQ(device(1).calls("execute"), BLACK_LEVEL_COMMAND) << "nothing after the fault";
}

TEST_F(ProjectorPreparationTest, AFaultOfAnyOtherCommandPassesThroughAndEndsIt) {
    device(1).throwFrom("execute", DeviceException(L"broken"), 1);
    EXPECT_EQ(faultOf<DeviceException>([&] { prepare(State::Black); }).message, L"broken");
    EXPECT_EQ(trace.lines(),
              joined({onAll("execute(RunFillBlackTo 5)"),
                      {"device P0.execute(DisableWhiteLevelBlend)", "device P1.execute(DisableWhiteLevelBlend)"}}));
}

TEST_F(ProjectorPreparationTest, TheManagerCollectsEveryDeviceBeforeTheFirstCommand) {
    manager->setupProjectorState(State::Clear);
    EXPECT_EQ(trace.lines(),
              joined({{"devices.getDevice(\"P0\")", "devices.getDevice(\"P1\")", "devices.getDevice(\"P2\")"},
                      onAll("execute(RunClearTo 2)")}));
}

TEST_F(ProjectorPreparationTest, TheManagerFollowsTheOrderOfTheChannels) {
    manager->moveChannel(0, 1);
    trace.clear();
    manager->setupProjectorState(State::Clear);
    EXPECT_THAT(trace.lines(), ElementsAre("devices.getDevice(\"P1\")", "devices.getDevice(\"P0\")",
                                           "devices.getDevice(\"P2\")", "device P1.execute(RunClearTo 2)",
                                           "device P0.execute(RunClearTo 2)", "device P2.execute(RunClearTo 2)"));
}

TEST_F(ProjectorPreparationTest, AChannelWithoutADeviceIsAFaultBeforeTheFirstCommand) {
    devices.devices.erase(L"P2");
    for (const State state : {State::Black, State::Gray50, State::Clear}) {
        const auto fault = faultOf<VeltraniException>([&] { manager->setupProjectorState(state); });
        EXPECT_EQ(fault.message, L"setupProjectorState: channel \"C\" has no device");
        EXPECT_THAT(fault.file, HasSubstr("ChannelManager.cpp"));
        EXPECT_GT(fault.line, 0);
    }
    EXPECT_EQ(device(0).calls("execute"), 0U);
}

TEST_F(ProjectorPreparationTest, WithoutChannelsNothingIsSentForAnyState) {
    ChannelManager empty(&config);
    for (const int value : {0, 1, 2, 3}) {
        empty.setupProjectorState(static_cast<State>(value));
    }
    EXPECT_THAT(trace.lines(), IsEmpty());
}

}  // namespace
