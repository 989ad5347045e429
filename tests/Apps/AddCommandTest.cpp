#include "ProgramRun.h"
#include "ProjectorDisplays.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <thread>

namespace {

using namespace projector_displays;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class AddCommandTest : public testing::Test {
protected:
    AddCommandTest() : file(folder.write("display.xml", display(""))) {}

    [[nodiscard]] ProgramRun add(std::vector<std::string> arguments,
                                 const std::map<std::string, std::string>& environment = {}) const {
        arguments.insert(arguments.begin(), {"add", file});
        arguments.insert(arguments.end(), {"--timeout", PATIENT});
        return runScreenManager(arguments, environment);
    }

    /// Adds a projector that does not answer the search, which lasts for the whole of its time.
    [[nodiscard]] ProgramRun searchInVain(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"add", file});
        arguments.insert(arguments.end(), {"--timeout", IMPATIENT});
        return runScreenManager(arguments);
    }

    /// Expects that adding is refused for a reason and leaves the file alone.
    void expectRefusal(const ProgramRun& run, const std::string& content, const std::string& reason) const {
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_EQ(run.output, "");
        EXPECT_THAT(run.errors, HasSubstr(reason));
        EXPECT_THAT(run.errors, testing::StartsWith("error: " + file + ": "));
        EXPECT_EQ(folder.read("display.xml"), content);
    }

    static std::string at(const PjlinkSimulator& simulator) { return "127.0.0.1:" + std::to_string(simulator.port()); }

    TemporaryFolder folder;
    std::string file;
};

TEST_F(AddCommandTest, ByAddressThenChannelsListsIt) {
    const PjlinkSimulator left({"--mac", mac(1)});
    const PjlinkSimulator right({"--mac", mac(2)});
    const ProgramRun first = add({at(left), "--name", "B\xc3\xbchne links"}, {{"LC_ALL", "C"}});
    EXPECT_EQ(first.exitCode, 0) << first.errors;
    EXPECT_EQ(first.output, "added 020000000001: channel B\xc3\xbchne links, PJLink " + at(left) + ", 1920 x 1200\n");
    EXPECT_EQ(add({at(right)}).exitCode, 0);
    const std::string content = folder.read("display.xml");
    EXPECT_THAT(content, HasSubstr("<!-- hall 2 -->"));
    EXPECT_THAT(content, HasSubstr("<Projector id=\"020000000001\">"));
    EXPECT_THAT(content, HasSubstr("mac=\"02:00:00:00:00:02\" host=\"127.0.0.1\""));

    const ProgramRun channels = runScreenManager({"channels", file, "--timeout", PATIENT});
    EXPECT_EQ(channels.exitCode, 0) << channels.errors;
    EXPECT_THAT(channels.output, ContainsRegex("B\xc3\xbchne links +020000000001 +PJLink " + at(left) + " +on "));
    EXPECT_THAT(channels.output,
                ContainsRegex("PJLink " + at(right) + " +020000000002 +PJLink " + at(right) + " +on "));
}

TEST_F(AddCommandTest, ByMacAddressSearchesForIt) {
    const PjlinkSimulator simulator({"--search-answers", "3"});
    const ProgramRun run = add({"02-00-00-00-00-03", "--broadcast", at(simulator)});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_EQ(run.output,
              "added 020000000003: channel PJLink " + at(simulator) + ", PJLink " + at(simulator) + ", 1920 x 1200\n");
    EXPECT_THAT(folder.read("display.xml"), HasSubstr("mac=\"02:00:00:00:00:03\" host=\"127.0.0.1\" port=\"" +
                                                      std::to_string(simulator.port()) + "\""));
}

TEST_F(AddCommandTest, AMacAddressThatNobodyHasIsAFault) {
    const PjlinkSimulator simulator({"--search-answers", "3"});
    const std::string before = folder.read("display.xml");
    expectRefusal(add({"02:00:00:00:00:09", "--broadcast", at(simulator)}), before,
                  "PJLink projector 020000000009 did not answer the search (3 others did)");
}

TEST_F(AddCommandTest, ByBothAddressesSearchesForNothing) {
    const PjlinkSimulator simulator({"--class", "1"});
    const ProgramRun run = add({at(simulator), "--mac", "020000000007"});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_THAT(run.output, HasSubstr("added 020000000007: "));
    EXPECT_THAT(run.output, HasSubstr("resolution not reported; state it in the file\n"));
    EXPECT_THAT(simulator.journal(), Not(testing::Contains("SEARCH %2SRCH")));
    EXPECT_THAT(folder.read("display.xml"), Not(HasSubstr("Resolution")));
}

