#include "DeviceFramework2/PjlinkSearch.h"

#include "DeviceTesting.h"
#include "support/LogTrap.h"
#include "support/pjlink_simulator/PjlinkSimulator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace {

using namespace device_testing;
using namespace std::chrono_literals;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Veltrani::DeviceFramework2::MacAddress;
using Veltrani::DeviceFramework2::PjlinkSearch;
using Veltrani::DeviceFramework2::PjlinkSearchSettings;

/// A search on loopback: own port chosen by the system, one target.
PjlinkSearchSettings searchAt(const PjlinkSimulator& simulator, std::chrono::milliseconds duration) {
    PjlinkSearchSettings settings;
    settings.ownAddress = "127.0.0.1";
    settings.ownPort = 0;
    settings.targets = {"127.0.0.1"};
    settings.targetPort = simulator.searchPort();
    settings.duration = duration;
    settings.interval = duration / 4;
    return settings;
}

TEST(PjlinkSearch, TheDefaultsAreThoseOfTheStandard) {
    const PjlinkSearchSettings settings;
    EXPECT_EQ(settings.ownPort, 4352);
    EXPECT_EQ(settings.targetPort, 4352);
    EXPECT_EQ(settings.duration, 30s);
    EXPECT_EQ(settings.requests, 3);
}

TEST(PjlinkSearch, ProjectorsAreFoundWithTheirAddress) {
    const PjlinkSimulator simulator({"--search-answers", "2"});
    const auto answers = PjlinkSearch(searchAt(simulator, 400ms)).run();
    ASSERT_EQ(answers.size(), 2U);
    EXPECT_EQ(answers[0].mac.text(), L"02:00:00:00:00:01");
    EXPECT_EQ(answers[1].mac.text(), L"02:00:00:00:00:02");
    EXPECT_EQ(answers[0].host, "127.0.0.1");
}

TEST(PjlinkSearch, TheRequestIsRepeatedAndTheTimeIsKept) {
    const PjlinkSimulator simulator({"--search-answers", "0"});
    std::vector<PjlinkSearch::Answer> answers;
    const auto time = timeOf([&] { answers = PjlinkSearch(searchAt(simulator, 400ms)).run(); });
    EXPECT_THAT(answers, IsEmpty());
    EXPECT_GE(time, 400ms);
    EXPECT_LT(time, 400ms + GRACE);
    EXPECT_THAT(simulator.journal(), ElementsAre("SEARCH %2SRCH", "SEARCH %2SRCH", "SEARCH %2SRCH"));
}

TEST(PjlinkSearch, EndsEarlyWhenItHasEnough) {
    const PjlinkSimulator simulator({"--search-answers", "5"});
    std::vector<PjlinkSearch::Answer> answers;
    const auto time = timeOf([&] {
        answers = PjlinkSearch(searchAt(simulator, 60s)).run([](const PjlinkSearch::Answer& answer) {
            return answer.mac.text() == L"02:00:00:00:00:03";
        });
    });
    EXPECT_EQ(answers.size(), 3U);
    EXPECT_LT(time, 10s);
}

TEST(PjlinkSearch, FiveHundredAnswersAmongDuplicatesAndJunkAreHeardOnceEach) {
    const PjlinkSimulator simulator({"--search-answers", "500", "--search-hosts", "500", "--search-noise", "yes"});
    const auto answers = PjlinkSearch(searchAt(simulator, 2s)).run();
    EXPECT_EQ(answers.size(), 500U);
    std::set<MacAddress> different;
    for (const PjlinkSearch::Answer& answer : answers) {
        different.insert(answer.mac);
    }
    EXPECT_EQ(different.size(), 500U);
    EXPECT_EQ(different.begin()->text(), L"02:00:00:00:00:01");
    EXPECT_EQ(different.rbegin()->text(), L"02:00:00:00:01:F4");
}

TEST(PjlinkSearch, NoMoreAnswersAreKeptThanTheLimit) {
    const PjlinkSimulator simulator({"--search-answers", "2000", "--search-hosts", "2000"});
    PjlinkSearch::Result heard;
    const auto time = timeOf([&] { heard = PjlinkSearch(searchAt(simulator, 30s)).hear(); });
    EXPECT_EQ(heard.answers.size(), PjlinkSearch::MOST_ANSWERS);
    EXPECT_TRUE(heard.full);
    EXPECT_THAT(heard.crowded, IsEmpty());
    EXPECT_LT(time, 29s);
}

