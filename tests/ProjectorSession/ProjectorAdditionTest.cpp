#include "ProjectorSession/ProjectorAddition.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/ProjectorConfig.h"
#include "ProjectorTesting.h"
#include "support/LogTrap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace projector_testing;
using testing::ElementsAre;
using testing::HasSubstr;
using Veltrani::DeviceFramework2::MacAddress;
using Veltrani::DeviceFramework2::ProjectorAddress;
using Veltrani::ProjectorSession::ProjectorAddition;

class ProjectorAdditionTest : public testing::Test {
protected:
    [[nodiscard]] ProjectorAddition::Added add(const ProjectorAddition::Target& target) {
        return ProjectorAddition(*config, manager).add(target);
    }

    /// The message of the refusal; "added" when there is none.
    [[nodiscard]] std::string refusal(const ProjectorAddition::Target& target) {
        try {
            static_cast<void>(add(target));
        } catch (const VeltraniException& fault) {
            return Veltrani::toUtf8(fault.message);
        }
        return "added";
    }

    static ProjectorAddress at(const PjlinkSimulator& simulator) { return {"127.0.0.1", simulator.port()}; }

    LogTrap trap;
    DeviceManager manager{settings()};
    std::unique_ptr<XMLConfigFile> config = configOf(displays::projector("L", ""));
};

TEST_F(ProjectorAdditionTest, MakesAnEntryWithWhatTheProjectorTells) {
    const PjlinkSimulator simulator({"--mac", "02:00:00:00:00:07", "--answer", "RRES=3840x2160"});
    const auto added = add({at(simulator), {}, L""});
    EXPECT_EQ(added.uid, L"020000000007");
    EXPECT_EQ(added.width, 3840);
    EXPECT_THAT(config->getProjectorConfigIds(), ElementsAre(L"L", L"020000000007"));
    const ProjectorConfig* const entry = config->getProjectorConfig(L"020000000007");
    const std::wstring place = L"PJLink 127.0.0.1:" + std::to_wstring(simulator.port());
    EXPECT_EQ(entry->getName(), place);
    EXPECT_EQ(added.name, place);
    EXPECT_EQ(added.place, place);
    EXPECT_EQ(entry->getHeight(), 2160);
    EXPECT_EQ(entry->getPondOfMirror(3), 14);
    EXPECT_THAT(Veltrani::toUtf8(entry->getDeviceSnippet()), HasSubstr("02:00:00:00:00:07"));
    EXPECT_EQ(manager.deviceCount(), 0U) << "the device is given back";
    EXPECT_THAT(orders(simulator), testing::IsEmpty());
}

TEST_F(ProjectorAdditionTest, OnlyTheNewProjectorIsAsked) {
    const PjlinkSimulator present;
    config = configOf(entry("L", device(present.port(), 1)));
    const PjlinkSimulator simulator;
    EXPECT_EQ(add({at(simulator), MacAddress::parse(L"020000000002"), L"Right"}).name, L"Right");
    EXPECT_EQ(config->getProjectorConfig(L"020000000002")->getName(), L"Right");
    EXPECT_TRUE(present.journal().empty());
}

TEST_F(ProjectorAdditionTest, AProjectorThatMovedToAKnownAddressIsRefused) {
    // The search leads to the address of the entry that is there: one of the two is wrong.
    const PjlinkSimulator simulator({"--search-answers", "2"});
    config = configOf(entry("L", device(simulator.port(), 1)));
    DeviceManager::Settings searching = settings();
    searching.search.targets = {"127.0.0.1"};
    searching.search.targetPort = simulator.searchPort();
    DeviceManager finder(searching);
    try {
        static_cast<void>(ProjectorAddition(*config, finder).add({{}, MacAddress::parse(L"020000000002"), L""}));
        FAIL() << "it was added";
    } catch (const VeltraniException& fault) {
        EXPECT_EQ(fault.message, L"a projector at 127.0.0.1:" + std::to_wstring(simulator.port()) +
                                     L" is there already: entry L, channel \"L\"");
    }
    EXPECT_EQ(finder.deviceCount(), 0U);
}

TEST_F(ProjectorAdditionTest, AnotherProjectorThanTheOneAtTheAddressIsNotTakenForIt) {
    // Many answer, as behind a broadcast address; only the answer from the address counts.
    const PjlinkSimulator simulator({"--mac", "02:00:00:00:00:07"});
    EXPECT_THAT(refusal({ProjectorAddress{"127.0.0.2", simulator.port()}, {}, L""}),
                HasSubstr("does not report its MAC address"));
}

