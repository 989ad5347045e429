#include "ProgramRun.h"
#include "ProjectorDisplays.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>

namespace {

using namespace projector_displays;
using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

class ChannelsCommandTest : public testing::Test {
protected:
    /// Runs `channels` over a file with this content, which must not change.
    ProgramRun channels(const std::string& content, std::vector<std::string> options = {},
                        const std::map<std::string, std::string>& environment = {}) const {
        const std::string file = folder.write("display.xml", content);
        options.insert(options.begin(), {"channels", file});
        ProgramRun run = runScreenManager(options, environment);
        EXPECT_EQ(folder.read("display.xml"), content) << "the file is not changed";
        return run;
    }

    TemporaryFolder folder;
};

TEST_F(ChannelsCommandTest, ListsWhatTheProjectorsTell) {
    const PjlinkSimulator left;
    const PjlinkSimulator right({"--class", "1", "--answer", "INPT ?=11"});
    const ProgramRun run = channels(twoProjectors(left.port(), right.port()), {"--timeout", PATIENT});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_EQ(run.errors, "");
    EXPECT_THAT(run.output, ContainsRegex("channel +id +device +state +resolution +input +firmware"));
    EXPECT_THAT(run.output, ContainsRegex("Left +020000000001 +PJLink 127.0.0.1:" + std::to_string(left.port()) +
                                          " +on +1920 x 1200 +2 +1.02.003\n"));
    EXPECT_THAT(run.output, ContainsRegex("Right +020000000002 +PJLink 127.0.0.1:" + std::to_string(right.port()) +
                                          " +on +- +0 +-\n"));
    const std::vector<std::string> lines = left.lines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "%1CLSS ?"), 1) << "contacted once";
}

TEST_F(ChannelsCommandTest, EveryMissingProjectorIsNamedInOneGo) {
    const PjlinkSimulator there;
    const std::string ports[] = {std::to_string(deadPort()), std::to_string(deadPort())};
    const ProgramRun run = channels(
        display(entry("A", "Left", snippet(std::stoi(ports[0]), 1)) + entry("B", "Centre", snippet(there.port(), 2)) +
                entry("C", "Right", snippet(std::stoi(ports[1]), 3))),
        {"--timeout", PATIENT});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.output, ContainsRegex("Left +A +PJLink 127.0.0.1:" + ports[0] + " +missing +- +- +-\n"));
    EXPECT_THAT(run.output, ContainsRegex("Centre +B .* on +1920 x 1200 "));
    EXPECT_THAT(run.output, ContainsRegex("Right +C .* missing "));
    EXPECT_EQ(run.errors,
              "error: channel Left (A): PJLink projector 020000000001 at 127.0.0.1:" + ports[0] +
                  ", first contact: no connection: Connection refused; check that it has power, that its network "
                  "control is switched on, and its address and password\n"
                  "error: channel Right (C): PJLink projector 020000000003 at 127.0.0.1:" +
                  ports[1] +
                  ", first contact: no connection: Connection refused; check that it has power, that its network "
                  "control is switched on, and its address and password\n");
}

TEST_F(ChannelsCommandTest, OfflineReplacesTheMissingOnes) {
    const PjlinkSimulator there;
    const ProgramRun run = channels(twoProjectors(there.port(), deadPort()), {"--offline", "--timeout", PATIENT});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(run.output, ContainsRegex("Left +020000000001 .* on +1920 x 1200 "));
    EXPECT_THAT(run.output,
                ContainsRegex("Right +020000000002 +Virtual projector 020000000002 +simulated +1280 x 800 +0 +simu"));
    EXPECT_THAT(run.errors, ContainsRegex("^warning: channel Right \\(R\\): .*; a virtual projector stands in\n$"));
}