TEST_F(AddCommandTest, AMacAddressThatTheProjectorContradictsIsRefused) {
    const PjlinkSimulator simulator({"--mac", mac(1)});
    expectRefusal(
        add({at(simulator), "--mac", mac(2)}), folder.read("display.xml"),
        "the projector at " + at(simulator) +
            " has the MAC address 02:00:00:00:00:01, not 02:00:00:00:00:02; correct --mac, or leave it out\n");
    EXPECT_EQ(add({at(simulator), "--mac", mac(1)}).exitCode, 0);
}

TEST_F(AddCommandTest, AProjectorThatDoesNotTellItsMacAddressNeedsTheOption) {
    const PjlinkSimulator simulator;
    const std::string before = folder.read("display.xml");
    expectRefusal(searchInVain({at(simulator)}), before,
                  "the projector at " + at(simulator) +
                      " does not report its MAC address; check that it has power and "
                      "that its network control is switched on; if it has PJLink "
                      "class 1, state the address with --mac\n");
    EXPECT_THAT(simulator.lines(), IsEmpty());
    expectRefusal(add({"[::1]:14351"}), before, "[::1]:14351 cannot be asked for its MAC address over IPv6");
    expectRefusal(add({"[::1]:1", "--mac", mac(1)}), before,
                  "PJLink projector 020000000001 at [::1]:1, first contact: ");
}

TEST_F(AddCommandTest, AProjectorThatTheFileHasIsRefused) {
    const PjlinkSimulator simulator({"--mac", mac(1)});
    ASSERT_EQ(add({at(simulator), "--name", "Left"}).exitCode, 0);
    const std::string before = folder.read("display.xml");
    expectRefusal(add({at(simulator)}), before,
                  "a projector at " + at(simulator) + " is there already: entry 020000000001, channel \"Left\"");
    expectRefusal(add({"02:00:00:00:00:01"}), before,
                  "the projector 02:00:00:00:00:01 is there already: entry 020000000001, channel \"Left\"");
    const PjlinkSimulator moved({"--mac", mac(1)});
    expectRefusal(add({at(moved)}), before, "the projector 02:00:00:00:00:01 is there already");
    const PjlinkSimulator other({"--mac", mac(2)});
    expectRefusal(add({at(other), "--name", "Left"}), before, "the name \"Left\" is there already");
}

TEST_F(AddCommandTest, AnEntryThatWasNeverFoundCountsByItsSnippet) {
    const std::string content = twoProjectors(1, 2);
    folder.write("display.xml", content);
    const PjlinkSimulator simulator({"--mac", mac(2)});
    expectRefusal(add({at(simulator)}), content,
                  "the projector 02:00:00:00:00:02 is there already: entry R, channel \"Right\"");
}

TEST_F(AddCommandTest, AProjectorThatIsNotThereIsAFault) {
    const std::string port = std::to_string(deadPort());
    expectRefusal(
        add({"127.0.0.1:" + port, "--mac", mac(1)}), folder.read("display.xml"),
        "PJLink projector 020000000001 at 127.0.0.1:" + port + ", first contact: no connection: Connection refused\n");
}

TEST_F(AddCommandTest, ALockedProjectorNamesWhereThePasswordBelongs) {
    const PjlinkSimulator simulator(
        {"--mac", mac(1), "--seed", "61fa922e", "--digest", "5ad047bf382a444610f5785503f77783"});
    expectRefusal(add({at(simulator)}), folder.read("display.xml"),
                  "set the environment variable SCREENMANAGER_PJLINK_PASSWORD, or name a password file in "
                  "SCREENMANAGER_PJLINK_PASSWORD_FILE\n");
    const ProgramRun run = add({at(simulator)}, {{"SCREENMANAGER_PJLINK_PASSWORD_020000000001", "12345678"}});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_THAT(folder.read("display.xml"), Not(HasSubstr("12345678")));
}

TEST_F(AddCommandTest, AProjectorThatFailsHalfwayLeavesTheFileAlone) {
    const PjlinkSimulator simulator({"--mac", mac(1), "--answer", "RRES=ERR4"});
    expectRefusal(add({at(simulator)}), folder.read("display.xml"),
                  "command GetNativeResolution: RRES ?: the projector reports a failure of its own (ERR4); nothing was "
                  "added: see to the projector, then add it again\n");
}

TEST_F(AddCommandTest, AFullDiskIsReportedAndExitsWithFour) {
    const PjlinkSimulator simulator({"--mac", mac(1)});
    const ProgramRun run = runProgram("/bin/sh", {"-c", programFile() + " add " + file + " " + at(simulator) +
                                                            " --timeout " + PATIENT + " > /dev/full"});
    EXPECT_EQ(run.exitCode, 4);
    EXPECT_THAT(run.errors, HasSubstr("error: standard output cannot be written\n"));
}

