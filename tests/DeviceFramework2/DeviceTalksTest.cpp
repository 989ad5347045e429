#include "DeviceFramework2/DeviceTalks.h"

#include "DeviceFramework2/Commands.h"
#include "DeviceFramework2/PJLinkProjector.h"
#include "DeviceFramework2/VirtualProjector.h"
#include "DeviceTesting.h"
#include "support/LogTrap.h"
#include "support/pjlink_simulator/PjlinkSimulator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <memory>
#include <stdexcept>

namespace {

using namespace device_testing;
using namespace std::chrono_literals;
using namespace Veltrani::DeviceFramework2;
using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

using Commands = std::vector<std::shared_ptr<Command>>;
/// What became of the contact and of each command of one projector: "done", or the fault.
using Outcomes = std::vector<std::string>;

/// Simulated projectors of one kind, and the objects that talk to them.
class Fleet {
public:
    Fleet(int count, std::vector<std::string> options, const PjlinkSettings& settings)
        : simulator(withCount(count, std::move(options))) {
        for (int i = 0; i < count; ++i) {
            const int port = simulator.port(static_cast<std::size_t>(i));
            projectors.push_back(
                std::make_unique<PJLinkProjector>(DeviceSnippet::parse(snippetText(port, i + 1)), settings));
        }
    }