TEST_F(ChannelsCommandTest, QuietSaysNothingOfReplacements) {
    const ProgramRun run = channels(twoProjectors(deadPort(), deadPort()), {"--offline", "--quiet"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.errors, "");
}

TEST_F(ChannelsCommandTest, VerboseShowsWhatTheLibraryDoes) {
    const ProgramRun run = channels(twoProjectors(deadPort(), deadPort()), {"--offline", "--verbose"});
    EXPECT_THAT(run.errors, HasSubstr("info: initialize: replaceMissingWithOffline 1\n"));
    EXPECT_THAT(run.errors, HasSubstr("warning: Replacing projector Lwith (offline) virtual projector\n"));
}

TEST_F(ChannelsCommandTest, StandbyIsAStateAndNoFault) {
    const PjlinkSimulator left({"--power", "0"});
    const PjlinkSimulator right({"--power", "3"});
    const ProgramRun run = channels(twoProjectors(left.port(), right.port()), {"--timeout", PATIENT});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_THAT(run.output, ContainsRegex("Left .* standby +1920 x 1200 +- +1.02.003"));
    EXPECT_THAT(run.output, ContainsRegex("Right .* warming up "));
}

TEST_F(ChannelsCommandTest, AQuestionThatAProjectorDoesNotAnswerIsAFault) {
    const PjlinkSimulator left({"--answer", "INST=ERR4"});
    const PjlinkSimulator right;
    const ProgramRun run = channels(twoProjectors(left.port(), right.port()), {"--timeout", PATIENT});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.output, ContainsRegex("Left .* on +1920 x 1200 +- +1.02.003"));
    EXPECT_THAT(run.errors, HasSubstr("error: channel Left: PJLink projector 020000000001"));
    EXPECT_THAT(run.errors, HasSubstr("INST ?: the projector reports a failure of its own (ERR4)"));
}

TEST_F(ChannelsCommandTest, ASilentProjectorHoldsNobodyUpForLongerThanTheTimeout) {
    const PjlinkSimulator silent({"--greeting", "-"});
    const PjlinkSimulator there;
    const auto begin = std::chrono::steady_clock::now();
    const ProgramRun run = channels(twoProjectors(silent.port(), there.port()), {"--timeout", IMPATIENT});
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(3));
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.errors, HasSubstr("first contact: no answer within 200 ms; check that it has power"));
    EXPECT_THAT(run.output, ContainsRegex("Left .* missing "));
}

TEST_F(ChannelsCommandTest, ManySilentProjectorsAreWaitedForTogether) {
    constexpr int PROJECTORS = 32;
    const PjlinkSimulator silent({"--projectors", std::to_string(PROJECTORS), "--greeting", "-"});
    std::string entries;
    for (int i = 0; i < PROJECTORS; ++i) {
        const std::string number = std::to_string(i);
        entries += entry("E" + number, "Channel " + number, snippet(silent.port(static_cast<std::size_t>(i)), i));
    }
    const ProgramRun run = channels(display(entries), {"--timeout", "1"});
    EXPECT_EQ(run.exitCode, 1);
    std::size_t at = 0;
    for (int i = 0; i < PROJECTORS; ++i) {
        at = run.errors.find("error: channel Channel " + std::to_string(i) + " (E", at);
        ASSERT_NE(at, std::string::npos) << i << ", in the order of the file";
    }
    EXPECT_EQ(std::count(run.errors.begin(), run.errors.end(), '\n'), PROJECTORS);
    EXPECT_EQ(silent.mostConnectionsTogether(), PROJECTORS) << "one after another they are open alone";
}

TEST_F(ChannelsCommandTest, APasswordFileThatCannotBeUsedBringsItsOwnRemedy) {
    const PjlinkSimulator locked({"--seed", "61fa922e", "--digest", "5ad047bf382a444610f5785503f77783"});
    const PjlinkSimulator open;
    const std::string content = twoProjectors(locked.port(), open.port());
    const std::string passwords = folder.write("passwords", "\xef\xbb\xbf* 12345678\n");
    const std::map<std::string, std::string> environment{{"SCREENMANAGER_PJLINK_PASSWORD_FILE", passwords}};
    ASSERT_EQ(::chmod(passwords.c_str(), 0644), 0);
    EXPECT_THAT(channels(content, {"--timeout", PATIENT}, environment).errors,
                HasSubstr("others have rights to it: make it your own and give it the mode 600\n"));
    ASSERT_EQ(::chmod(passwords.c_str(), 0600), 0);
    EXPECT_EQ(channels(content, {"--timeout", PATIENT}, environment).exitCode, 0) << "with a byte-order mark";
}