TEST_F(AddCommandTest, AConfigurationThatCannotBeUsedExitsWithThree) {
    folder.write("display.xml", "<Display");
    EXPECT_EQ(add({"192.0.2.1"}).exitCode, 3);
    EXPECT_EQ(folder.read("display.xml"), "<Display");
}

/// A projector that takes its time for each answer, so that something can happen meanwhile.
const std::vector<std::string> SLOW{"--mac", mac(1), "--delay", "50"};

class AddCommandMeanwhileTest : public AddCommandTest {
protected:
    /// Adds a slow projector, and does something once the program is asking it: it has read the file by then.
    ProgramRun addAnd(const std::function<void()>& meanwhile, const std::string& name = "Left") {
        const std::size_t before = slow.journal().size();
        std::vector<std::string> arguments{"add", file, at(slow), "--timeout", PATIENT};
        if (!name.empty()) {
            arguments.insert(arguments.end(), {"--name", name});
        }
        RunningProgram program(programFile(), arguments);
        while (slow.journal().size() == before) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        meanwhile();
        return program.finish();
    }

    /// The only entry in the folder is the file.
    void expectNothingBeside() const {
        EXPECT_EQ(
            std::distance(std::filesystem::directory_iterator(folder.path()), std::filesystem::directory_iterator()),
            std::filesystem::exists(file) ? 1 : 0);
    }

    const PjlinkSimulator slow{SLOW};
    const std::string edited = display(entry("R", "Right", snippet(1, 2)));
};

TEST_F(AddCommandMeanwhileTest, AnEditSurvives) {
    const ProgramRun run = addAnd([&] { folder.write("display.xml", edited); });
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.errors, file + " was changed while the projector was queried: it was added to the newer file\n");
    const std::string content = folder.read("display.xml");
    EXPECT_THAT(content, HasSubstr("<Projector id=\"R\" section=\"S-R\">"));
    EXPECT_THAT(content, HasSubstr("<Projector id=\"020000000001\">"));
    EXPECT_THAT(content, HasSubstr("<Resolution width=\"1920\" height=\"1200\"/>"));
    expectNothingBeside();

    // The same, added to the newer file in the first place.
    folder.write("display.xml", edited);
    EXPECT_EQ(runScreenManager({"add", file, at(slow), "--name", "Left", "--timeout", PATIENT}).errors, "");
    EXPECT_EQ(folder.read("display.xml"), content);
}

TEST_F(AddCommandMeanwhileTest, ANameThatWasNotStatedNeedNotBeNew) {
    const std::string named = display(entry("R", "PJLink " + at(slow), snippet(1, 2)));
    const ProgramRun run = addAnd([&] { folder.write("display.xml", named); }, "");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.errors, file + " was changed while the projector was queried: it was added to the newer file\n");
    const std::string content = folder.read("display.xml");

    folder.write("display.xml", named);
    EXPECT_EQ(runScreenManager({"add", file, at(slow), "--timeout", PATIENT}).exitCode, 0);
    EXPECT_EQ(folder.read("display.xml"), content) << "as when it is added there in the first place";
}

TEST_F(AddCommandMeanwhileTest, OneProjectorTwiceAtOnceIsRefusedForItself) {
    for (const std::string name : {"Left", ""}) {
        folder.write("display.xml", display(""));
        EXPECT_EQ(addAnd([] {}, name).exitCode, 0);
        const std::string theirs = folder.read("display.xml");
        folder.write("display.xml", display(""));
        const ProgramRun run = addAnd([&] { folder.write("display.xml", theirs); }, name);
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_THAT(run.errors, testing::StartsWith("error: " + file +
                                                    ": the projector 02:00:00:00:00:01 is there "
                                                    "already: entry 020000000001, channel "));
    }
}

TEST_F(AddCommandMeanwhileTest, ARemovedFileDoesNotComeBack) {
    const ProgramRun run = addAnd([&] { std::filesystem::remove(file); });
    EXPECT_EQ(run.exitCode, 4);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, "error: " + file +
                              ": the file was removed by somebody else after it had been read, and was not made anew; "
                              "bring it back, read it again, then repeat the change\n");
    EXPECT_FALSE(std::filesystem::exists(file));
    expectNothingBeside();
}

TEST_F(AddCommandMeanwhileTest, AnEditThatCannotBeReadStays) {
    const ProgramRun run = addAnd([&] { folder.write("display.xml", "<Display"); });
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_EQ(run.output, "");
    EXPECT_THAT(run.errors, testing::StartsWith("error: " + file + ":1: "));
    EXPECT_THAT(run.errors,
                testing::EndsWith("error: " + file +
                                  " was changed while the projector was queried, and nothing was added: mend the file, "
                                  "then add the projector again\n"));
    EXPECT_EQ(folder.read("display.xml"), "<Display");
    expectNothingBeside();
}