    PjlinkSimulator simulator;
    std::vector<std::unique_ptr<PJLinkProjector>> projectors;

private:
    static std::vector<std::string> withCount(int count, std::vector<std::string> options) {
        options.insert(options.end(), {"--projectors", std::to_string(count)});
        return options;
    }
};

/// Everything that a projector can be told, supported or not.
Commands everyCommand() {
    return {std::make_shared<GetPowerState>(),
            std::make_shared<GetPictureMute>(),
            std::make_shared<GetNativeResolution>(),
            std::make_shared<GetActiveInputSignalIndex>(),
            std::make_shared<SetActiveInputSignalIndex>(1),
            std::make_shared<SetActiveInputSignalIndex>(77),
            std::make_shared<Device::Drawing::RunFillBlackTo>(5),
            std::make_shared<Device::Drawing::RunFill50GrayTo>(5),
            std::make_shared<Device::Geometry::DisableWhiteLevelWarp>(),
            std::make_shared<GetModel>(),
            std::make_shared<Device::Drawing::RunClearTo>(2),
            std::make_shared<GetFirmware>(),
            std::make_shared<GetProjectorName>()};
}

/// The place of a projector is chosen by the system and differs from run to run.
std::string withoutPlace(std::string message) {
    const auto begin = message.find(" at 127.0.0.1:");
    if (begin != std::string::npos) {
        message.erase(begin, message.find(',', begin) - begin);
    }
    return message;
}

std::string outcomeOf(const DeviceException* fault) {
    return fault == nullptr ? "done" : withoutPlace(Veltrani::toUtf8(fault->message));
}

/// Adds a talk of contact and commands, which ends when the contact fails.
void addTalk(DeviceTalks& talks, PJLinkProjector& projector, Outcomes& outcomes, Commands commands = everyCommand()) {
    talks.addContact(projector, [&outcomes, commands](const DeviceException* fault) -> std::shared_ptr<Command> {
        outcomes.push_back(outcomeOf(fault));
        const bool reached = outcomes.front() == "done";
        return reached && outcomes.size() <= commands.size() ? commands[outcomes.size() - 1] : nullptr;
    });
}

std::vector<Outcomes> sideBySide(const Fleet& fleet) {
    std::vector<Outcomes> all(fleet.projectors.size());
    DeviceTalks talks;
    for (std::size_t i = 0; i < all.size(); ++i) {
        addTalk(talks, *fleet.projectors[i], all[i]);
    }
    talks.run();
    return all;
}

/// The same by the operations that wait for one projector.
std::vector<Outcomes> oneAfterAnother(const Fleet& fleet) {
    std::vector<Outcomes> all;
    for (const auto& projector : fleet.projectors) {
        Outcomes outcomes{withoutPlace(faultOf([&] { projector->contact(); }))};
        if (outcomes.front() == "no fault") {
            for (const auto& command : everyCommand()) {
                outcomes.push_back(withoutPlace(faultOf([&] { projector->execute(command); })));
            }
        }
        std::replace(outcomes.begin(), outcomes.end(), std::string("no fault"), std::string("done"));
        all.push_back(outcomes);
    }
    return all;
}

/// The wait that a behaviour lets run out.
enum class Silence { NONE, NO_GREETING, NO_ANSWER };

struct Behaviour {
    std::string name;
    std::vector<std::string> options;
    Silence silence = Silence::NONE;
    bool cut = false;        ///< which fault an end of the connection comes to is a matter of moments
    std::string password{};  ///< none when empty
};

std::ostream& operator<<(std::ostream& out, const Behaviour& behaviour) {
    return out << behaviour.name;
}

const std::string SEED = "498e4a67";
const std::string DIGEST = "5d8409bc1c3fa39749434aa3a5c38682";
const std::string PASSWORD = "JBMIAProjectorLink";

std::vector<Behaviour> behaviours() {
    return {
        {"Class2", {}},
        {"Class1", {"--class", "1"}},
        {"LaterClass", {"--answer", "CLSS=3"}},
        {"Standby", {"--power", "0"}},
        {"Errors", {"--answer", "POWR=ERR4", "--answer", "AVMT=ERR2", "--answer", "INST=ERR1"}},
        {"Nonsense", {"--answer", "POWR=9", "--answer", "RRES=big", "--answer", "INPT ?=zz"}},
        {"NoClass", {"--answer", "CLSS=x"}},
        {"Slow", {"--delay", "20"}},
        {"ByteByByte", {"--split", "1", "--line-end", "crlf"}},
        {"LineFeeds", {"--line-end", "lf"}},
        {"Login", {"--seed", SEED, "--digest", DIGEST}, Silence::NONE, false, PASSWORD},
        {"WrongPassword", {"--seed", SEED, "--digest", DIGEST}, Silence::NONE, false, "wrong"},
        {"NoPassword", {"--seed", SEED, "--digest", DIGEST}},
        {"LoginSentBack", {"--seed", SEED, "--digest", DIGEST, "--raw-answer", DIGEST}, Silence::NONE, false, PASSWORD},
        {"WrongSeed", {"--greeting", "PJLINK 1 498e4a6"}, Silence::NONE, false, PASSWORD},
        {"GreetingRefuses", {"--greeting", "PJLINK ERRA"}},
        {"OtherService", {"--greeting", "220 mail.example ESMTP ready\x1b[2J"}},
        {"OtherAnswer", {"--raw-answer", "%1XXXX=1"}},
        {"Garbage", {"--raw-answer", "\x1b[2J\xff\xfe"}},
        {"TwoAnswers", {"--raw-answer", "%1CLSS=2\r%1CLSS=1"}},
        {"LongLine", {"--endless", "1048576"}},
        {"NeverGreets", {"--greeting", "-"}, Silence::NO_GREETING},
        {"HalfGreeting", {"--line-end", "none"}, Silence::NO_GREETING},
        {"HalfAnswer", {"--endless", "30"}, Silence::NO_ANSWER},
        {"SilentAtOnce", {"--silent-after", "0"}, Silence::NO_ANSWER},
        {"Trickles", {"--split", "100"}, Silence::NO_GREETING},
        {"ClosesAfterOne", {"--close-after", "1"}, Silence::NONE, true},
        {"ResetsAfterTwo", {"--reset-after", "2"}, Silence::NONE, true},
        {"ResetsAtOnce", {"--reset-after", "1"}, Silence::NONE, true},
        {"HalfCloses", {"--half-close", "yes"}, Silence::NONE, true},
        {"Floods", {"--flood", "1048576"}, Silence::NONE, true}};
}

/// Impatient only where the wait is expected to run out.
PjlinkSettings settingsFor(Silence silence) {
    PjlinkSettings settings = patientSettings();
    if (silence == Silence::NO_GREETING) {
        settings.greetingLimit = IMPATIENT;
    }
    if (silence == Silence::NO_ANSWER) {
        settings.replyLimit = IMPATIENT;
    }
    return settings;
}

class EveryBehaviour : public testing::TestWithParam<Behaviour> {};

TEST_P(EveryBehaviour, IsTheSameSideBySideAsOneAfterAnother) {
    constexpr int PROJECTORS = 3;
    const Behaviour& behaviour = GetParam();
    std::optional<Environment> password;
    if (!behaviour.password.empty()) {
        password.emplace("SM_TEST_PJLINK_PASSWORD", behaviour.password);
    }
    const auto settings = settingsFor(behaviour.silence);
    const LogTrap trap;  // the warning about warp and blend
    const Fleet waiting(PROJECTORS, behaviour.options, settings);
    const Fleet together(PROJECTORS, behaviour.options, settings);
    auto expected = oneAfterAnother(waiting);
    auto found = sideBySide(together);
    if (behaviour.cut) {
        for (auto* all : {&expected, &found}) {
            for (Outcomes& outcomes : *all) {
                std::replace_if(
                    outcomes.begin(), outcomes.end(), [](const std::string& text) { return text != "done"; }, "fault");
            }
        }
    }
    EXPECT_EQ(found, expected);
    for (std::size_t i = 0; i < PROJECTORS; ++i) {
        if (!behaviour.cut) {
            EXPECT_EQ(together.simulator.lines(i), waiting.simulator.lines(i)) << i;
        }
    }
    EXPECT_LE(together.simulator.mostConnections(), 1);
}

INSTANTIATE_TEST_SUITE_P(DeviceTalks, EveryBehaviour, testing::ValuesIn(behaviours()),
                         [](const testing::TestParamInfo<Behaviour>& row) { return row.param.name; });

TEST(DeviceTalks, ThirtyTwoProjectorsThatNeverGreetTakeOneWait) {
    constexpr int PROJECTORS = 32;
    constexpr auto WAIT = 1000ms;
    PjlinkSettings settings = patientSettings();
    settings.greetingLimit = WAIT;
    const Fleet fleet(PROJECTORS, {"--greeting", "-"}, settings);
    const auto descriptors = openDescriptors();
    const auto threadsBefore = threads();
    std::vector<Outcomes> all;
    const auto time = timeOf([&] { all = sideBySide(fleet); });
    EXPECT_THAT(all, SizeIs(PROJECTORS));
    EXPECT_THAT(all, Each(ElementsAre(EndsWith(", first contact: no answer within 1000 ms"))));
    EXPECT_GE(time, WAIT);
    EXPECT_LT(time, 4 * WAIT) << "one after another they take 32 waits";
    EXPECT_EQ(fleet.simulator.mostConnectionsTogether(), PROJECTORS);
    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_EQ(threads(), threadsBefore);
}

TEST(DeviceTalks, OneThatIsSilentHoldsNobodyUp) {
    // Long enough for the others to be done on a loaded machine.
    PjlinkSettings waiting = patientSettings();
    waiting.greetingLimit = 2000ms;
    const Fleet silent(1, {"--greeting", "-"}, waiting);
    const Fleet good(2, {}, patientSettings());
    std::vector<Outcomes> all(3);
    std::vector<std::size_t> ended;
    DeviceTalks talks;
    const auto add = [&](PJLinkProjector& projector, std::size_t number) {
        talks.addContact(projector, [&, number](const DeviceException* fault) -> std::shared_ptr<Command> {
            all[number].push_back(outcomeOf(fault));
            if (fault == nullptr && all[number].size() == 1) {
                return std::make_shared<GetPowerState>();
            }
            ended.push_back(number);
            return nullptr;
        });
    };
    add(*silent.projectors[0], 0);
    add(*good.projectors[0], 1);
    add(*good.projectors[1], 2);
    talks.run();
    EXPECT_THAT(ended, SizeIs(3));
    EXPECT_EQ(ended.back(), 0U) << "its wait is the last to end";
    EXPECT_THAT(all[0], ElementsAre(HasSubstr("no answer within 2000 ms")));
    EXPECT_THAT(all[1], ElementsAre("done", "done"));
    EXPECT_THAT(all[2], ElementsAre("done", "done"));
}

TEST(DeviceTalks, DevicesAtOneAddressTakeTurnsInOrder) {
    const PjlinkSimulator simulator({"--delay", "20"});
    const PjlinkSimulator other;
    const auto projectorAt = [](int port, int number) {
        return std::make_unique<PJLinkProjector>(DeviceSnippet::parse(snippetText(port, number)), patientSettings());
    };
    const auto first = projectorAt(simulator.port(), 1);
    const auto second = projectorAt(simulator.port(), 2);
    const auto elsewhere = projectorAt(other.port(), 3);
    std::vector<Outcomes> all(3);
    DeviceTalks talks;
    addTalk(talks, *first, all[0], {std::make_shared<GetPowerState>(), std::make_shared<GetPictureMute>()});
    addTalk(talks, *second, all[1], {std::make_shared<GetProjectorName>()});
    addTalk(talks, *elsewhere, all[2], {});
    talks.run();
    EXPECT_THAT(simulator.lines(), ElementsAre("%1CLSS ?", "%1POWR ?", "%1AVMT ?", "%1CLSS ?", "%1NAME ?"));
    EXPECT_EQ(simulator.mostConnections(), 1);
    EXPECT_THAT(all, ElementsAre(SizeIs(3), SizeIs(2), SizeIs(1)));
    EXPECT_THAT(other.lines(), ElementsAre("%1CLSS ?"));
}

TEST(DeviceTalks, NoMoreConnectionsAreOpenThanTheLimit) {
    constexpr int PROJECTORS = 150;
    PjlinkSettings settings = patientSettings();
    settings.greetingLimit = 1000ms;
    const Fleet fleet(PROJECTORS, {"--greeting", "-"}, settings);
    const auto all = sideBySide(fleet);
    EXPECT_THAT(all, Each(ElementsAre(EndsWith("no answer within 1000 ms"))));
    EXPECT_EQ(static_cast<std::size_t>(fleet.simulator.mostConnectionsTogether()), DeviceTalks::MOST_CONNECTIONS);
}

/// The number of files that this process may have open, for the time of a scope.
class FileLimit {
public:
    explicit FileLimit(rlim_t most) {
        ::getrlimit(RLIMIT_NOFILE, &m_before);
        const rlimit now{most, m_before.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &now);
    }
    ~FileLimit() { ::setrlimit(RLIMIT_NOFILE, &m_before); }
    FileLimit(const FileLimit&) = delete;
    FileLimit& operator=(const FileLimit&) = delete;

private:
    rlimit m_before{};
};

TEST(DeviceTalks, AQuarterOfTheFilesThatTheProcessMayOpenIsUsed) {
    PjlinkSettings settings = patientSettings();
    settings.greetingLimit = 1000ms;
    const Fleet fleet(30, {"--greeting", "-"}, settings);
    std::vector<Outcomes> all;
    {
        const FileLimit limit(48);
        all = sideBySide(fleet);
    }
    EXPECT_THAT(all, Each(ElementsAre(EndsWith("no answer within 1000 ms"))));
    EXPECT_EQ(fleet.simulator.mostConnectionsTogether(), 12);
}

TEST(DeviceTalks, ATimeForAllEndsWhatIsLeft) {
    const Fleet silent(3, {"--greeting", "-"}, {60s, 60s, 60s, patientSettings().passwords});
    const Fleet good(1, {}, patientSettings());
    const auto descriptors = openDescriptors();
    std::vector<Outcomes> all(4);
    DeviceTalks talks;
    for (std::size_t i = 0; i < 3; ++i) {
        addTalk(talks, *silent.projectors[i], all[i]);
    }
    addTalk(talks, *good.projectors[0], all[3], {});
    const auto time = timeOf([&] { talks.run(500ms); });
    EXPECT_LT(time, 500ms + GRACE);
    EXPECT_THAT(all, ElementsAre(IsEmpty(), IsEmpty(), IsEmpty(), ElementsAre("done")));
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST(DeviceTalks, ADeviceThatIsNotOnTheNetworkCarriesItsCommandsOutAtOnce) {
    VirtualProjector device(
        VirtualProjectorSnippet::parse(L"<Wrapper><Projector Width='4' Height='3' Input='2'></Projector></Wrapper>"),
        L"virtual-1");
    const auto input = std::make_shared<GetActiveInputSignalIndex>();
    int calls = 0;
    DeviceTalks talks;
    talks.add(device, [&](const DeviceException* fault) -> std::shared_ptr<Command> {
        EXPECT_EQ(fault, nullptr);
        return ++calls == 1 ? input : nullptr;
    });
    talks.run();
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(input->getResult(), 2);
}

TEST(DeviceTalks, AKnownProjectorIsNotContactedAgain) {
    const Fleet fleet(1, {}, patientSettings());
    fleet.projectors[0]->contact();
    Outcomes outcomes;
    DeviceTalks talks;
    talks.add(*fleet.projectors[0], [&](const DeviceException* fault) -> std::shared_ptr<Command> {
        outcomes.push_back(outcomeOf(fault));
        return outcomes.size() == 1 ? std::make_shared<GetFirmware>() : nullptr;
    });
    talks.run();
    EXPECT_THAT(outcomes, ElementsAre("done", "done"));
    EXPECT_THAT(fleet.simulator.lines(), ElementsAre("%1CLSS ?", "%2SVER ?"));
}

TEST(DeviceTalks, WhatAChooserThrowsEndsAllTalks) {
    const Fleet fleet(2, {"--delay", "20"}, patientSettings());
    const auto descriptors = openDescriptors();
    {
        DeviceTalks talks;
        talks.addContact(*fleet.projectors[0], [](const DeviceException*) -> std::shared_ptr<Command> {
            throw std::runtime_error("enough");
        });
        talks.addContact(*fleet.projectors[1],
                         [](const DeviceException*) { return std::make_shared<GetPowerState>(); });
        EXPECT_THROW(talks.run(), std::runtime_error);
    }
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST(DeviceTalks, WithoutTalksNothingHappens) {
    DeviceTalks talks;
    talks.run();
    talks.run(0ms);
}

}  // namespace