TEST_F(ChannelsCommandTest, AMissingPasswordNamesWhereItBelongs) {
    const PjlinkSimulator locked({"--seed", "61fa922e", "--digest", "5ad047bf382a444610f5785503f77783"});
    const PjlinkSimulator open;
    const ProgramRun run = channels(twoProjectors(locked.port(), open.port()), {"--timeout", PATIENT});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.errors,
                HasSubstr("it wants a password and none is configured, nothing was sent: set the environment "
                          "variable SCREENMANAGER_PJLINK_PASSWORD, or name a password file in "
                          "SCREENMANAGER_PJLINK_PASSWORD_FILE\n"));
}

TEST_F(ChannelsCommandTest, ThePasswordIsUsedAndNeverShown) {
    const PjlinkSimulator left({"--seed", "61fa922e", "--digest", "5ad047bf382a444610f5785503f77783"});
    const PjlinkSimulator right({"--seed", "61fa922e", "--digest", "5ad047bf382a444610f5785503f77783"});
    const ProgramRun run = channels(
        twoProjectors(left.port(), right.port()), {"--verbose", "--timeout", PATIENT},
        {{"SCREENMANAGER_PJLINK_PASSWORD", "12345678"}, {"SCREENMANAGER_PJLINK_PASSWORD_020000000002", "87654321"}});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.output, ContainsRegex("Left .* on "));
    EXPECT_THAT(run.errors, HasSubstr("first contact: it refused the password (ERRA); check that"));
    EXPECT_THAT(run.errors + run.output, AllOf(Not(HasSubstr("12345678")), Not(HasSubstr("87654321"))));
}

TEST_F(ChannelsCommandTest, ABrokenSnippetIsNamedAndCanBeReplaced) {
    const PjlinkSimulator there;
    const std::string content = display(entry("A", "Left", "<Device type='PJLink' host='192.0.2.1'/>") +
                                        entry("B", "Centre", "") + entry("C", "Right", snippet(there.port(), 3)));
    const ProgramRun refused = channels(content, {"--timeout", PATIENT});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.errors,
                HasSubstr("error: channel Left (A): Device snippet without a MAC address: the attribute "
                          "mac is missing; correct the Device element of the entry\n"));
    EXPECT_THAT(refused.errors,
                HasSubstr("error: channel Centre (B): Device snippet without a MAC address: it is empty: "
                          "the entry names no device; correct the Device element of the entry\n"));
    const ProgramRun replaced = channels(content, {"--offline", "--timeout", PATIENT});
    EXPECT_EQ(replaced.exitCode, 0) << replaced.errors;
    EXPECT_THAT(replaced.output, ContainsRegex("Left +A +Virtual projector [^ ]+ +simulated "));
    EXPECT_THAT(replaced.output, ContainsRegex("Centre +B +Virtual projector [^ ]+ +simulated "));
    EXPECT_THAT(replaced.output, ContainsRegex("Right +020000000003 .* on "));
}