TEST(PjlinkSearch, OneAddressWithManyMacAddressesDoesNotCrowdTheOthersOut) {
    const PjlinkSimulator simulator({"--spread", "yes", "--projectors", "3", "--search-answers", "1500"});
    const auto heard = PjlinkSearch(searchAt(simulator, 400ms)).hear();
    EXPECT_THAT(heard.crowded, ElementsAre("127.0.0.1"));
    EXPECT_FALSE(heard.full);
    const auto count = [&](const std::string& host) {
        return std::count_if(heard.answers.begin(), heard.answers.end(),
                             [&](const PjlinkSearch::Answer& answer) { return answer.host == host; });
    };
    EXPECT_EQ(static_cast<std::size_t>(count("127.0.0.1")), PjlinkSearch::MOST_ANSWERS_PER_ADDRESS);
    EXPECT_EQ(count("127.0.1.1") + count("127.0.1.2") + count("127.0.1.3"), 3);
    EXPECT_EQ(heard.answers.size(), PjlinkSearch::MOST_ANSWERS_PER_ADDRESS + 3);
}

TEST(PjlinkSearch, TheOneThatIsWantedIsFoundBehindAnyNumberOfOthersAtItsAddress) {
    const PjlinkSimulator simulator({"--search-answers", "300"});
    const auto isIt = [](const PjlinkSearch::Answer& answer) { return answer.mac.text() == L"02:00:00:00:01:2C"; };
    const auto answers = PjlinkSearch(searchAt(simulator, 60s)).run(isIt);
    ASSERT_FALSE(answers.empty());
    EXPECT_TRUE(isIt(answers.back()));
}

TEST(PjlinkSearch, AnEchoOfTheOwnRequestIsNoAnswer) {
    // The search asks its own port.
    PjlinkSearchSettings settings;
    settings.ownAddress = "127.0.0.1";
    settings.ownPort = PjlinkSimulator().searchPort();  // free again
    settings.targets = {"127.0.0.1"};
    settings.targetPort = settings.ownPort;
    settings.duration = 200ms;
    EXPECT_THAT(PjlinkSearch(settings).run(), IsEmpty());
}

TEST(PjlinkSearch, APortInUseIsAFaultWithTheRemedy) {
    const PjlinkSimulator simulator;
    PjlinkSearchSettings settings = searchAt(simulator, 60s);
    settings.ownPort = simulator.searchPort();
    const auto before = openDescriptors();
    EXPECT_EQ(faultOf([&] { static_cast<void>(PjlinkSearch(settings).run()); }),
              "No search for projectors: 127.0.0.1:" + std::to_string(settings.ownPort) +
                  ": Address already in use. Give the address of each projector instead");
    EXPECT_EQ(openDescriptors(), before);
}

TEST(PjlinkSearch, WithoutAnAddressThatCanBeAskedThereIsNoSearch) {
    const LogTrap trap;
    PjlinkSearchSettings settings;
    settings.ownAddress = "127.0.0.1";
    settings.ownPort = 0;
    settings.targets = {"projector.example"};
    settings.duration = 60s;
    EXPECT_THAT(faultOf([&] { static_cast<void>(PjlinkSearch(settings).run()); }),
                HasSubstr("No search for projectors: no network can be asked"));
}

TEST(PjlinkSearch, ATargetThatCannotBeAskedIsAWarningAndTheOthersAreAsked) {
    const PjlinkSimulator simulator({"--search-answers", "1"});
    LogTrap trap;
    PjlinkSearchSettings settings = searchAt(simulator, 200ms);
    settings.requests = 1;
    settings.targets = {"projector.example", "127.0.0.1"};
    EXPECT_EQ(PjlinkSearch(settings).run().size(), 1U);
    EXPECT_THAT(trap.messages(), ElementsAre("WARN search: projector.example cannot be asked: not an IPv4 address"));
}

TEST(PjlinkSearch, AnOwnAddressThatIsNoneIsAFault) {
    PjlinkSearchSettings settings;
    settings.ownAddress = "::1";
    EXPECT_THAT(faultOf([&] { static_cast<void>(PjlinkSearch(settings).run()); }),
                HasSubstr("the own address is not IPv4"));
}

}  // namespace
