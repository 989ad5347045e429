#include "ProjectorSession/ProjectorDiscovery.h"

#include "ProjectorTesting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <sstream>

namespace {

using namespace projector_testing;
using namespace Veltrani::ProjectorSession;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

/// A search at one simulator, which serves its control on the same port.
DeviceManager::Settings searching(const PjlinkSimulator& simulator) {
    DeviceManager::Settings found = settings();
    found.search.targets = {"127.0.0.1"};
    found.search.targetPort = simulator.searchPort();
    return found;
}

TEST(ProjectorDiscovery, FindsProjectorsByMacAddressAndAsksThem) {
    const PjlinkSimulator simulator({"--search-answers", "2", "--answer", "INF1="});
    std::vector<std::pair<std::size_t, std::size_t>> progress;
    const auto found =
        ProjectorDiscovery(searching(simulator),
                           [&](std::size_t done, std::size_t total) { progress.emplace_back(done, total); })
            .run()
            .projectors;
    ASSERT_THAT(found, SizeIs(2));
    EXPECT_EQ(found[0].mac.uid(), L"020000000001");
    EXPECT_EQ(found[0].address, "127.0.0.1:" + std::to_string(simulator.port()));
    EXPECT_EQ(found[0].name, "Simulator");
    EXPECT_EQ(found[0].model, "SIM-2");
    EXPECT_EQ(found[0].fault, "");
    EXPECT_EQ(found[1].mac.uid(), L"020000000002");
    EXPECT_THAT(progress, ElementsAre(Pair(0U, 2U), Pair(1U, 2U), Pair(2U, 2U)));
    EXPECT_THAT(orders(simulator), IsEmpty());
}

TEST(ProjectorDiscovery, OneThatDoesNotTellItsNameIsFoundAllTheSame) {
    const PjlinkSimulator simulator({"--search-answers", "1", "--answer", "NAME=ERR4"});
    const auto found = ProjectorDiscovery(searching(simulator)).run().projectors;
    ASSERT_THAT(found, SizeIs(1));
    EXPECT_EQ(found[0].name, "");
    EXPECT_THAT(found[0].fault, HasSubstr("command GetProjectorName: NAME ?: the projector reports a failure"));
}

TEST(ProjectorDiscovery, NobodyIsAnEmptyList) {
    const Discovery found = ProjectorDiscovery(searching(PjlinkSimulator())).run();
    EXPECT_THAT(found.projectors, IsEmpty());
    EXPECT_THAT(found.leftOut, IsEmpty());
}

/// Connections that the projectors of a simulator have seen.
std::ptrdiff_t contactsOf(const PjlinkSimulator& simulator) {
    const auto events = simulator.journal();
    return std::count_if(events.begin(), events.end(),
                         [](const std::string& event) { return event.starts_with("OPEN "); });
}

TEST(ProjectorDiscovery, AsksAllThatItFindsAtTheSameTime) {
    constexpr int PROJECTORS = 32;
    constexpr std::chrono::milliseconds WAIT(1000);
    const PjlinkSimulator silent({"--spread", "yes", "--projectors", std::to_string(PROJECTORS), "--greeting", "-"});
    auto impatient = searching(silent);
    impatient.pjlink.greetingLimit = WAIT;
    const Discovery found = ProjectorDiscovery(impatient).run();
    ASSERT_THAT(found.projectors, SizeIs(PROJECTORS));
    for (const DiscoveredProjector& projector : found.projectors) {
        EXPECT_THAT(projector.fault, HasSubstr("first contact: no answer within 1000 ms"));
    }
    EXPECT_THAT(found.leftOut, IsEmpty());
    EXPECT_EQ(silent.mostConnectionsTogether(), PROJECTORS) << "one after another they are open alone";
}

TEST(ProjectorDiscovery, OneThatStatesManyMacAddressesIsContactedAFewTimesOnly) {
    const PjlinkSimulator forger({"--search-answers", "1000"});
    const Discovery found = ProjectorDiscovery(searching(forger)).run();
    EXPECT_THAT(found.projectors, SizeIs(4));
    EXPECT_EQ(contactsOf(forger), 12) << "contact, name and model of each";
    EXPECT_EQ(forger.mostConnections(), 1);
    EXPECT_THAT(found.leftOut,
                ElementsAre("127.0.0.1 replied with more than 4 MAC addresses, which no projector has; the rest was "
                            "left out: add a projector there by its address"));
}

TEST(ProjectorDiscovery, NoMoreProjectorsAreAskedThanTheLimitWhateverTheyCallThemselves) {
    const PjlinkSimulator forger({"--search-answers", "60", "--search-hosts", "60"});
    std::size_t asked = 0;
    const Discovery found =
        ProjectorDiscovery(searching(forger), [&](std::size_t, std::size_t total) { asked = total; },
                           {40, std::chrono::seconds(60)})
            .run();
    EXPECT_EQ(asked, 40U);
    EXPECT_THAT(found.projectors, SizeIs(60)) << "they did answer";
    EXPECT_EQ(std::count_if(found.projectors.begin(), found.projectors.end(),
                            [](const DiscoveredProjector& projector) { return !projector.fault.empty(); }),
              40);
    EXPECT_THAT(found.leftOut,
                ElementsAre("20 of 60 projectors that replied were not queried for name and model: that ends after 40 "
                            "projectors and 60 s; see who replies there, or add projectors by their address"));
}

TEST(ProjectorDiscovery, TheLimitsAreThoseThatAreDocumented) {
    EXPECT_EQ(DiscoveryLimits().projectors, 256U);
    EXPECT_EQ(DiscoveryLimits().time, std::chrono::seconds(120));
}

TEST(ProjectorDiscovery, TheTimeForAllEndsTheQuestions) {
    const PjlinkSimulator silent({"--spread", "yes", "--projectors", "5", "--greeting", "-"});
    auto patient = searching(silent);
    patient.pjlink.greetingLimit = std::chrono::seconds(60);
    const Discovery found = ProjectorDiscovery(patient, {}, {256, std::chrono::seconds(1)}).run();
    EXPECT_THAT(found.projectors, SizeIs(5));
    EXPECT_THAT(found.leftOut, ElementsAre(HasSubstr("5 of 5 projectors that replied were not queried")))
        << "and not that they did not answer";
}

TEST(ProjectorDiscovery, IsPrintedAsATable) {
    using Veltrani::DeviceFramework2::MacAddress;
    std::ostringstream out;
    ProjectorDiscovery::print({{*MacAddress::parse(L"020000000001"), "192.0.2.10:4352", "Left", "Maker M1", ""}}, out);
    EXPECT_EQ(out.str(),
              "mac                address          name  model\n"
              "02:00:00:00:00:01  192.0.2.10:4352  Left  Maker M1\n");
}

}  // namespace