TEST_F(ChannelsCommandTest, TwoEntriesWithOneProjectorCannotBeUsed) {
    const PjlinkSimulator there;
    const std::string remedy = " as channel Left (L); correct the Device element of one of the two, or remove one";
    const std::string two = twoProjectors(there.port(), there.port());
    const ProgramRun sameAddress = channels(two, {"--timeout", PATIENT});
    EXPECT_EQ(sameAddress.exitCode, 1);
    EXPECT_EQ(sameAddress.errors, "error: channel Right (R): it has the same address 127.0.0.1:" +
                                      std::to_string(there.port()) + remedy + '\n');
    const ProgramRun replaced = channels(two, {"--offline", "--timeout", PATIENT});
    EXPECT_EQ(replaced.exitCode, 0);
    EXPECT_THAT(replaced.errors, HasSubstr(remedy + "; a virtual projector stands in\n"));

    const std::string one = snippet(there.port(), 1);
    const ProgramRun sameMac =
        channels(display(entry("L", "Left", one) + entry("R", "Right", one)), {"--offline", "--timeout", PATIENT});
    EXPECT_EQ(sameMac.exitCode, 3);
    EXPECT_EQ(sameMac.errors, "error: channel Right (R): it has the same MAC address 020000000001" + remedy + '\n');
    EXPECT_EQ(sameMac.output, "");
}

TEST_F(ChannelsCommandTest, NamesOfEveryScriptWorkInTheCLocale) {
    const PjlinkSimulator left;
    const PjlinkSimulator right;
    const ProgramRun run =
        channels(display(entry("\xe5\xb7\xa6", "B\xc3\xbchne 100%s &amp; \"links\"", snippet(left.port(), 1)) +
                         entry("R", "B\xc3\xbchne 100%s &amp; \"links\"", snippet(right.port(), 2)) +
                         entry("X", "\xe5\xb7\xa6&#10;x", snippet(deadPort(), 3))),
                 {"--offline", "--timeout", PATIENT}, {{"LC_ALL", "C"}});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(run.output, HasSubstr("B\xc3\xbchne 100%s & \"links\"     020000000001 "));
    EXPECT_THAT(run.output, HasSubstr("B\xc3\xbchne 100%s & \"links\"_01  020000000002 "));
    EXPECT_THAT(run.output, HasSubstr("\xe5\xb7\xa6\\nx "));
    EXPECT_THAT(run.errors, HasSubstr("channel \xe5\xb7\xa6\\nx (X): "));
}

TEST_F(ChannelsCommandTest, AFileWithoutProjectorsSaysHowToAddOne) {
    const ProgramRun run = channels(display(""));
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.errors,
                ContainsRegex("has no projectors; add one with: screenmanager add .*display.xml ADDRESS\n"));
    EXPECT_EQ(run.output, "");
    const ProgramRun json = channels(display(""), {"--format", "json"});
    EXPECT_EQ(json.exitCode, 1);
    EXPECT_EQ(json.errors, run.errors);
    EXPECT_THAT(json.output, ContainsRegex("\"channels\": *\\[\\]")) << "a program finds a listing of none";
}

TEST_F(ChannelsCommandTest, AFileOfAnyNameIsOneWordInTheCommandThatIsSuggested) {
    for (const std::string name : {"plain.xml", "two words.xml", "it's $HOME's.xml"}) {
        const std::string file = folder.write(name, display(""));
        const std::string errors = runScreenManager({"channels", file}).errors;
        const std::string begin = "add one with: screenmanager add ";
        const std::size_t at = errors.find(begin);
        ASSERT_NE(at, std::string::npos) << errors;
        // The shell itself takes the rest apart.
        EXPECT_EQ(runProgram("/bin/sh", {"-c", "printf '%s|' " + errors.substr(at + begin.size())}).output,
                  file + "|ADDRESS|");
    }
}

TEST_F(ChannelsCommandTest, AConfigurationThatCannotBeUsedExitsWithThree) {
    EXPECT_EQ(channels("<Display").exitCode, 3);
    EXPECT_EQ(runScreenManager({"channels", folder.file("gone.xml")}).exitCode, 3);
}

TEST_F(ChannelsCommandTest, AFullDiskExitsWithFour) {
    const std::string file = folder.write("display.xml", twoProjectors(deadPort(), deadPort()));
    const ProgramRun run =
        runProgram("/bin/sh", {"-c", programFile() + " channels --offline '" + file + "' > /dev/full"});
    EXPECT_EQ(run.exitCode, 4);
    EXPECT_THAT(run.errors, HasSubstr("standard output cannot be written"));
}

}  // namespace
