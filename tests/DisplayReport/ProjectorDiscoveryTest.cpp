#include "DisplayReport/ProjectorDiscovery.h"

#include "ProjectorTesting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace projector_testing;
using namespace Veltrani::DisplayReport;
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
    const auto found = ProjectorDiscovery(searching(simulator), [&](std::size_t done, std::size_t total) {
                           progress.emplace_back(done, total);
                       }).run();
    ASSERT_THAT(found, SizeIs(2));
    EXPECT_EQ(found[0].mac.uid(), L"020000000001");
    EXPECT_EQ(found[0].address, "127.0.0.1:" + std::to_string(simulator.port()));
    EXPECT_EQ(found[0].name, "Simulator");
    EXPECT_EQ(found[0].model, "SIM-2");
    EXPECT_EQ(found[0].fault, "");
    EXPECT_EQ(found[1].mac.uid(), L"020000000002");
    EXPECT_THAT(progress, ElementsAre(Pair(0U, 2U), Pair(1U, 2U)));
    EXPECT_THAT(orders(simulator), IsEmpty());
}

TEST(ProjectorDiscovery, OneThatDoesNotTellItsNameIsFoundAllTheSame) {
    const PjlinkSimulator simulator({"--search-answers", "1", "--answer", "NAME=ERR4"});
    const auto found = ProjectorDiscovery(searching(simulator)).run();
    ASSERT_THAT(found, SizeIs(1));
    EXPECT_EQ(found[0].name, "");
    EXPECT_THAT(found[0].fault, HasSubstr("command GetProjectorName: NAME ?: the projector reports a failure"));
}

TEST(ProjectorDiscovery, NobodyIsAnEmptyList) {
    EXPECT_THAT(ProjectorDiscovery(searching(PjlinkSimulator())).run(), IsEmpty());
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
