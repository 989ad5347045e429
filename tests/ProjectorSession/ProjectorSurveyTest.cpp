#include "ProjectorSession/ProjectorSurvey.h"

#include "DeviceFramework2/Device.h"
#include "ProjectorTesting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <chrono>

namespace {

using namespace projector_testing;
using namespace Veltrani::ProjectorSession;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

class ProjectorSurveyTest : public testing::Test {
protected:
    /// The finding on one simulated projector; its device is given back.
    ProjectorFinding findingOn(const PjlinkSimulator& simulator, ProjectorNeed need) {
        const auto config = configOf(entry("A", device(simulator.port(), 1)));
        auto findings = ProjectorSurvey(need).run(*config, manager);
        manager.releaseDevice(findings.at(0).device);
        return findings.at(0);
    }

    DeviceManager manager{settings()};
};

TEST_F(ProjectorSurveyTest, AsksEveryEntryWhateverIsFound) {
    const PjlinkSimulator there;
    const auto config =
        configOf(entry("A", device(deadPort(), 1)) + entry("B", device(there.port(), 2)) + entry("C", ""));
    std::vector<std::pair<std::size_t, std::size_t>> progress;
    const auto findings = ProjectorSurvey(ProjectorNeed::ANSWER, [&](std::size_t done, std::size_t total) {
                              progress.emplace_back(done, total);
                          }).run(*config, manager);
    ASSERT_THAT(findings, SizeIs(3));
    EXPECT_EQ(findings[0].id, L"A");
    EXPECT_THAT(findings[0].fault, HasSubstr("no connection: Connection refused; check that it has power"));
    EXPECT_EQ(findings[0].device, nullptr);
    EXPECT_TRUE(findings[1].usable());
    ASSERT_NE(findings[1].device, nullptr);
    EXPECT_EQ(findings[1].device->getUID(), L"020000000002");
    EXPECT_THAT(findings[2].fault, HasSubstr("it is empty: the entry names no device; correct the Device element"));
    EXPECT_THAT(progress, ElementsAre(Pair(0U, 3U), Pair(1U, 3U), Pair(2U, 3U), Pair(3U, 3U)));
    EXPECT_EQ(manager.useCount(findings[1].device), 1);
    manager.releaseDevice(findings[1].device);
}

TEST_F(ProjectorSurveyTest, OnlyAsksWhatIsNeededAndChangesNothing) {
    const PjlinkSimulator simulator;
    EXPECT_TRUE(findingOn(simulator, ProjectorNeed::ANSWER).usable());
    EXPECT_THAT(simulator.lines(), ElementsAre("%1CLSS ?"));
    EXPECT_TRUE(findingOn(simulator, ProjectorNeed::BLACK).usable());
    EXPECT_TRUE(findingOn(simulator, ProjectorNeed::CLEAR).usable());
    EXPECT_THAT(simulator.lines(),
                ElementsAre("%1CLSS ?", "%1CLSS ?", "%1POWR ?", "%1AVMT ?", "%1CLSS ?", "%1POWR ?", "%1AVMT ?"));
}

TEST_F(ProjectorSurveyTest, StandbyDoesForAnAnswerAndForNothingElse) {
    const PjlinkSimulator simulator({"--power", "0"});
    EXPECT_TRUE(findingOn(simulator, ProjectorNeed::ANSWER).usable());
    for (const ProjectorNeed need : {ProjectorNeed::BLACK, ProjectorNeed::GRAY50, ProjectorNeed::CLEAR}) {
        const ProjectorFinding finding = findingOn(simulator, need);
        EXPECT_THAT(finding.fault, EndsWith("is in standby; switch it on"));
        EXPECT_EQ(finding.device, nullptr);
    }
    EXPECT_EQ(manager.deviceCount(), 0U) << "one that is not usable is given back";
}

TEST_F(ProjectorSurveyTest, AProjectorThatFailsAQuestionIsNotReady) {
    EXPECT_THAT(findingOn(PjlinkSimulator({"--answer", "POWR=ERR4"}), ProjectorNeed::CLEAR).fault,
                HasSubstr("command GetPowerState: POWR ?: the projector reports a failure of its own (ERR4)"));
    EXPECT_THAT(findingOn(PjlinkSimulator({"--answer", "AVMT=ERR2"}), ProjectorNeed::BLACK).fault,
                HasSubstr("command GetPictureMute: AVMT ?: it does not take the parameter (ERR2)"));
}

TEST_F(ProjectorSurveyTest, AProjectorWithoutAShutterIsNamedWithARemedyThatFitsTheNeed) {
    const PjlinkSimulator simulator({"--answer", "AVMT=ERR1"});
    EXPECT_THAT(findingOn(simulator, ProjectorNeed::BLACK).fault,
                EndsWith("(ERR1): it cannot show a black picture; darken it by hand and leave it out with --offline"));
    const std::string clear = findingOn(simulator, ProjectorNeed::CLEAR).fault;
    EXPECT_THAT(clear, EndsWith("(ERR1): it cannot be made to show its input; switch its picture mute off by hand and "
                                "leave it out with --offline"));
    EXPECT_THAT(clear, testing::Not(HasSubstr("black")));
}

TEST_F(ProjectorSurveyTest, AnEntryThatMeansAnEarlierOnesProjectorIsAtFaultAndIsNotAsked) {
    const PjlinkSimulator there;
    const PjlinkSimulator other;
    const auto config = configOf(entry("A", device(there.port(), 1)) + entry("B", device(other.port(), 1)) +
                                 entry("C", device(there.port(), 3)) + entry("020000000001", ""));
    const auto findings = ProjectorSurvey(ProjectorNeed::ANSWER).run(*config, manager);
    ASSERT_THAT(findings, SizeIs(4));
    EXPECT_TRUE(findings[0].usable());
    const std::string remedy = " as channel A (A); correct the Device element of one of the two, or remove one";
    EXPECT_EQ(findings[1].fault, "it has the same MAC address 020000000001" + remedy);
    EXPECT_FALSE(findings[1].replaceable);
    EXPECT_EQ(findings[2].fault, "it has the same address 127.0.0.1:" + std::to_string(there.port()) + remedy);
    EXPECT_TRUE(findings[2].replaceable) << "a virtual projector does no harm there";
    EXPECT_FALSE(findings[3].replaceable) << "an id is an identity too";
    EXPECT_THAT(other.lines(), testing::IsEmpty());
    EXPECT_THAT(there.lines(), ElementsAre("%1CLSS ?"));
    manager.releaseDevice(findings[0].device);
}

TEST_F(ProjectorSurveyTest, GreyIsNotToBeHadByPjlink) {
    const PjlinkSimulator simulator;
    EXPECT_EQ(findingOn(simulator, ProjectorNeed::GRAY50).fault,
              "projector 020000000001 (PJLink 127.0.0.1:" + std::to_string(simulator.port()) +
                  ") cannot show a grey picture by itself; show one through its input");
}

TEST_F(ProjectorSurveyTest, ThirtyTwoThatNeverGreetAreWaitedForTogether) {
    constexpr int PROJECTORS = 32;
    constexpr std::chrono::milliseconds WAIT(1000);
    const PjlinkSimulator silent({"--projectors", std::to_string(PROJECTORS), "--greeting", "-"});
    std::string entries;
    for (int i = 0; i < PROJECTORS; ++i) {
        entries += entry("E" + std::to_string(i), device(silent.port(static_cast<std::size_t>(i)), i));
    }
    const auto config = configOf(entries);
    auto impatient = settings();
    impatient.pjlink.greetingLimit = WAIT;
    DeviceManager hasty(impatient);
    const auto findings = ProjectorSurvey(ProjectorNeed::BLACK).run(*config, hasty);
    ASSERT_THAT(findings, SizeIs(PROJECTORS));
    for (std::size_t i = 0; i < findings.size(); ++i) {
        EXPECT_EQ(findings[i].id, L"E" + std::to_wstring(i)) << "in the order of the configuration";
        EXPECT_THAT(findings[i].fault, HasSubstr("first contact: no answer within 1000 ms; check that it has power"));
    }
    EXPECT_EQ(silent.mostConnectionsTogether(), PROJECTORS) << "one after another they are open alone";
    EXPECT_EQ(hasty.deviceCount(), 0U);
}

std::string lastOf(const std::vector<std::string>& texts) {
    return texts.empty() ? "" : texts.back();
}

TEST_F(ProjectorSurveyTest, ProjectorsThatAreSilentAtDifferentQuestionsAreWaitedForTogether) {
    constexpr std::chrono::milliseconds WAIT(1500);
    const PjlinkSimulator atOnce({"--greeting", "-"});
    const PjlinkSimulator atPower({"--silent-on", "POWR"});
    const PjlinkSimulator atMute({"--silent-on", "AVMT"});
    const PjlinkSimulator good;
    const auto config = configOf(entry("A", device(atOnce.port(), 1)) + entry("B", device(atPower.port(), 2)) +
                                 entry("C", device(atMute.port(), 3)) + entry("D", device(good.port(), 4)));
    auto impatient = settings();
    impatient.pjlink.greetingLimit = WAIT;
    impatient.pjlink.replyLimit = WAIT;
    DeviceManager hasty(impatient);
    std::vector<std::string> atFirstEnd;
    const auto noteQuestions = [&](std::size_t done, std::size_t /*total*/) {
        if (done == 2) {  // the good one, and the first of those that are waited for
            atFirstEnd = {std::to_string(atOnce.mostConnections()), lastOf(atPower.lines()), lastOf(atMute.lines())};
        }
    };
    const auto findings = ProjectorSurvey(ProjectorNeed::BLACK, noteQuestions).run(*config, hasty);
    EXPECT_THAT(atFirstEnd, ElementsAre("1", "%1POWR ?", "%1AVMT ?")) << "all three waits had begun by then";
    ASSERT_THAT(findings, SizeIs(4));
    EXPECT_THAT(findings[0].fault, HasSubstr("first contact: no answer within 1500 ms; check that it has power"));
    EXPECT_THAT(findings[1].fault, HasSubstr("command GetPowerState: no answer within 1500 ms; check that it is on"));
    EXPECT_THAT(findings[2].fault, HasSubstr("command GetPictureMute: no answer within 1500 ms: it cannot show"));
    EXPECT_TRUE(findings[3].usable());
    hasty.releaseDevice(findings[3].device);
    EXPECT_EQ(hasty.deviceCount(), 0U);
}

TEST_F(ProjectorSurveyTest, AFaultOfThisMachineBringsItsOwnRemedy) {
    const PjlinkSimulator locked({"--seed", "498e4a67", "--digest", "5d8409bc1c3fa39749434aa3a5c38682"});
    EXPECT_THAT(findingOn(locked, ProjectorNeed::ANSWER).fault,
                EndsWith("or name a password file in SM_TEST_PJLINK_PASSWORD_FILE"));
    ::setenv("SM_TEST_PJLINK_PASSWORD_FILE", "/nowhere/passwords", 1);
    const std::string unreadable = findingOn(locked, ProjectorNeed::ANSWER).fault;
    ::unsetenv("SM_TEST_PJLINK_PASSWORD_FILE");
    EXPECT_THAT(unreadable,
                EndsWith("password file /nowhere/passwords: No such file or directory; put a file there that you can "
                         "read, or correct the environment variable SM_TEST_PJLINK_PASSWORD_FILE"));

    const auto config = configOf(entry("A", "<Device type='PJLink' mac='02:00:00:00:00:01'/>"));
    auto unsearchable = settings();
    unsearchable.search.ownAddress = "127.0.0.1";
    unsearchable.search.ownPort = locked.searchPort();
    DeviceManager searcher(unsearchable);
    EXPECT_THAT(ProjectorSurvey(ProjectorNeed::ANSWER).run(*config, searcher).at(0).fault,
                EndsWith("Address already in use. Give the address of each projector instead"));
}

TEST_F(ProjectorSurveyTest, AFaultIsOneLine) {
    const PjlinkSimulator simulator({"--greeting", "hello \x1b[2J"});
    EXPECT_THAT(findingOn(simulator, ProjectorNeed::ANSWER).fault,
                HasSubstr("it greeted with \"hello  [2J\", which is not PJLink; check that it has power"));
}

TEST_F(ProjectorSurveyTest, AnEmptyConfigurationHasNoFindings) {
    EXPECT_THAT(ProjectorSurvey(ProjectorNeed::BLACK).run(*configOf(""), manager), IsEmpty());
}

}  // namespace