TEST_F(ProjectorAdditionTest, WhatFailsHalfwayGivesTheDeviceBack) {
    const PjlinkSimulator simulator({"--answer", "SVER=ERR3"});
    EXPECT_THAT(refusal({at(simulator), MacAddress::parse(L"020000000001"), L""}),
                HasSubstr("command GetFirmware: SVER ?: not available now"));
    EXPECT_EQ(manager.deviceCount(), 0U);
}

TEST_F(ProjectorAdditionTest, AnEmptyNameOfAnEntryIsNobodysName) {
    config->getProjectorConfig(L"L")->setName(L"");
    const PjlinkSimulator simulator;
    EXPECT_EQ(refusal({at(simulator), MacAddress::parse(L"020000000001"), L""}), "added");
    EXPECT_EQ(refusal({at(simulator), MacAddress::parse(L"020000000002"), L"x"}),
              "a projector at " + at(simulator).text() + " is there already: entry 020000000001, channel \"PJLink " +
                  at(simulator).text() + "\"");
}

TEST_F(ProjectorAdditionTest, RepeatedInANewerConfigurationItMakesTheSameEntry) {
    const PjlinkSimulator simulator({"--mac", "02:00:00:00:00:07"});
    const PjlinkSimulator plain({"--class", "1"});
    static_cast<void>(add({at(simulator), {}, L"Left"}));
    static_cast<void>(add({at(plain), MacAddress::parse(L"020000000008"), L""}));
    const auto newer = configOf(displays::projector("L", ""));
    ProjectorAddition::repeat(*config->getProjectorConfig(L"020000000007"), L"Left", *newer);
    ProjectorAddition::repeat(*config->getProjectorConfig(L"020000000008"), L"", *newer);
    EXPECT_EQ(newer->text(), config->text());
    EXPECT_EQ(newer->getProjectorConfig(L"020000000007")->getWidth(), 1920);
    EXPECT_EQ(newer->getProjectorConfig(L"020000000008")->getWidth(), 0);
}

TEST_F(ProjectorAdditionTest, ANameThatNobodyStatedNeedNotBeNewThereEither) {
    const PjlinkSimulator simulator({"--mac", "02:00:00:00:00:07"});
    const auto empty = configOf("");
    static_cast<void>(ProjectorAddition(*empty, manager).add({at(simulator), {}, L""}));
    config->getProjectorConfig(L"L")->setName(L"PJLink 127.0.0.1:" + std::to_wstring(simulator.port()));
    const auto newer = XMLConfigFile::parse(config->text(), "newer.xml");
    static_cast<void>(add({at(simulator), {}, L""}));
    ProjectorAddition::repeat(*empty->getProjectorConfig(L"020000000007"), L"", *newer);
    EXPECT_EQ(newer->text(), config->text()) << "as when it is added there in the first place";
}

TEST_F(ProjectorAdditionTest, AProjectorThatIsThereIsRefusedForItselfAndNotForItsName) {
    const PjlinkSimulator simulator({"--mac", "02:00:00:00:00:07"});
    static_cast<void>(add({at(simulator), {}, L"Left"}));
    EXPECT_EQ(refusal({at(simulator), {}, L"Left"}),
              "a projector at " + at(simulator).text() + " is there already: entry 020000000007, channel \"Left\"");
}

TEST_F(ProjectorAdditionTest, WhatTheNewerConfigurationHasIsNotRepeatedThere) {
    const PjlinkSimulator simulator({"--mac", "02:00:00:00:00:07"});
    static_cast<void>(add({at(simulator), {}, L"Left"}));
    const std::string device = projector_testing::device(simulator.port(), 9);
    const std::string other = projector_testing::device(1, 7);
    const std::vector<std::pair<std::string, std::string>> cases{
        {displays::projector("Left", ""), "the name \"Left\" is there already: entry Left, channel \"Left\""},
        {entry("A", device), "a projector at " + at(simulator).text() + " is there already: entry A, channel \"A\""},
        {entry("Left", other), "the projector 02:00:00:00:00:07 is there already: entry Left, channel \"Left\""},
        {entry("Left", device),
         "a projector at " + at(simulator).text() + " is there already: entry Left, channel \"Left\""},
        {entry("B", other), "the projector 02:00:00:00:00:07 is there already: entry B, channel \"B\""},
        {displays::projector("020000000007", ""),
         "the projector 02:00:00:00:00:07 is there already: entry 020000000007, channel \"020000000007\""}};
    for (const auto& [entries, expected] : cases) {
        const auto newer = configOf(entries);
        const std::string before = newer->text();
        try {
            ProjectorAddition::repeat(*config->getProjectorConfig(L"020000000007"), L"Left", *newer);
            ADD_FAILURE() << "it was repeated beside " << entries;
        } catch (const VeltraniException& fault) {
            EXPECT_EQ(Veltrani::toUtf8(fault.message), expected);
        }
        EXPECT_EQ(newer->text(), before);
    }
}

}  // namespace