TEST_F(AddCommandMeanwhileTest, WhatSomebodyElseAddedIsNotAddedTwice) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {entry("A", "Other", snippet(1, 1)), "the projector 02:00:00:00:00:01 is there already: entry A"},
        {entry("A", "Other", snippet(slow.port(), 2)), "a projector at " + at(slow) + " is there already: entry A"},
        {entry("A", "Left", snippet(1, 2)), "the name \"Left\" is there already: entry A"}};
    for (const auto& [theirs, reason] : cases) {
        folder.write("display.xml", display(""));
        const ProgramRun run = addAnd([&, entries = theirs] { folder.write("display.xml", display(entries)); });
        expectRefusal(run, display(theirs), reason);
    }
}

TEST_F(AddCommandMeanwhileTest, ALinkThatLeadsElsewhereByNowIsFollowed) {
    std::filesystem::rename(file, folder.file("first.xml"));
    folder.write("second.xml", edited);
    ASSERT_EQ(::symlink("first.xml", file.c_str()), 0);
    const ProgramRun run = addAnd([&] {
        ASSERT_EQ(::symlink("second.xml", folder.file("newer").c_str()), 0);
        std::filesystem::rename(folder.file("newer"), file);
    });
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_TRUE(std::filesystem::is_symlink(file));
    EXPECT_EQ(folder.read("first.xml"), display(""));
    EXPECT_THAT(folder.read("second.xml"), HasSubstr("<Projector id=\"R\" section=\"S-R\">"));
    EXPECT_THAT(folder.read("second.xml"), HasSubstr("<Projector id=\"020000000001\">"));
}

TEST_F(AddCommandMeanwhileTest, TwoAdditionsAtOnceBothStay) {
    constexpr int ROUNDS = 20;
    const PjlinkSimulator other({"--mac", mac(2), "--delay", "50"});
    for (int round = 0; round < ROUNDS; ++round) {
        folder.write("display.xml", display(""));
        RunningProgram first(programFile(), {"add", file, at(slow), "--timeout", PATIENT});
        RunningProgram second(programFile(), {"add", file, at(other), "--timeout", PATIENT});
        EXPECT_EQ(first.finish().exitCode, 0);
        EXPECT_EQ(second.finish().exitCode, 0);
        const std::string content = folder.read("display.xml");
        EXPECT_THAT(content, HasSubstr("<Projector id=\"020000000001\">")) << "round " << round;
        EXPECT_THAT(content, HasSubstr("<Projector id=\"020000000002\">")) << "round " << round;
        expectNothingBeside();
    }
}

TEST_F(AddCommandTest, AFileWithTwoNamesIsRefusedBeforeAProjectorIsAsked) {
    const PjlinkSimulator simulator({"--mac", mac(1)});
    std::filesystem::create_hard_link(file, folder.file("second.xml"));
    const ProgramRun run = add({at(simulator)});
    EXPECT_EQ(run.exitCode, 4);
    EXPECT_EQ(run.output, "");
    EXPECT_THAT(run.errors, testing::StartsWith("error: " + file + ": the file has 2 names (hard links), "));
    EXPECT_EQ(folder.read("display.xml"), display(""));
    EXPECT_TRUE(std::filesystem::equivalent(file, folder.file("second.xml")));
    EXPECT_THAT(simulator.journal(), IsEmpty());

    std::filesystem::rename(file, folder.file("first.xml"));
    ASSERT_EQ(::symlink("first.xml", file.c_str()), 0);
    EXPECT_EQ(add({at(simulator)}).exitCode, 4) << "whichever way leads there";
    EXPECT_THAT(simulator.journal(), IsEmpty());
}

TEST_F(AddCommandMeanwhileTest, AFurtherNameIsFoundAsWell) {
    const ProgramRun run = addAnd([&] { std::filesystem::create_hard_link(file, folder.file("second.xml")); });
    EXPECT_EQ(run.exitCode, 4);
    EXPECT_THAT(run.errors, testing::StartsWith("error: " + file + ": the file has 2 names (hard links), "));
    EXPECT_EQ(folder.read("display.xml"), display(""));
}

TEST_F(AddCommandTest, ASymbolicLinkStaysOne) {
    const PjlinkSimulator simulator({"--mac", mac(1)});
    std::filesystem::rename(file, folder.file("real.xml"));
    ASSERT_EQ(::symlink("real.xml", file.c_str()), 0);
    EXPECT_EQ(add({at(simulator)}).exitCode, 0);
    EXPECT_TRUE(std::filesystem::is_symlink(file));
    EXPECT_THAT(folder.read("real.xml"), HasSubstr("<Projector id=\"020000000001\">"));
}

}  // namespace
